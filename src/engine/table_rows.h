// The one way a module writes its tables: constexpr helpers for ticket
// bindings, condition items and bound tables, so that every table is
// constant data the compiler checks.
//
// Ticket bindings are rows that say how each key is read, so that a module's
// table and its UTF-8 variant come from one list of rows:
//
//   constexpr TicketRow kRows[] = {Row(JTZ_KEY("PrintTypeTicketKey"), pt.printType,
//                                      TicketRead::Integer), ...};
//   constexpr auto kBindings = MakeBindings(kRows, false);
//
// Conditions: Is(field, constant), Not(field, constant), Set(text), Empty(text),
// ShorterThan(text, limit), TextIs(text, cell), Contains(text, cell),
// NotContains(text, cell); a bound table is Conditions(items) or Params(list).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "engine/command.h"
#include "engine/condition.h"
#include "secure/password_field.h"
#include "ticket/ticket_access.h"

// How a row reads its key. `Name` is text that UTF-8 printers take in
// UTF-8; every other converted text is read in the Shift-JIS form; `RawText`
// is taken as the ticket has it.
enum class TicketRead {
  Integer,
  Float,
  Text,
  RawText,
  Name,
  Password,
  KeyAbsent,
  NumberUp,
  NumberUpForComment,
};

struct TicketRow {
  const char* key;
  void* destination;
  int32_t size;
  TicketRead read;
};

template <typename Field>
constexpr TicketRow Row(const char* key, Field& field, TicketRead read) {
  return {key, &field, static_cast<int32_t>(sizeof field), read};
}
constexpr TicketRow Row(const char* key, char* buffer, int32_t size, TicketRead read) {
  return {key, buffer, size, read};
}

constexpr TicketGetter GetterFor(TicketRead read, bool utf8) {
  switch (read) {
    case TicketRead::Integer:
      return GetTicketInteger;
    case TicketRead::Float:
      return GetTicketFloat;
    case TicketRead::Text:
      return GetTicketStringConvertedToPrtLang;
    case TicketRead::RawText:
      return GetTicketString;
    case TicketRead::Name:
      return utf8 ? GetTicketStringConvertedToPrtLangForUTF8 : GetTicketStringConvertedToPrtLang;
    case TicketRead::Password:
      return GetTicketPasswordStringConvertedToEncryption;
    case TicketRead::KeyAbsent:
      return CheckTicketKey;
    case TicketRead::NumberUp:
      return GetNumberUpTicketString;
    case TicketRead::NumberUpForComment:
      return GetNumberUpTicketStringForComment;
  }
  return GetTicketStringConvertedToPrtLang;
}

template <size_t N, size_t... I>
constexpr std::array<TicketBinding, N> MakeBindings(const TicketRow (&rows)[N], bool utf8,
                                                    std::index_sequence<I...>) {
  return {{{rows[I].key, rows[I].destination, rows[I].size, GetterFor(rows[I].read, utf8)}...}};
}
// The binding table of `rows` for a UTF-8 printer or for any other.
template <size_t N>
constexpr std::array<TicketBinding, N> MakeBindings(const TicketRow (&rows)[N], bool utf8) {
  return MakeBindings(rows, utf8, std::make_index_sequence<N>{});
}

// ---- Conditions ---------------------------------------------------------------

constexpr ConditionItem Is(const int32_t& field, const int32_t& constant) {
  return {&field, &constant, IntCampareFunc};
}
constexpr ConditionItem Not(const int32_t& field, const int32_t& constant) {
  return {&field, &constant, IntNoEqualCampareFunc};
}
constexpr ConditionItem Set(const char* text) {
  return {text, &OptionNULLStr, StrNoNULLCampareFunc};
}
constexpr ConditionItem Empty(const char* text) {
  return {text, &OptionNULLStr, StrIsNULLCampareFunc};
}
constexpr ConditionItem ShorterThan(const char* text, const int32_t& limit) {
  return {text, &limit, StrLengthLessThanCampareFunc};
}
// `cell` holds the reference text.
constexpr ConditionItem TextIs(const char* text, const char* const& cell) {
  return {text, &cell, StrEqualCampareFunc};
}
constexpr ConditionItem Contains(const char* text, const char* const& cell) {
  return {text, &cell, StrContainCampareFunc};
}
constexpr ConditionItem NotContains(const char* text, const char* const& cell) {
  return {text, &cell, StrNotContainCampareFunc};
}

// ---- Bound tables -------------------------------------------------------------

template <size_t N>
constexpr ConditionTable Conditions(const ConditionItem (&items)[N]) {
  return {static_cast<int32_t>(N), items};
}
template <size_t N>
constexpr ParamTable Params(const ParamPointer (&list)[N]) {
  return {static_cast<int32_t>(N), list};
}
