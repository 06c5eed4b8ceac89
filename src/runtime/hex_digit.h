// The value of one hexadecimal digit, for the decoders of escapes: URLs, script literals, patterns.
#pragma once

namespace corvane {

// 0-15 for 0-9, a-f, A-F; -1 for any other character.
constexpr int HexDigitValue(char32_t c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
  return -1;
}

}  // namespace corvane
