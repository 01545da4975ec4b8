// Writes the rows of a format table whose conditions hold.
#pragma once

#include <cstdint>

#include "engine/command.h"
#include "engine/condition.h"

// Writes each row whose conditions hold, expanded, through the output channel.
// `argv` is not used; it is part of the module interface.
void OutputZPJLCommandFromArray(char* argv[], const FormatEntry* table, int32_t count);
