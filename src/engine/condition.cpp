#include "engine/condition.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "engine/command.h"

const char* const OptionNULLStr = "";

void InitializeCmdParaTable(ParamTable* table, int32_t count, const ParamPointer* list) {
  table->count = count;
  table->list = list;
}

void InitializeComparationTable(ConditionTable* table, int32_t count, const ConditionItem* items) {
  table->count = count;
  table->items = items;
}

void RequireCmdParaTable(const ParamTable& table, int32_t count, const ParamPointer* list) {
  if (table.count == count && table.list == list) return;
  std::fputs("ERROR: a parameter table does not hold its static list\n", stderr);
  std::abort();
}

int ConditionCompare(const ConditionTable* table) {
  if (table->count < 1) return 1;
  int result = 1;
  for (int32_t i = 0; i < table->count; ++i) {
    const ConditionItem& item = table->items[i];
    result = item.compare(item.value, item.reference);
    if (result == 0) return 0;
  }
  return result;
}

namespace {

int32_t IntAt(const void* p) { return *static_cast<const int32_t*>(p); }
const char* TextAt(const void* p) { return static_cast<const char*>(p); }
const char* ReferenceText(const void* cell) { return *static_cast<const char* const*>(cell); }
bool HasText(const void* p) { return p != nullptr && TextAt(p)[0] != '\0'; }

}  // namespace

int IntCampareFunc(const void* value, const void* reference) {
  return IntAt(value) == IntAt(reference) ? 1 : 0;
}

int IntNoEqualCampareFunc(const void* value, const void* reference) {
  return IntAt(value) != IntAt(reference) ? 1 : 0;
}

int StrEqualCampareFunc(const void* value, const void* reference) {
  return std::strcmp(TextAt(value), ReferenceText(reference)) == 0 ? 1 : 0;
}

int StrContainCampareFunc(const void* value, const void* reference) {
  if (!HasText(value)) return 0;
  return std::strstr(TextAt(value), ReferenceText(reference)) != nullptr ? 1 : 0;
}

int StrNotContainCampareFunc(const void* value, const void* reference) {
  if (!HasText(value)) return 1;
  return std::strstr(TextAt(value), ReferenceText(reference)) == nullptr ? 1 : 0;
}

int StrNoNULLCampareFunc(const void* value, const void*) { return HasText(value) ? 1 : 0; }

int StrIsNULLCampareFunc(const void* value, const void*) { return HasText(value) ? 0 : 1; }

int StrLengthLessThanCampareFunc(const void* value, const void* reference) {
  return static_cast<int32_t>(std::strlen(TextAt(value))) < IntAt(reference) ? 1 : 0;
}
