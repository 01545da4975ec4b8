// Format-string expansion of the PJL lines: any format (lone "%" and "%n"
// included) with up to eight parameters, present or missing, into an output
// of any size up to the line buffer.
//
// Input: the output size, the parameter count, each parameter (a byte:
// missing or not, then its bytes up to a NUL), then the format string.
#include <cstring>
#include <string>
#include <vector>

#include "engine/command.h"
#include "engine/condition.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  const size_t outSize = 1 + in.Number(kCommandBufferSize);
  std::vector<std::vector<char>> params(in.Byte() % 9);
  std::vector<ParamPointer> pointers;
  for (std::vector<char>& param : params) {
    const bool missing = in.Byte() % 5 == 0;
    const std::string text = in.UntilNul();
    // At least four bytes: a parameter may be read as a number.
    param.assign(text.begin(), text.end());
    param.resize(text.size() < 4 ? 4 : text.size() + 1, '\0');
    pointers.push_back(missing ? nullptr : param.data());
  }
  const std::string format = in.UntilNul();
  ParamTable table;
  InitializeCmdParaTable(&table, static_cast<int32_t>(pointers.size()), pointers.data());
  // Exactly outSize bytes, so that a write past the bound is caught.
  std::vector<char> out(outSize, '\x55');
  BuildPrintComand(format.c_str(), &table, out.data(), outSize);
  fuzz::Check(std::memchr(out.data(), '\0', outSize) != nullptr, "the line is terminated");
  return 0;
}
