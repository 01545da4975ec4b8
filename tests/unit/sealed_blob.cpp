#include "sealed_blob.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

extern char** environ;

namespace {

constexpr size_t kHeaderLength = 80;
constexpr size_t kCbcIvLength = 16;

uint32_t ReadLE32(const uint8_t* at) {
  return uint32_t{at[0]} | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16 | uint32_t{at[3]} << 24;
}

std::vector<uint8_t> Slice(const std::vector<uint8_t>& bytes, size_t from, size_t length) {
  return std::vector<uint8_t>(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                              bytes.begin() + static_cast<std::ptrdiff_t>(from + length));
}

bool Fail(std::string* error, const std::string& reason) {
  if (error != nullptr) *error = reason;
  return false;
}

bool IsStrictBase64(const std::string& text) {
  if (text.empty() || text.size() % 4 != 0) return false;
  const size_t firstPad = text.find('=');
  if (firstPad != std::string::npos &&
      (firstPad < text.size() - 2 || text.find_first_not_of('=', firstPad) != std::string::npos))
    return false;
  return text.find_first_not_of(
             "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=") ==
         std::string::npos;
}

}  // namespace

std::string TestPrivateKeyPath2048() {
  return std::string(ZPJL_FIXTURES) + "/keys/recipient-2048.key.pem";
}

std::string TestPrivateKeyPath3072() {
  return std::string(ZPJL_FIXTURES) + "/keys/recipient-3072.key.pem";
}

ScratchDir::ScratchDir() {
  const char* base = getenv("TMPDIR");
  std::string pattern =
      std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/zpjl-sealed-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  if (mkdtemp(name.data()) != nullptr) path_ = name.data();
}

ScratchDir::~ScratchDir() {
  if (path_.empty()) return;
  if (DIR* dir = opendir(path_.c_str())) {
    while (dirent* entry = readdir(dir)) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") unlink(File(name).c_str());
    }
    closedir(dir);
  }
  rmdir(path_.c_str());
}

bool WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(file);
}

bool WriteText(const std::string& path, const std::string& text) {
  return WriteBytes(path, std::vector<uint8_t>(text.begin(), text.end()));
}

std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file),
                              std::istreambuf_iterator<char>());
}

std::string Hex(const uint8_t* bytes, size_t length) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

