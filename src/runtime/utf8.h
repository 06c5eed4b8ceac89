// UTF-8 decoding shared by the text and code page functions.
//
// One model of a byte string serves every function: a well-formed UTF-8 sequence (no overlong forms,
// no encoded surrogates, nothing above U+10FFFF) is one character; any other byte is a character of
// its own, one byte long. A character counts one UTF-16 code unit, or two above U+FFFF. Matching,
// counting and slicing all agree on this model, so an invalid byte is never lost or split.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace corvane::utf8 {

// One decoded character: its code point (U+FFFD for an invalid byte), its length in bytes and whether
// the bytes were well-formed.
struct Char {
  char32_t code;
  uint8_t bytes;
  bool valid;
  int Units() const { return code > 0xFFFF ? 2 : 1; }
};

inline bool IsContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes the character that starts at s[i] (i < s.size()).
inline Char DecodeAt(std::string_view s, size_t i) {
  const auto* p = reinterpret_cast<const unsigned char*>(s.data()) + i;
  const size_t left = s.size() - i;
  const unsigned char b0 = p[0];
  if (b0 < 0x80) return {b0, 1, true};
  // Chinese text is mostly three bytes led by E1..EC, where no overlong form or surrogate starts.
  if (b0 >= 0xE1 && b0 <= 0xEC && left >= 3 && IsContinuation(p[1]) && IsContinuation(p[2]))
    return {static_cast<char32_t>((b0 & 0x0F) << 12 | (p[1] & 0x3F) << 6 | (p[2] & 0x3F)), 3, true};
  constexpr Char kInvalid{0xFFFD, 1, false};
  if (b0 < 0xC2 || b0 > 0xF4) return kInvalid;
  if (b0 < 0xE0) {
    if (left < 2 || !IsContinuation(p[1])) return kInvalid;
    return {static_cast<char32_t>((b0 & 0x1F) << 6 | (p[1] & 0x3F)), 2, true};
  }
  if (b0 < 0xF0) {
    if (left < 3 || !IsContinuation(p[1]) || !IsContinuation(p[2])) return kInvalid;
    if (b0 == 0xE0 && p[1] < 0xA0) return kInvalid;  // overlong
    if (b0 == 0xED && p[1] > 0x9F) return kInvalid;  // surrogate
    return {static_cast<char32_t>((b0 & 0x0F) << 12 | (p[1] & 0x3F) << 6 | (p[2] & 0x3F)), 3, true};
  }
  if (left < 4 || !IsContinuation(p[1]) || !IsContinuation(p[2]) || !IsContinuation(p[3])) return kInvalid;
  if (b0 == 0xF0 && p[1] < 0x90) return kInvalid;  // overlong
  if (b0 == 0xF4 && p[1] > 0x8F) return kInvalid;  // above U+10FFFF
  return {static_cast<char32_t>((b0 & 0x07) << 18 | (p[1] & 0x3F) << 12 | (p[2] & 0x3F) << 6 | (p[3] & 0x3F)),
          4, true};
}

static_assert(std::endian::native == std::endian::little, "words are read little-endian");

// The number of ASCII bytes (0 to 8) that the eight bytes at `p` begin with.
inline size_t AsciiBytesAt(const void* p) {
  uint64_t word;
  std::memcpy(&word, p, 8);
  const uint64_t high = word & 0x8080808080808080ull;
  return high ? static_cast<size_t>(std::countr_zero(high)) / 8 : 8;
}

// Length of the run of ASCII bytes that starts at s[i], eight bytes at a time where possible.
inline size_t AsciiRun(std::string_view s, size_t i) {
  const size_t start = i;
  const size_t n = s.size();
  while (i + 8 <= n) {
    const size_t ascii = AsciiBytesAt(s.data() + i);
    i += ascii;
    if (ascii < 8) return i - start;
  }
  while (i < n && static_cast<unsigned char>(s[i]) < 0x80) ++i;
  return i - start;
}

inline bool IsAscii(std::string_view s) { return AsciiRun(s, 0) == s.size(); }

// Appends the UTF-8 form of a code point (a surrogate or a value above U+10FFFF becomes U+FFFD).
template <typename String>
void Append(String& out, char32_t c) {
  if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = 0xFFFD;
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | c >> 6));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | c >> 12));
    out.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | c >> 18));
    out.push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

}  // namespace corvane::utf8
