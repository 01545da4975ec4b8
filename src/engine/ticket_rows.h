// Binding tables written as rows that say how each key is read, so that a
// module's table and its UTF-8 variant come from one list of rows.
//
//   constexpr TicketRow kRows[] = {Row(JTZ_KEY("PrintTypeTicketKey"), pt.printType,
//                                      TicketRead::Integer), ...};
//   const std::array<TicketBinding, 8> table = MakeBindings(kRows, IsUTF8);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "secure/password_field.h"
#include "ticket/ticket_access.h"

// How a row reads its key. `Name` is text that UTF-8 printers take in
// UTF-8; every other text is read in the Shift-JIS form.
enum class TicketRead { Integer, Text, Name, Password, KeyAbsent, NumberUp };

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
    case TicketRead::Text:
      return GetTicketStringConvertedToPrtLang;
    case TicketRead::Name:
      return utf8 ? GetTicketStringConvertedToPrtLangForUTF8 : GetTicketStringConvertedToPrtLang;
    case TicketRead::Password:
      return GetTicketPasswordStringConvertedToEncryption;
    case TicketRead::KeyAbsent:
      return CheckTicketKey;
    case TicketRead::NumberUp:
      return GetNumberUpTicketString;
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
