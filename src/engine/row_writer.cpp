#include "engine/row_writer.h"

#include <cstdio>

#include "base/output_channel.h"

void OutputZPJLCommandFromArray(char* argv[], const FormatEntry* table, int32_t count,
                                FILE* stream) {
  (void)argv;
  char line[kCommandBufferSize];
  for (int32_t i = 0; i < count; ++i) {
    const FormatEntry& row = table[i];
    if (row.conditions != nullptr && ConditionCompare(row.conditions) != 1) continue;
    BuildPrintComand(row.format, row.params, line, sizeof line);
    KZfputs(line, stream);
  }
}
