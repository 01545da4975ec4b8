#include "sealed_blob.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

extern char** environ;

namespace {

bool Fail(std::string* error, const std::string& reason) {
  if (error != nullptr) *error = reason;
  return false;
}

std::vector<uint8_t> FromHex(const std::string& hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// Runs tests/tools/sealed_blob.py on `data` and fills `opened` from its
// "name hex" lines.
bool RunOpener(const std::vector<uint8_t>& data, bool field, const std::string& privateKeyPath,
               OpenedBlob* opened, std::string* error) {
  ScratchDir scratch;
  std::string output, diagnostics;
  std::vector<std::string> args = {"python3", std::string(ZPJL_FIXTURES) + "/../tools/sealed_blob.py",
                                   privateKeyPath, scratch.File("data")};
  if (field) args.push_back("--field");
  if (!scratch.ok() || !WriteBytes(scratch.File("data"), data) ||
      !RunTool(args, &diagnostics, &output))
    return Fail(error, diagnostics);
  *opened = OpenedBlob();
  std::istringstream lines(output);
  std::string name, hex;
  while (lines >> name >> hex) opened->parts[name] = FromHex(hex);
  const std::vector<uint8_t>& payload = opened->parts["payload"];
  opened->payload.assign(payload.begin(), payload.end());
  return true;
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

bool RunTool(const std::vector<std::string>& args, std::string* diagnostics,
             std::string* output) {
  ScratchDir scratch;
  if (!scratch.ok()) return Fail(diagnostics, "no scratch directory");
  std::vector<std::string> argv = args;
  std::vector<char*> pointers;
  for (std::string& arg : argv) pointers.push_back(arg.data());
  pointers.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, scratch.File("stdout").c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, scratch.File("stderr").c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t child = 0;
  const int spawned = posix_spawnp(&child, argv[0].c_str(), &actions, nullptr, pointers.data(),
                                   environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0)
    return Fail(diagnostics, "cannot start " + argv[0] + ": " + std::string(strerror(spawned)));
  int status = 0;
  pid_t waited = 0;
  do {
    waited = waitpid(child, &status, 0);
  } while (waited < 0 && errno == EINTR);
  if (waited != child) return Fail(diagnostics, "lost the " + argv[0] + " process");
  const std::vector<uint8_t> text = ReadBytes(scratch.File("stderr"));
  if (diagnostics != nullptr) diagnostics->assign(text.begin(), text.end());
  if (output != nullptr) {
    const std::vector<uint8_t> out = ReadBytes(scratch.File("stdout"));
    output->assign(out.begin(), out.end());
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool OpenSealedBlob(const std::vector<uint8_t>& blob, OpenedBlob* opened, std::string* error,
                    const std::string& privateKeyPath) {
  return RunOpener(blob, false, privateKeyPath, opened, error);
}

std::optional<std::string> OpenSealedField(const std::string& fieldText, std::string* error) {
  OpenedBlob opened;
  if (!RunOpener(std::vector<uint8_t>(fieldText.begin(), fieldText.end()), true,
                 TestPrivateKeyPath2048(), &opened, error))
    return std::nullopt;
  return opened.payload;
}

std::string StoredPasswordText(const std::string& password) {
  std::string text, diagnostics;
  if (!RunTool({"python3", std::string(ZPJL_FIXTURES) + "/../../scripts/stored-password", password,
                ZPJL_KEY_DIR},
               &diagnostics, &text))
    return "";
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

std::string WithOpenedFields(std::string stream) {
  for (const std::string marker : {"HOLDENCRYPTKEY=\"", "BOXENCRYPTKEY=\"", "@JOEP=", "@ACEP="}) {
    for (size_t at = stream.find(marker); at != std::string::npos;
         at = stream.find(marker, at + 1)) {
      const size_t from = at + marker.size();
      const size_t to = stream.find('"', from);
      if (to == std::string::npos || to == from) continue;
      std::string error;
      std::optional<std::string> payload = OpenSealedField(stream.substr(from, to - from), &error);
      stream.replace(from, to - from,
                     payload ? "<sealed:" + *payload + ">" : "<unopenable: " + error + ">");
    }
  }
  return stream;
}

std::string PublicKeyTextOf(const std::string& privateKeyPath) {
  std::string pem, diagnostics;
  if (!RunTool({"openssl", "pkey", "-in", privateKeyPath, "-pubout"}, &diagnostics, &pem))
    return "";
  std::string text;
  for (size_t at = 0, end; at < pem.size(); at = end + 1) {
    end = std::min(pem.find('\n', at), pem.size());
    const std::string line = pem.substr(at, end - at);
    if (!line.empty() && line.compare(0, 5, "-----") != 0) text += line + "\n";
  }
  return text;
}
