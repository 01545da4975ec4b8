#include "secure/key_material.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "sealed_blob.h"
#include "secure/sec_blob.h"

namespace {

std::string ReadKeyFile(const std::string& name) {
  const std::vector<uint8_t> bytes = ReadBytes(std::string(ZPJL_KEY_DIR) + "/" + name);
  std::string text(bytes.begin(), bytes.end());
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

std::vector<std::string> HexLines(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  for (char c : text + "\n") {
    if (c == '\n') {
      if (!line.empty()) lines.push_back(line);
      line.clear();
    } else if (c != ' ' && c != '\t') {
      line += static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
  }
  return lines;
}

TEST(KeyMaterial, KeyTextIsSevenLinesOfTheStatedLengths) {
  const std::string text = RSA_PUBKEY_2048_OFFICIAL;
  ASSERT_EQ(text.size(), 399u);
  for (size_t line = 0; line < 7; ++line) {
    const size_t length = line < 6 ? 64 : 8;
    const size_t at = line * 65;
    EXPECT_EQ(text.find('\n', at), at + length) << "line " << line;
  }
  EXPECT_EQ(SecBlobEnc_Decode_Key(RSA_PUBKEY_2048_OFFICIAL).size(), 294u);
}

TEST(KeyMaterial, EmbeddedValuesAreThoseOfTheKeyDirectory) {
  const std::string pem = ReadKeyFile("recipient-2048.pem");
  std::string body;
  size_t at = 0;
  while (at < pem.size()) {
    size_t end = pem.find('\n', at);
    if (end == std::string::npos) end = pem.size();
    const std::string line = pem.substr(at, end - at);
    if (!line.empty() && line.compare(0, 5, "-----") != 0) body += line + "\n";
    at = end + 1;
  }
  EXPECT_EQ(body, RSA_PUBKEY_2048_OFFICIAL);

  const struct {
    const char* file;
    size_t line;
    const uint8_t* bytes;
    size_t length;
  } values[] = {
      {"recipient-2048.sha256", 0, pubkey2048_OFFICIAL_SHA256, 32},
      {"recipient-3072.sha256", 0, pubkey3072_OFFICIAL_SHA256, 32},
      {"storage.seeds", 0, seed1, 32},
      {"storage.seeds", 1, seed2, 32},
      {"storage.seeds", 2, seed3, 16},
  };
  for (const auto& v : values) {
    SCOPED_TRACE(std::string(v.file) + " line " + std::to_string(v.line + 1));
    const std::vector<std::string> lines = HexLines(ReadKeyFile(v.file));
    ASSERT_GT(lines.size(), v.line);
    EXPECT_EQ(lines[v.line], Hex(v.bytes, v.length));
  }
}

// The shipped directory is a test key pair: its public key belongs to the
// private key under tests/, and its digests are the SHA-256 of the DER
// public keys. A deployment's own directory is checked only by the test above.
TEST(KeyMaterial, DefaultDirectoryHoldsTheTestKeyPair) {
  const std::string defaultDir = std::string(ZPJL_FIXTURES) + "/../../keys";
  std::string diagnostics;
  for (const auto& pair : {std::make_pair(TestPrivateKeyPath2048(), "recipient-2048"),
                           std::make_pair(TestPrivateKeyPath3072(), "recipient-3072")}) {
    SCOPED_TRACE(pair.second);
    ScratchDir scratch;
    ASSERT_TRUE(RunOpenssl(
        {"pkey", "-in", pair.first, "-pubout", "-outform", "DER", "-out", scratch.File("der")},
        &diagnostics))
        << diagnostics;
    ASSERT_TRUE(RunOpenssl(
        {"dgst", "-sha256", "-binary", "-out", scratch.File("digest"), scratch.File("der")},
        &diagnostics))
        << diagnostics;
    const std::vector<uint8_t> digestFile = ReadBytes(defaultDir + "/" + pair.second + ".sha256");
    EXPECT_EQ(HexLines(std::string(digestFile.begin(), digestFile.end())).at(0),
              Hex(ReadBytes(scratch.File("digest"))));
    if (std::string(pair.second) == "recipient-2048") {
      ASSERT_TRUE(RunOpenssl({"pkey", "-in", pair.first, "-pubout", "-out", scratch.File("pem")},
                             &diagnostics));
      EXPECT_EQ(ReadBytes(scratch.File("pem")), ReadBytes(defaultDir + "/recipient-2048.pem"));
    }
  }
}

}  // namespace
