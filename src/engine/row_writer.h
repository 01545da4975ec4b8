// Writes the rows of a format table whose conditions hold.
#pragma once

#include <cstdint>
#include <cstdio>

#include "engine/command.h"
#include "engine/condition.h"

// Writes each row whose conditions hold, expanded, to `stream` through the
// output channel; without a stream, to standard output. `argv` is not used;
// it is part of the module interface.
void OutputZPJLCommandFromArray(char* argv[], const FormatEntry* table, int32_t count,
                                FILE* stream);
inline void OutputZPJLCommandFromArray(char* argv[], const FormatEntry* table, int32_t count) {
  OutputZPJLCommandFromArray(argv, table, count, stdout);
}