bool RunOpenssl(const std::vector<std::string>& args, std::string* diagnostics) {
  ScratchDir scratch;
  if (!scratch.ok()) return Fail(diagnostics, "no scratch directory");
  const std::string errorPath = scratch.File("stderr");
  std::vector<std::string> argv{"openssl"};
  argv.insert(argv.end(), args.begin(), args.end());
  std::vector<char*> pointers;
  for (std::string& arg : argv) pointers.push_back(arg.data());
  pointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, errorPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  pid_t child = 0;
  const int spawned = posix_spawnp(&child, "openssl", &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0)
    return Fail(diagnostics, "cannot start openssl: " + std::string(strerror(spawned)));
  int status = 0;
  pid_t waited = 0;
  do {
    waited = waitpid(child, &status, 0);
  } while (waited < 0 && errno == EINTR);
  if (waited != child) return Fail(diagnostics, "lost the openssl process");
  const std::vector<uint8_t> text = ReadBytes(errorPath);
  if (diagnostics != nullptr) diagnostics->assign(text.begin(), text.end());
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool OpenSealedBlob(const std::vector<uint8_t>& blob, OpenedBlob* opened, std::string* error,
                    const std::string& privateKeyPath) {
  *opened = OpenedBlob();
  if (blob.size() < kHeaderLength) return Fail(error, "shorter than the 80-byte header");
  opened->magic[0] = blob[0];
  opened->magic[1] = blob[1];
  opened->cipherLength = ReadLE32(&blob[2]);
  opened->totalLength = ReadLE32(&blob[6]);
  opened->aesMode = blob[10];
  opened->keyType = blob[11];
  opened->reserved = ReadLE32(&blob[12]);
  opened->digest = Slice(blob, 16, 32);
  opened->salt = Slice(blob, 48, 32);
  if (opened->magic[0] != 0x08 || opened->magic[1] != 0x01)
    return Fail(error, "bytes 0 and 1 are not 08 01");
  if (opened->aesMode != 1) return Fail(error, "not an AES mode 1 blob");
  if (opened->totalLength != blob.size())
    return Fail(error, "total length " + std::to_string(opened->totalLength) + " but " +
                           std::to_string(blob.size()) + " bytes");
  if (opened->cipherLength == 0 || opened->cipherLength % 16 != 0 ||
      kHeaderLength + kCbcIvLength + opened->cipherLength >= blob.size())
    return Fail(error, "ciphertext length " + std::to_string(opened->cipherLength) +
                           " does not fit the blob");
  const size_t wrappedLength = blob.size() - kHeaderLength - kCbcIvLength - opened->cipherLength;
  opened->wrappedKey = Slice(blob, kHeaderLength, wrappedLength);
  opened->iv = Slice(blob, kHeaderLength + wrappedLength, kCbcIvLength);
  opened->cipherText =
      Slice(blob, kHeaderLength + wrappedLength + kCbcIvLength, opened->cipherLength);

  ScratchDir scratch;
  if (!scratch.ok()) return Fail(error, "no scratch directory");
  std::string diagnostics;
  if (!WriteBytes(scratch.File("wrapped"), opened->wrappedKey) ||
      !WriteBytes(scratch.File("salt"), opened->salt) ||
      !WriteBytes(scratch.File("cipher"), opened->cipherText))
    return Fail(error, "cannot write scratch files");
  if (!RunOpenssl(
          {"pkeyutl", "-decrypt", "-inkey", privateKeyPath, "-pkeyopt", "rsa_padding_mode:oaep",
           "-pkeyopt", "rsa_oaep_md:sha256", "-pkeyopt", "rsa_mgf1_md:sha256", "-in",
           scratch.File("wrapped"), "-out", scratch.File("content-key")},
          &diagnostics))
    return Fail(error, "unwrapping the content key failed: " + diagnostics);
  opened->contentKey = ReadBytes(scratch.File("content-key"));
  if (opened->contentKey.size() != 32)
    return Fail(error, "content key of " + std::to_string(opened->contentKey.size()) + " bytes");
  if (!RunOpenssl(
          {"dgst", "-sha256", "-mac", "HMAC", "-macopt", "hexkey:" + Hex(opened->contentKey),
           "-binary", "-out", scratch.File("aes-key"), scratch.File("salt")},
          &diagnostics))
    return Fail(error, "deriving the AES key failed: " + diagnostics);
  opened->aesKey = ReadBytes(scratch.File("aes-key"));
  if (!RunOpenssl({"enc", "-d", "-aes-256-cbc", "-K", Hex(opened->aesKey), "-iv", Hex(opened->iv),
                   "-in", scratch.File("cipher"), "-out", scratch.File("payload")},
                  &diagnostics))
    return Fail(error, "decrypting the payload failed: " + diagnostics);
  const std::vector<uint8_t> payload = ReadBytes(scratch.File("payload"));
  opened->payload.assign(payload.begin(), payload.end());
  return true;
}

std::optional<std::string> OpenSealedField(const std::string& fieldText, std::string* error) {
  if (!IsStrictBase64(fieldText)) {
    Fail(error, "the field is not strict base64: \"" + fieldText + "\"");
    return std::nullopt;
  }
  ScratchDir scratch;
  std::string diagnostics;
  if (!scratch.ok() || !WriteText(scratch.File("field"), fieldText) ||
      !RunOpenssl(
          {"base64", "-d", "-A", "-in", scratch.File("field"), "-out", scratch.File("blob")},
          &diagnostics)) {
    Fail(error, "base64 decoding failed: " + diagnostics);
    return std::nullopt;
  }
  OpenedBlob opened;
  if (!OpenSealedBlob(ReadBytes(scratch.File("blob")), &opened, error)) return std::nullopt;
  return opened.payload;
}
