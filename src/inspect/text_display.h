// Showing bytes from a print stream to people and to scripts: values in the
// stream's text encoding (UTF-8, or the Shift-JIS form of JIS X 0213) as
// UTF-8, control bytes made visible, bytes that are not text escaped.
#pragma once

#include <string>
#include <string_view>

// True when `bytes` decode completely in the encoding (and hold no NUL).
bool IsValidText(std::string_view bytes, bool utf8);

// UTF-8 text for `bytes`: characters converted from the stream's encoding;
// ESC shown as <ESC>, CR as <CR>, other control bytes as <XX>; a byte that
// starts no valid character as \xNN. The result is always valid UTF-8.
std::string DisplayText(std::string_view bytes, bool utf8);

// Like DisplayText, cut to about `limit` bytes of input with "..." after it.
std::string DisplayExcerpt(std::string_view bytes, bool utf8, size_t limit);
