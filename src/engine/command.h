// Table-driven PJL lines: a print format with control symbols, expanded
// against a parameter table of value pointers.
//
// Control symbols are "%d" (32-bit int), "%c" (one byte) and "%s" (text).
// There is no escape: "%%d" is a literal '%' followed by the symbol "%d".
// Control characters (ESC, '%', CR, LF, '"') are passed as "%c" parameters,
// so no format string holds an ESC byte. A "%s" value is printed cleaned
// (CleanPJLText): text never brings a control byte or a quote of its own.
#pragma once

#include <cstddef>
#include <cstdint>

// One row of ctrlSymTalbe: symbol text and its kind (0 "%d", 1 "%c", 2 "%s").
struct CtrlSymRow {
  const char* symbol;
  int32_t kind;
};

extern const char CtrlSym_Dec[];
extern const char CtrlSym_Char[];
extern const char CtrlSym_String[];
extern const CtrlSymRow ctrlSymTalbe[];
extern const int32_t CtrlSymNum;

// Single-byte constants for "%c" parameters.
extern const char CTRLSym_ESC;
extern const char CTRLSym_PERCENTAGE;
extern const char CTRLSym_CR;
extern const char CTRLSym_LF;
extern const char CTRLSym_DOUBLE;

// One value pointer per control symbol, in the order the symbols occur.
using ParamPointer = const void*;

// Bound parameter table (`symPara...`): count and the static list (`cmdParaList...`).
struct ParamTable {
  int32_t count;
  const ParamPointer* list;
};

struct ConditionTable;

// One row of a format table. `params` may be null for a format without
// symbols; `conditions` null means "always emitted".
struct FormatEntry {
  const char* format;
  const ParamTable* params;
  const ConditionTable* conditions;
};

// Size of every expansion buffer.
constexpr size_t kCommandBufferSize = 2048;

// Expands `format` into `out`. The whole line is dropped from the first symbol
// whose value converts to nothing (an empty "%s", or a symbol with no
// parameter left in the table) onward, including the literal text just before
// it: tables guard such values with conditions. `out` holds outSize bytes
// (callers pass kCommandBufferSize); the result is cut at outSize - 1.
void BuildPrintComand(const char* format, const ParamTable* params, char* out, size_t outSize);

// The next control symbol in `text`, or nullptr.
const char* GetNextCtrlSym(const char* text);

// 1 when `symbol` is one of the control symbols, else 0.
int IsCtrlSym(const char* symbol);

// Prints `value` into `buffer` by the symbol's kind. Returns the printed
// length, 0 for an unknown symbol or a null value.
int getCtrlSym(const char* symbol, const void* value, char* buffer, size_t bufferSize);
