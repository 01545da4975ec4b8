#include "inspect/inspect_cli.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "inspect/report_output.h"
#include "inspect/stream_inspection.h"
#include "platform/crypto_private_key.h"

#ifndef ZPJL_VERSION
#define ZPJL_VERSION "unknown"
#endif

namespace {

const char kUsage[] =
    "usage: zpjl-inspect [--json] [--key PRIVATE.pem [--show-secrets]] [FILE | -]\n"
    "Reads a print stream of pstozpjl (or its debug job copy) from FILE or standard\n"
    "input and reports its envelope, header lines, sealed password fields, PostScript\n"
    "part and the PJL derived from PPD feature code.\n"
    "  --json            one JSON document instead of the readable report\n"
    "  --key FILE        open sealed password fields with this RSA private key (PEM)\n"
    "  --show-secrets    with --key: show the opened payloads themselves\n"
    "  --help, --version\n"
    "Exit status: 0 well-formed, 1 envelope malformed, 2 usage error.\n";

struct Options {
  bool json = false;
  bool showSecrets = false;
  std::optional<std::string> keyPath;
  std::optional<std::string> input;
};

int Usage(FILE* err, const std::string& problem) {
  fprintf(err, "zpjl-inspect: %s\n%s", problem.c_str(), kUsage);
  return kExitUsage;
}

// Reads all of `path` ("-" or none: standard input). False with errno's text.
bool ReadAll(const std::optional<std::string>& path, std::string* bytes, std::string* error) {
  FILE* file = stdin;
  if (path && *path != "-") {
    file = fopen(path->c_str(), "rb");
    if (file == nullptr) {
      *error = std::strerror(errno);
      return false;
    }
  }
  char block[1 << 16];
  size_t got = 0;
  while ((got = fread(block, 1, sizeof block, file)) > 0) bytes->append(block, got);
  const bool failed = ferror(file) != 0;
  if (failed) *error = std::strerror(errno != 0 ? errno : EIO);
  if (file != stdin) fclose(file);
  return !failed;
}

}  // namespace

int RunInspector(int argc, char* argv[], FILE* out, FILE* err) {
  Options options;
  bool endOfOptions = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i] != nullptr ? argv[i] : "";
    if (!endOfOptions && arg == "--") {
      endOfOptions = true;
    } else if (!endOfOptions && arg == "--json") {
      options.json = true;
    } else if (!endOfOptions && arg == "--show-secrets") {
      options.showSecrets = true;
    } else if (!endOfOptions && (arg == "--key" || arg.rfind("--key=", 0) == 0)) {
      if (arg == "--key") {
        if (i + 1 >= argc || argv[i + 1] == nullptr) return Usage(err, "--key needs a file");
        options.keyPath = argv[++i];
      } else {
        options.keyPath = arg.substr(6);
      }
    } else if (!endOfOptions && (arg == "--help" || arg == "-h")) {
      fputs(kUsage, out);
      return kExitWellFormed;
    } else if (!endOfOptions && arg == "--version") {
      fprintf(out, "zpjl-inspect %s\n", ZPJL_VERSION);
      return kExitWellFormed;
    } else if (!endOfOptions && arg.size() > 1 && arg[0] == '-') {
      return Usage(err, "unknown option " + arg);
    } else if (options.input) {
      return Usage(err, "more than one input file");
    } else {
      options.input = arg;
    }
  }
  if (options.showSecrets && !options.keyPath) return Usage(err, "--show-secrets needs --key");

  InspectOptions inspect;
  std::string error;
  if (options.keyPath) {
    if (options.keyPath->empty() || *options.keyPath == "-") {
      return Usage(err, "--key needs a file (standard input carries the stream)");
    }
    if (!ReadAll(*options.keyPath, &inspect.key.privateKeyPem, &error)) {
      return Usage(err, *options.keyPath + ": " + error);
    }
    CryptoError keyError;
    if (!CryptoCheckRsaPrivateKey(inspect.key.privateKeyPem, &keyError)) {
      return Usage(err, *options.keyPath + ": not an RSA private key: " + keyError.description);
    }
    inspect.key.keepPayload = options.showSecrets;
  }
  std::string bytes;
  if (!ReadAll(options.input, &bytes, &error)) {
    return Usage(err,
                 (options.input ? *options.input : std::string("standard input")) + ": " + error);
  }

  const StreamReport report = InspectStream(bytes, inspect);
  ReportSettings settings;
  settings.source = options.input ? *options.input : "-";
  settings.keyGiven = options.keyPath.has_value();
  settings.showSecrets = options.showSecrets;
  const std::string text =
      options.json ? RenderJson(report, settings) : RenderText(report, settings);
  fwrite(text.data(), 1, text.size(), out);
  fflush(out);
  return report.Malformed() ? kExitMalformed : kExitWellFormed;
}
