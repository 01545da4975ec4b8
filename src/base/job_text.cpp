#include "base/job_text.h"

#include <cstring>
#include <vector>

#include "base/fixed_text.h"

namespace {

bool IsControlByte(unsigned char byte) {
  return (byte >= 0x01 && byte <= 0x08) || (byte >= 0x0A && byte <= 0x1F);
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Writes into a fixed buffer, dropping what does not fit before its NUL.
class BoundedOut {
 public:
  BoundedOut(char* buffer, size_t size) : at_(buffer), left_(size) { ZeroText(buffer, size); }
  void Put(char c) {
    if (left_ <= 1) return;
    *at_++ = c;
    --left_;
  }

 private:
  char* at_;
  size_t left_;
};

// Copies `text` with every byte that `allowed` refuses turned into '?'.
template <typename Allowed>
void KeepOnly(char* out, size_t size, const char* text, Allowed allowed) {
  BoundedOut writer(out, size);
  for (const char* p = text; *p != '\0'; ++p) writer.Put(allowed(*p) ? *p : '?');
}

// "<" hex digits and spaces ">": already a token that cannot end early.
bool IsHexString(const char* text, size_t length) {
  if (length < 2 || text[0] != '<' || text[length - 1] != '>') return false;
  for (size_t i = 1; i + 1 < length; ++i) {
    if (!IsHexDigit(text[i]) && text[i] != ' ') return false;
  }
  return true;
}

// Which parentheses of `text` have no partner inside it.
std::vector<bool> UnpairedParentheses(const char* text, size_t length) {
  std::vector<bool> unpaired(length, false);
  std::vector<size_t> open;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == '(') open.push_back(i);
    if (text[i] != ')') continue;
    if (open.empty()) {
      unpaired[i] = true;
    } else {
      open.pop_back();
    }
  }
  for (size_t i : open) unpaired[i] = true;
  return unpaired;
}

}  // namespace

void CleanPJLText(char* text) {
  for (char* p = text; *p != '\0'; ++p) {
    if (IsControlByte(static_cast<unsigned char>(*p))) *p = '?';
    if (*p == '"') *p = '\'';
  }
}

const char* CleanPJLCopy(char* buffer, size_t size, const char* text) {
  CopyText(buffer, size, text);
  if (size > 0) CleanPJLText(buffer);
  return buffer;
}

void PostScriptStringToken(char* out, size_t size, const char* text) {
  size_t length = std::strlen(text);
  if (length == 0 || IsHexString(text, length)) {
    CopyText(out, size, text);
    return;
  }
  bool bracketed = length >= 2 && text[0] == '(' && text[length - 1] == ')';
  const char* inner = bracketed ? text + 1 : text;
  size_t innerLength = bracketed ? length - 2 : length;
  std::vector<bool> unpaired = UnpairedParentheses(inner, innerLength);

  BoundedOut writer(out, size);
  writer.Put('(');
  for (size_t i = 0; i < innerLength; ++i) {
    char c = inner[i];
    if (c == '\\' || unpaired[i]) writer.Put('\\');
    writer.Put(IsControlByte(static_cast<unsigned char>(c)) ? '?' : c);
  }
  writer.Put(')');
}

void PostScriptNameText(char* out, size_t size, const char* text) {
  KeepOnly(out, size, text, [](char c) {
    return c >= 0x21 && c <= 0x7E && std::strchr("()<>[]{}/%", c) == nullptr;
  });
}

void PostScriptNumberText(char* out, size_t size, const char* text) {
  KeepOnly(out, size, text, [](char c) {
    return (c >= '0' && c <= '9') || std::strchr("+-., ", c) != nullptr;
  });
}
