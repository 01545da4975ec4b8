// User and document name validation, as the job flow runs it, and the byte
// range check against a model.
//
// Input: a flags byte (UTF-8 or Shift-JIS printer, product type), a product
// type number, a validation table (counts and ranges), then the user name
// and the title, each up to a NUL.
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "fuzz_support.h"
#include "ticket/name_validation.h"
#include "ticket/text_encoding.h"

namespace {

bool InRanges(int32_t value, int32_t count, const int32_t (*ranges)[2]) {
  for (int32_t i = 0; i < count && i < kValidateRangeMax; ++i) {
    if (value >= ranges[i][0] && value <= ranges[i][1]) return true;
  }
  return false;
}

// Pairs first, then single bytes; a last byte may pass as a pair with the
// terminator.
bool ModelValid(const std::string& text, const ValidateDataScale& table) {
  size_t p = 0;
  while (p < text.size()) {
    int32_t pair = static_cast<unsigned char>(text[p]) * 256 +
                   (p + 1 < text.size() ? static_cast<unsigned char>(text[p + 1]) : 0);
    if (InRanges(pair, table.wordRangeCount, table.wordRanges)) {
      p += 2;
    } else if (InRanges(static_cast<unsigned char>(text[p]), table.byteRangeCount,
                        table.byteRanges)) {
      p += 1;
    } else {
      return false;
    }
  }
  return true;
}

bool ModelAllSpace(const std::string& text) {
  for (size_t p = 0; p < text.size();) {
    if (text[p] == ' ') {
      p += 1;
    } else if (text.compare(p, 2, "\x81\x40") == 0) {
      p += 2;
    } else {
      return false;
    }
  }
  return true;
}

ValidateDataScale TakeTable(fuzz::Input& in) {
  ValidateDataScale table = {};
  table.byteRangeCount = static_cast<int32_t>(in.Byte() % 14) - 2;
  for (auto& range : table.byteRanges) {
    range[0] = in.Byte();
    range[1] = in.Byte();
  }
  table.wordRangeCount = static_cast<int32_t>(in.Byte() % 14) - 2;
  for (auto& range : table.wordRanges) {
    range[0] = static_cast<int32_t>(in.Number(0x10000));
    range[1] = static_cast<int32_t>(in.Number(0x10000));
  }
  return table;
}

size_t Terminated(const char* buffer, size_t size) {
  const void* end = std::memchr(buffer, '\0', size);
  fuzz::Check(end != nullptr, "a name buffer is terminated within its size");
  return static_cast<size_t>(static_cast<const char*>(end) - buffer);
}

// The job flow's steps for the user name and the title.
void RunIdentity(bool utf8, const std::string& user, const std::string& title, char** argv) {
  size_t nameSize = utf8 ? kStdUserNameSize : kStdUserNameLegacySize;
  size_t jbaSize = utf8 ? kStdJBAUserNameSize : kStdJBAUserNameLegacySize;
  ZeroText(StdUserName, nameSize);
  if (utf8) {
    ConvertUTF8ToEncodingForUTF8(user.c_str(), StdUserName, static_cast<int32_t>(nameSize));
  } else {
    ConvertUTF8ToEncoding(user.c_str(), StdUserName, static_cast<int32_t>(nameSize));
  }
  ZeroText(StdJBAUserName, jbaSize);
  CopyTextPrefix(StdJBAUserName, jbaSize, StdUserName, jbaSize - 1);
  InvalidateStdUserName();

  if (title.find_first_of("\r\n") != std::string::npos) return;
  const int32_t size = static_cast<int32_t>(kStdDocumentNameSize);
  if (utf8) {
    ConvertUTF8ToEncodingForUTF8(title.c_str(), StdDocumentName, size);
    ConvertUTF8ToEncodingForUTF8(title.c_str(), PTStdDocumentName, size);
    InvalidateStdDocumentNameForProductType(argv);
    InvalidatePrintTypeDocumentNameForProductType(argv);
  } else {
    ConvertUTF8ToEncoding(title.c_str(), StdDocumentName, size);
    InvalidateStdDocumentNameForProductType(argv);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  uint8_t flags = in.Byte();
  bool utf8 = (flags & 1) != 0;
  int productChoice = (flags >> 1) % 5;  // absent, 2, 3, 5, any number
  int32_t anyNumber = static_cast<int32_t>(in.Number(0x10000)) - 0x8000;
  ValidateDataScale table = TakeTable(in);
  std::string user = in.UntilNul();
  std::string title = in.UntilNul();

  // The table check on the raw bytes.
  fuzz::Check((ValidateDada(user.c_str(), &table) == 1) == ModelValid(user, table), "range check",
              fuzz::Visible(user));
  fuzz::Check((IsAllSpace(user.c_str()) == 1) == ModelAllSpace(user), "all-space check");

  setenv("PPD", fuzz::Fixture(utf8 ? "ppd/text-utf8.ppd" : "ppd/text-shiftjis.ppd").c_str(), 1);
  const int32_t products[] = {0, 2, 3, 5, anyNumber};
  int32_t product = products[productChoice];
  std::string ticket = productChoice == 0
                           ? ""
                           : "com.korvanel.qd.jtz.printsettings.PrintTypeProductTypeTicketKey=" +
                                 std::to_string(product);
  char name[] = "pstozpjl", id[] = "1", copies[] = "1";
  char* argv[] = {name, id, user.data(), title.data(), copies, ticket.data(), nullptr};
  ResetJobState();
  RunIdentity(utf8, user, title, argv);

  size_t nameLength = Terminated(StdUserName, utf8 ? kStdUserNameSize : kStdUserNameLegacySize);
  Terminated(StdJBAUserName, utf8 ? kStdJBAUserNameSize : kStdJBAUserNameLegacySize);
  std::string userName(StdUserName, nameLength);
  if (userName != "UnknownUser") {
    fuzz::Check(!userName.empty() && !ModelAllSpace(userName), "a kept user name has text");
    fuzz::Check(
        ModelValid(userName, utf8 ? userNameValidateDataScaleForUTF8 : userNameValidateDataScale),
        "a kept user name passes its table", fuzz::Visible(userName));
  }
  if (utf8) {
    fuzz::Check(CountUTF16Units(StdUserName) <= 255, "a user name of at most 255 units");
    fuzz::Check(CountUTF16Units(StdJBAUserName) <= 32, "an accounting name of at most 32 units");
  }

  Terminated(StdDocumentName, kStdDocumentNameSize);
  std::string ptName(PTStdDocumentName, Terminated(PTStdDocumentName, kStdDocumentNameSize));
  if (productChoice != 0) {
    int32_t limit = DocumentNameLimitForProductType(product);
    if (utf8) {
      fuzz::Check(CountUTF16Units(StdDocumentName) <= limit, "the document name within its limit");
      fuzz::Check(CountUTF16Units(PTStdDocumentName) <= limit, "the job name within its limit");
    } else {
      fuzz::Check(ptName.size() <= static_cast<size_t>(limit), "the job name within its limit");
    }
  }
  const ValidateDataScale* ptTable = &docuNameValidateDataScale;
  if (productChoice != 0 && utf8 && (product == 5 || product == 3)) {
    ptTable = &docuNameValidateDataScaleForProduct03UTF8;
  } else if (productChoice != 0 && !utf8 && product == 2) {
    ptTable = &docuNameValidateDataScaleForProduct02;
  }
  fuzz::Check(ptName.empty() || ModelValid(ptName, *ptTable), "a kept job name passes its table",
              fuzz::Visible(ptName));
  return 0;
}
