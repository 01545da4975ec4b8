// Conditions on format-table rows: a row is written only when every item of
// its ConditionTable holds, evaluated in order up to the first failure.
#pragma once

#include <cstdint>

// Returns 1 when the comparison of the job setting at `value` with the
// constant at `reference` holds, else 0.
using CompareFunc = int (*)(const void* value, const void* reference);

// One comparison (`comparationItem...`). How `reference` is held depends on
// the function: an int32_t for the integer and length functions; a cell that
// holds a `const char*` for the string equal/contain functions; unused for
// the NULL tests.
struct ConditionItem {
  const void* value;
  const void* reference;
  CompareFunc compare;
};

// Bound condition table (`comparation...`).
struct ConditionTable {
  int32_t count;
  const ConditionItem* items;
};

struct ParamTable;
using ParamPointer = const void*;

void InitializeCmdParaTable(ParamTable* table, int32_t count, const ParamPointer* list);
void InitializeComparationTable(ConditionTable* table, int32_t count, const ConditionItem* items);

// The modules' parameter tables are constants bound by the compiler; their
// initialisers check with this that each still holds its static list and
// its stated count. A mismatch is a build defect, never job data: the filter
// stops before it writes a byte.
void RequireCmdParaTable(const ParamTable& table, int32_t count, const ParamPointer* list);

// 1 when the table holds (an empty table holds), else 0.
int ConditionCompare(const ConditionTable* table);

// The empty text that the set/empty tests are given as reference (not read).
extern const char* const OptionNULLStr;

int IntCampareFunc(const void* value, const void* reference);
int IntNoEqualCampareFunc(const void* value, const void* reference);
int StrEqualCampareFunc(const void* value, const void* reference);
int StrContainCampareFunc(const void* value, const void* reference);
int StrNotContainCampareFunc(const void* value, const void* reference);
int StrNoNULLCampareFunc(const void* value, const void* reference);
int StrIsNULLCampareFunc(const void* value, const void* reference);
int StrLengthLessThanCampareFunc(const void* value, const void* reference);
