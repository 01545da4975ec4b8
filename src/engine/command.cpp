#include "engine/command.h"

#include <cstring>

#include "base/fixed_text.h"
#include "base/job_text.h"

const char CtrlSym_Dec[] = "%d";
const char CtrlSym_Char[] = "%c";
const char CtrlSym_String[] = "%s";
const CtrlSymRow ctrlSymTalbe[] = {
    {CtrlSym_Dec, 0},
    {CtrlSym_Char, 1},
    {CtrlSym_String, 2},
};
const int32_t CtrlSymNum = 3;

const char CTRLSym_ESC = 27;
const char CTRLSym_PERCENTAGE = '%';
const char CTRLSym_CR = 13;
const char CTRLSym_LF = 10;
const char CTRLSym_DOUBLE = '"';

namespace {

const CtrlSymRow* FindCtrlSym(const char* symbol) {
  for (int32_t i = 0; i < CtrlSymNum; ++i) {
    if (std::strcmp(ctrlSymTalbe[i].symbol, symbol) == 0) return &ctrlSymTalbe[i];
  }
  return nullptr;
}

}  // namespace

int IsCtrlSym(const char* symbol) { return FindCtrlSym(symbol) != nullptr ? 1 : 0; }

const char* GetNextCtrlSym(const char* text) {
  for (const char* p = text; *p != '\0'; ++p) {
    if (*p != '%') continue;
    const char candidate[3] = {'%', p[1], '\0'};
    if (IsCtrlSym(candidate)) return p;
  }
  return nullptr;
}

int getCtrlSym(const char* symbol, const void* value, char* buffer, size_t bufferSize) {
  const CtrlSymRow* row = FindCtrlSym(symbol);
  if (row == nullptr || value == nullptr || bufferSize == 0) return 0;
  switch (row->kind) {
    case 0:
      return static_cast<int>(FormatText(buffer, bufferSize, "%d", *static_cast<const int32_t*>(value)));
    case 1:
      // The printed length counts the byte even when it is NUL, as printf does.
      FormatText(buffer, bufferSize, "%c", *static_cast<const char*>(value));
      return 1;
    case 2:
      // Every "%s" value is job text or may be: it is cleaned so that it
      // cannot end its quotes or line. The format's own bytes are not.
      return static_cast<int>(
          std::strlen(CleanPJLCopy(buffer, bufferSize, static_cast<const char*>(value))));
    default:
      return 0;
  }
}

void BuildPrintComand(const char* format, const ParamTable* params, char* out, size_t outSize) {
  char work[kCommandBufferSize];
  char converted[kCommandBufferSize];
  CopyText(work, sizeof work, format);
  ZeroText(converted, sizeof converted);
  ZeroText(out, outSize < kCommandBufferSize ? outSize : kCommandBufferSize);
  if (outSize == 0 || work[0] == '\0') return;

  char* cursor = work;
  int32_t index = 0;
  while (char* symbolStart = const_cast<char*>(GetNextCtrlSym(cursor))) {
    const char symbol[3] = {symbolStart[0], symbolStart[1], '\0'};
    *symbolStart = '\0';  // cursor now holds the literal text before the symbol
    const void* value = nullptr;
    if (params != nullptr && params->list != nullptr && index < params->count) {
      value = params->list[index];
    }
    if (getCtrlSym(symbol, value, converted, sizeof converted) < 1) return;
    AppendText(out, outSize, cursor);
    AppendText(out, outSize, converted);
    if (symbolStart[2] == '\0') return;
    cursor = symbolStart + 2;
    ++index;
  }
  AppendText(out, outSize, cursor);
}
