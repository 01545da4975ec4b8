#include "secure/password_field.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/job_state.h"
#include "sealed_blob.h"

namespace {

constexpr const char* kKey = "com.korvanel.qd.jtz.printsettings.JBAUserPasswordTextEditTicket";
constexpr int32_t kFieldSize = 2048;

// The same text as slash-separated decimal byte values ("/65/66"), the first
// `zeros` of them written with a leading zero ("/065").
std::string SlashNumeric(const std::string& text, size_t zeros = 0) {
  std::string out;
  for (unsigned char c : text) out += (zeros-- > 0 ? "/0" : "/") + std::to_string(c);
  return out;
}

// A slash-numeric form whose own length is a multiple of 4.
std::string SlashNumericWholeGroups(const std::string& text) {
  const size_t length = SlashNumeric(text).size();
  return SlashNumeric(text, (4 - length % 4) % 4);
}

struct Call {
  unsigned result = 0;
  std::string field;       // up to the first NUL
  bool restIsZero = true;  // every byte after the text is NUL
  std::string out, err;    // standard output and error meanwhile
};

Call Get(const char* value, int32_t size = kFieldSize) {
  cups_option_t* options = nullptr;
  int count = cupsAddOption("other", "1", 0, &options);
  if (value != nullptr) count = cupsAddOption(kKey, value, count, &options);
  std::vector<char> destination(static_cast<size_t>(size) + 16, '\x5A');
  Call call;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call.result =
      GetTicketPasswordStringConvertedToEncryption(kKey, count, options, destination.data(), size);
  call.err = testing::internal::GetCapturedStderr();
  call.out = testing::internal::GetCapturedStdout();
  cupsFreeOptions(count, options);
  call.field =
      std::string(destination.data(), strnlen(destination.data(), static_cast<size_t>(size)));
  for (int32_t i = static_cast<int32_t>(call.field.size()); i < size; ++i)
    if (destination[static_cast<size_t>(i)] != '\0') call.restIsZero = false;
  EXPECT_EQ(destination[static_cast<size_t>(size)], '\x5A') << "written past the field";
  return call;
}

TEST(PasswordField, StoredPasswordsAreResealedForThePrinter) {
  const struct {
    size_t passwordLength;
    size_t fieldLength;
  } cases[] = {{0, 492}, {1, 492}, {15, 492}, {16, 512}, {100, 620}, {224, 792}, {239, 792}};
  for (const auto& c : cases) {
    SCOPED_TRACE("password of " + std::to_string(c.passwordLength) + " bytes");
    std::string password;
    for (size_t i = 0; i < c.passwordLength; ++i) password += static_cast<char>('!' + i % 90);
    const Call call = Get(StoredPasswordText(password).c_str());
    EXPECT_EQ(call.result, 1u);
    EXPECT_EQ(call.out, "");
    EXPECT_EQ(call.err, "");
    ASSERT_EQ(call.field.size(), c.fieldLength);
    EXPECT_TRUE(call.restIsZero);
    std::string error;
    const std::optional<std::string> opened = OpenSealedField(call.field, &error);
    ASSERT_TRUE(opened) << error;
    EXPECT_EQ(*opened, password);
  }
}

TEST(PasswordField, SlashNumericTicketValueIsDecodedFirst) {
  // The decoder is given the length of the value as received, not of the
  // decoded text: that length must be whole groups of 4, and the decoding
  // stops at the end of the shorter text.
  const std::string stored = StoredPasswordText("1234");
  const std::string whole = SlashNumericWholeGroups(stored);
  const std::string broken = "/0" + whole.substr(1);  // one character more
  ASSERT_EQ(whole.size() % 4, 0u);
  ASSERT_NE(broken.size() % 4, 0u);

  const Call accepted = Get(whole.c_str());
  ASSERT_EQ(accepted.result, 1u);
  std::string error;
  const std::optional<std::string> opened = OpenSealedField(accepted.field, &error);
  ASSERT_TRUE(opened) << error;
  EXPECT_EQ(*opened, "1234");

  const Call refused = Get(broken.c_str());
  EXPECT_EQ(refused.result, 0u);
  EXPECT_EQ(refused.field, stored);
}

TEST(PasswordField, TwoCallsGiveDifferentTextsOfOnePassword) {
  const std::string stored = StoredPasswordText("same secret");
  const Call first = Get(stored.c_str());
  const Call second = Get(stored.c_str());
  ASSERT_EQ(first.result, 1u);
  ASSERT_EQ(second.result, 1u);
  EXPECT_NE(first.field, second.field);
  EXPECT_EQ(OpenSealedField(first.field), std::optional<std::string>("same secret"));
  EXPECT_EQ(OpenSealedField(second.field), std::optional<std::string>("same secret"));
}

TEST(PasswordField, FieldsThatCannotBeMade) {
  const std::string partialBlock = "MzMzMzMzMzMzMzMzMzMzMzMzMzM=";  // 20 bytes
  const std::string longText(3000, 'x');
  const std::string stored240 = StoredPasswordText(std::string(240, 'p'));
  ASSERT_EQ(stored240.size(), 344u);
  const std::string stored16 = StoredPasswordText("sixteen bytes!!!");

  const struct {
    const char* name;
    const char* value;  // null: key absent
    int32_t size;
    unsigned result;
    std::string field;
    std::string out;
  } cases[] = {
      {"absent key", nullptr, kFieldSize, 0, "", ""},
      {"empty value", "", kFieldSize, 0, "", ""},
      {"stored password of 240 bytes", stored240.c_str(), kFieldSize, 0, stored240, ""},
      {"not base64", "secret", kFieldSize, 0, "secret", ""},
      // Such a text is read through a work buffer of 1024 bytes.
      {"long text, not base64", longText.c_str(), kFieldSize, 0, longText.substr(0, 1023), ""},
      {"storage ciphertext not whole blocks", partialBlock.c_str(), kFieldSize, 1, partialBlock,
       "AES Error[-4303]\nERROR[97]: AES Decrypt failed[99].\n"},
      {"field too small for the sealed text", stored16.c_str(), 400, 0, stored16, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Call call = Get(c.value, c.size);
    EXPECT_EQ(call.result, c.result);
    EXPECT_EQ(call.field, c.field);
    EXPECT_TRUE(call.restIsZero);
    EXPECT_EQ(call.out, c.out);
    EXPECT_EQ(call.err, "");
  }
}

TEST(PasswordField, PlainPasswordReachesNoStreamNorTheDebugCopy) {
  const std::string password = "Plain-Pa55word-Marker";
  FILE* copy = tmpfile();
  ASSERT_NE(copy, nullptr);
  FILE* saved = gJobFilefp;
  gJobFilefp = copy;
  std::vector<Call> calls;
  calls.push_back(Get(StoredPasswordText(password).c_str()));
  calls.push_back(Get(SlashNumericWholeGroups(StoredPasswordText(password)).c_str()));
  calls.push_back(Get(StoredPasswordText(password + std::string(230, 'x')).c_str()));  // refused
  gJobFilefp = saved;
  fflush(copy);
  rewind(copy);
  std::string copied;
  for (int c = fgetc(copy); c != EOF; c = fgetc(copy)) copied += static_cast<char>(c);
  fclose(copy);

  EXPECT_EQ(calls[0].result, 1u);
  EXPECT_EQ(calls[1].result, 1u);
  EXPECT_EQ(calls[2].result, 0u);
  for (const Call& call : calls) {
    EXPECT_EQ(call.out.find(password), std::string::npos);
    EXPECT_EQ(call.err.find(password), std::string::npos);
    EXPECT_EQ(call.field.find(password), std::string::npos);
  }
  EXPECT_EQ(copied.find(password), std::string::npos);
}

}  // namespace
