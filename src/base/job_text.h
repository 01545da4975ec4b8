// Job-supplied text (title, user name, ticket values, names taken from the
// job's PostScript) written into the printer's languages. Whoever submits a
// job chooses these bytes; none of them may end the value, line or token
// they stand in, so a job can never write PJL or PostScript of its own.
//
// A control byte here is 0x01-0x08 or 0x0A-0x1F (ESC, CR and LF among them);
// HT, DEL and bytes from 0x80 on are never one: no UTF-8 or Shift-JIS
// character holds a control byte or a double quote.
#pragma once

#include <cstddef>

// PJL value: each control byte becomes '?', '"' becomes '\''. One byte for
// one, so lengths and cuts made before stay as they are. In place.
void CleanPJLText(char* text);

// `text` copied into `buffer` (cut at size - 1) and cleaned as above;
// returns `buffer`, ready to format into a PJL line.
const char* CleanPJLCopy(char* buffer, size_t size, const char* text);

// Buffer size that holds any PostScript string token made from `textSize`
// bytes of text: every byte escaped, its brackets and the NUL.
constexpr size_t PostScriptStringSize(size_t textSize) { return 2 * textSize + 3; }

// PostScript string token that shows `text` as typed. Text written as a
// literal string "(...)" keeps its brackets, a hex string "<...>" stays as it
// is, any other non-empty text is put in brackets; empty text stays empty.
// Inside the brackets a backslash and each parenthesis without a partner are
// escaped and control bytes become '?', so the token ends at its own
// closing bracket. Cut at size - 1 (a cut token stays open, as any cut line).
void PostScriptStringToken(char* out, size_t size, const char* text);

// Font name for "/<name>": characters outside 0x21-0x7E and the delimiters
// ()<>[]{}/% become '?', so the name cannot end early or start a comment.
void PostScriptNameText(char* out, size_t size, const char* text);

// Numbers for an array or a single number ("1,3", "5"): anything but digits,
// "+-.,", and spaces becomes '?', so the text can neither leave the array
// nor name an operator to run.
void PostScriptNumberText(char* out, size_t size, const char* text);
