// Format-string expansion and conditions, against a model of each.
//
// Input: the output size, up to eight parameters (each present or missing,
// and its bytes), up to six condition items, then the format string. A parameter
// may be missing (a null pointer) or an empty text; the format may hold any
// bytes, "%n" and lone "%" included: only "%d", "%c" and "%s" are symbols.
#include <cstring>
#include <string>
#include <vector>

#include "engine/command.h"
#include "engine/condition.h"
#include "fuzz_support.h"

namespace {

// A parameter's value is read by the symbol that takes it, so each one is a
// buffer that holds up as all three: a text, its first byte, and its first
// four bytes as an int32.
struct Param {
  bool missing = false;
  std::vector<char> bytes;
  int32_t Number() const {
    int32_t number;
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
  }
  std::string Text() const { return std::string(bytes.data()); }
};

int32_t TakeInt(fuzz::Input& in) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | in.Byte();
  return static_cast<int32_t>(value);
}

// The expansion rules: symbols take the parameters in order; a symbol
// without a value, or a text symbol whose text is empty, ends the line
// there, dropping the literal text before it; the result is cut at
// outSize - 1 bytes.
std::string ModelExpand(const std::string& format, const std::vector<Param>& params,
                        size_t outSize) {
  std::string work = format.substr(0, kCommandBufferSize - 1);
  std::string out;
  size_t cursor = 0;
  size_t index = 0;
  for (;;) {
    size_t p = cursor;
    while (p < work.size() &&
           !(work[p] == '%' && p + 1 < work.size() && std::strchr("dcs", work[p + 1]) != nullptr &&
             work[p + 1] != '\0')) {
      ++p;
    }
    if (p >= work.size()) {
      out += work.substr(cursor);
      break;
    }
    if (index >= params.size() || params[index].missing) break;
    const Param& param = params[index];
    std::string converted;
    switch (work[p + 1]) {
      case 'd':
        converted = std::to_string(param.Number());
        break;
      case 'c':
        converted = param.Text().substr(0, 1);
        break;
      default:
        if (param.Text().empty()) return out.substr(0, outSize - 1);
        converted = param.Text().substr(0, kCommandBufferSize - 1);
        break;
    }
    out += work.substr(cursor, p - cursor) + converted;
    if (p + 2 == work.size()) break;
    cursor = p + 2;
    ++index;
  }
  return out.substr(0, outSize - 1);
}

const CompareFunc kFunctions[] = {
    IntCampareFunc,        IntNoEqualCampareFunc,        StrEqualCampareFunc,
    StrContainCampareFunc, StrNotContainCampareFunc,     StrNoNULLCampareFunc,
    StrIsNULLCampareFunc,  StrLengthLessThanCampareFunc,
};

struct Item {
  int function;
  int32_t value = 0;
  int32_t reference = 0;
  bool missing = false;  // no value at all (only where a function accepts that)
  std::string text;
  std::string referenceText;
  const char* referenceCell = nullptr;
};

bool ModelHolds(const Item& item) {
  bool has = !item.missing && !item.text.empty();
  switch (item.function) {
    case 0:
      return item.value == item.reference;
    case 1:
      return item.value != item.reference;
    case 2:
      return item.text == item.referenceText;
    case 3:
      return has && item.text.find(item.referenceText) != std::string::npos;
    case 4:
      return !has || item.text.find(item.referenceText) == std::string::npos;
    case 5:
      return has;
    case 6:
      return !has;
    default:
      return static_cast<int64_t>(item.text.size()) < item.reference;
  }
}

void CheckConditions(fuzz::Input& in) {
  std::vector<Item> items(in.Byte() % 7);
  for (Item& item : items) {
    item.function = in.Byte() % 8;
    item.value = TakeInt(in) % 4;
    item.reference = TakeInt(in) % 6;
    // A missing value only where the comparison allows one.
    item.missing = (item.function >= 3 && item.function <= 6) && in.Byte() % 4 == 0;
    item.text = in.UntilNul().substr(0, 8);
    item.referenceText = in.UntilNul().substr(0, 3);
  }
  std::vector<ConditionItem> bound;
  bool expected = true;
  for (Item& item : items) {
    item.referenceCell = item.referenceText.c_str();
    const void* value = item.function <= 1 ? static_cast<const void*>(&item.value)
                        : item.missing     ? nullptr
                                           : static_cast<const void*>(item.text.c_str());
    const void* reference = (item.function >= 2 && item.function <= 4)
                                ? static_cast<const void*>(&item.referenceCell)
                                : static_cast<const void*>(&item.reference);
    bound.push_back({value, reference, kFunctions[item.function]});
    expected = expected && ModelHolds(item);
  }
  ConditionTable table;
  InitializeComparationTable(&table, static_cast<int32_t>(bound.size()), bound.data());
  fuzz::Check(ConditionCompare(&table) == (expected ? 1 : 0), "a table holds when all items do");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  size_t outSize = 1 + in.Number(kCommandBufferSize);
  std::vector<Param> params(in.Byte() % 9);
  for (Param& param : params) {
    param.missing = in.Byte() % 5 == 0;
    std::string text = in.UntilNul();
    param.bytes.assign(text.begin(), text.end());
    param.bytes.resize(text.size() < 4 ? 4 : text.size() + 1, '\0');
  }
  CheckConditions(in);
  std::string format = in.UntilNul();

  std::vector<ParamPointer> pointers;
  for (const Param& param : params) {
    pointers.push_back(param.missing ? nullptr : param.bytes.data());
  }
  ParamTable table;
  InitializeCmdParaTable(&table, static_cast<int32_t>(pointers.size()), pointers.data());

  // Exactly outSize bytes, so that a write past the bound is caught; the
  // expansion clears at most that much.
  std::vector<char> out(outSize, '\x55');
  BuildPrintComand(format.c_str(), &table, out.data(), outSize);
  fuzz::Check(std::memchr(out.data(), '\0', outSize) != nullptr, "the line is terminated");
  std::string line(out.data());
  std::string expected = ModelExpand(format, params, outSize);
  fuzz::Check(line == expected, "the expansion follows the rules",
              "format " + fuzz::Visible(format) + "\ngot " + fuzz::Visible(line) + "\nwant " +
                  fuzz::Visible(expected));

  if (!format.empty()) {
    const char* symbol = GetNextCtrlSym(format.c_str());
    if (symbol != nullptr) {
      fuzz::Check(symbol[0] == '%' && std::strchr("dcs", symbol[1]) != nullptr && symbol[1] != '\0',
                  "the next symbol is one of the three");
    }
  }
  return 0;
}
