// Test support for sealed passwords, shared by the unit and the end-to-end
// tests. Both directions use tools, not the filter's own cryptography:
// tests/tools/sealed_blob.py (the openssl command-line tool with the test
// private key) opens what the filter seals, and scripts/stored-password
// makes the ticket texts it reads.
//
//   std::string ticket = Key("PrintTypePasswordTicketKey", StoredPasswordText("1234"));
//   ... run the job ...
//   EXPECT_EQ(WithOpenedFields(stream), "...HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n...");
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The private halves of the test recipient keys (the default key directory
// holds the public half of the 2048-bit one).
std::string TestPrivateKeyPath2048();
std::string TestPrivateKeyPath3072();

// A key-transport blob taken apart and opened: its parts by the names of
// tests/tools/sealed_blob.py ("magic", "cipher_length", "total_length",
// "aes_mode", "key_type", "reserved", "digest", "salt", "wrapped_key", "iv",
// "cipher", "content_key", "aes_key", "payload").
struct OpenedBlob {
  std::map<std::string, std::vector<uint8_t>> parts;
  std::string payload;
  const std::vector<uint8_t>& Part(const std::string& name) const { return parts.at(name); }
  // A header field read as a little-endian number.
  uint32_t Number(const std::string& name) const {
    uint32_t value = 0;
    for (size_t i = Part(name).size(); i-- > 0;) value = value << 8 | Part(name)[i];
    return value;
  }
};

// Opens a mode-1 blob with the given private key: unwraps the content key
// (RSA-OAEP, SHA-256 digest and MGF1), derives the AES key as HMAC-SHA256
// over the salt and decrypts AES-256-CBC. False, with the reason in *error,
// when the layout does not add up or a step fails.
bool OpenSealedBlob(const std::vector<uint8_t>& blob, OpenedBlob* opened, std::string* error,
                    const std::string& privateKeyPath = TestPrivateKeyPath2048());

// Decodes a password field's base64 text (strict: alphabet, "=" padding,
// length a multiple of 4) and opens the blob with the 2048-bit test key.
// Returns the payload, or nothing with the reason in *error.
std::optional<std::string> OpenSealedField(const std::string& fieldText,
                                           std::string* error = nullptr);

// The ticket text the print dialog stores for `password` under the storage
// key material of the build's key directory. Empty on failure.
std::string StoredPasswordText(const std::string& password);

// `stream` with the value of every password attribute (HOLDENCRYPTKEY,
// BOXENCRYPTKEY, @JOEP, @ACEP) that is not empty replaced by "<sealed:"
// payload ">" when it opens with the test key, else by "<unopenable: "
// reason ">".
std::string WithOpenedFields(std::string stream);

// The key text form of the public half of a private key file: its PEM
// base64 body, every line ended by "\n". Empty on failure.
std::string PublicKeyTextOf(const std::string& privateKeyPath);

// Running a program found on PATH with `args` (argv[0] first); false when it
// does not exit with 0, its standard error then in *diagnostics. Standard
// output goes to *output when given.
bool RunTool(const std::vector<std::string>& args, std::string* diagnostics,
             std::string* output = nullptr);
inline bool RunOpenssl(std::vector<std::string> args, std::string* diagnostics) {
  args.insert(args.begin(), "openssl");
  return RunTool(args, diagnostics);
}

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
