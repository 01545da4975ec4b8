// The zpjl-inspect command: options, input, output and exit status.
//
//   zpjl-inspect [--json] [--key PRIVATE.pem [--show-secrets]] [FILE | -]
//
// Exit status: 0 for a well-formed stream, 1 when its envelope is
// malformed, 2 for a usage error (unknown option, unreadable file or key).
#pragma once

#include <cstdio>

constexpr int kExitWellFormed = 0;
constexpr int kExitMalformed = 1;
constexpr int kExitUsage = 2;

// Runs the command; the report goes to `out`, errors and usage to `err`.
int RunInspector(int argc, char* argv[], FILE* out, FILE* err);
