// Test support: opens what the filter seals, using the test private key and
// the openssl command-line tool, so the check does not share code with the
// filter's own cryptography.
//
//   std::string error;
//   std::optional<std::string> password = OpenSealedField(fieldText, &error);
//   ASSERT_TRUE(password) << error;
//   EXPECT_EQ(*password, "secret");
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The private halves of the test recipient keys (the default key directory
// holds the public half of the 2048-bit one).
std::string TestPrivateKeyPath2048();
std::string TestPrivateKeyPath3072();

// A key-transport blob taken apart and opened.
struct OpenedBlob {
  uint8_t magic[2] = {};
  uint32_t cipherLength = 0;  // bytes 2..5
  uint32_t totalLength = 0;   // bytes 6..9
  uint8_t aesMode = 0;
  uint8_t keyType = 0;
  uint32_t reserved = 0;  // bytes 12..15
  std::vector<uint8_t> digest, salt, wrappedKey, iv, cipherText;
  std::vector<uint8_t> contentKey, aesKey;
  std::string payload;
};

// Opens a mode-1 blob with the given private key: unwraps the content key
// (RSA-OAEP, SHA-256 digest and MGF1), derives the AES key as HMAC-SHA256
// over the salt and decrypts AES-256-CBC. The wrapped-key length is what the
// header's lengths leave for it. False, with the reason in *error, when the layout does
// not add up or a step fails.
bool OpenSealedBlob(const std::vector<uint8_t>& blob, OpenedBlob* opened, std::string* error,
                    const std::string& privateKeyPath = TestPrivateKeyPath2048());

// Decodes a password field's base64 text (strict: alphabet, "=" padding,
// length a multiple of 4) and opens the blob with the 2048-bit test key.
// Returns the payload, or nothing with the reason in *error.
std::optional<std::string> OpenSealedField(const std::string& fieldText,
                                           std::string* error = nullptr);

// Running the openssl tool; false when it does not exit with 0, its standard
// error then in *diagnostics.
bool RunOpenssl(const std::vector<std::string>& args, std::string* diagnostics);

// A private directory, removed with its files when the object goes.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  bool ok() const { return !path_.empty(); }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

bool WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes);
bool WriteText(const std::string& path, const std::string& text);
std::vector<uint8_t> ReadBytes(const std::string& path);
std::string Hex(const uint8_t* bytes, size_t length);
inline std::string Hex(const std::vector<uint8_t>& bytes) {
  return Hex(bytes.data(), bytes.size());
}
