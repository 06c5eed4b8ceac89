#include "upload/ansi_bytes.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "corvane/codepage.h"
#include "corvane/error.h"

namespace corvane::upload {

namespace {

// One UTF-16 code unit of UTF-8 text and the UTF-8 bytes it came from. A character outside the
// Basic Multilingual Plane is two units (surrogates) that share its bytes; a byte that is not valid
// UTF-8 is a unit of its own.
struct Unit {
  uint16_t code;
  std::string_view utf8;
  bool surrogate;
};

template <class F>
void ForEachUnit(std::string_view s, F&& f) {
  size_t i = 0;
  while (i < s.size()) {
    auto b = static_cast<unsigned char>(s[i]);
    size_t len = b < 0x80 ? 1 : (b >> 5) == 0x6 ? 2 : (b >> 4) == 0xE ? 3 : (b >> 3) == 0x1E ? 4 : 0;
    bool ok = len > 0 && i + len <= s.size();
    for (size_t k = 1; ok && k < len; ++k) ok = (static_cast<unsigned char>(s[i + k]) & 0xC0) == 0x80;
    if (!ok) {
      f(Unit{b, s.substr(i, 1), false});
      ++i;
      continue;
    }
    uint32_t cp = len == 1 ? b : b & (0xFF >> (len + 1));
    for (size_t k = 1; k < len; ++k) cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
    std::string_view bytes = s.substr(i, len);
    if (cp >= 0x10000) {
      cp -= 0x10000;
      f(Unit{static_cast<uint16_t>(0xD800 + (cp >> 10)), bytes, true});
      f(Unit{static_cast<uint16_t>(0xDC00 + (cp & 0x3FF)), bytes, true});
    } else {
      f(Unit{static_cast<uint16_t>(cp), bytes, false});
    }
    i += len;
  }
}

// The platform's Hex() of a 16-bit Integer: upper-case digits without leading zeros; a negative
// value shows its 16-bit two's complement.
std::string Hex16(int16_t v) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%X", static_cast<unsigned>(static_cast<uint16_t>(v)));
  return buf;
}

uint8_t HexByte(std::string_view digits) {
  unsigned v = 0;
  for (char c : digits) v = v * 16 + static_cast<unsigned>(c <= '9' ? c - '0' : c - 'A' + 10);
  return static_cast<uint8_t>(v);
}

// The characters of the double-byte codes (lead byte above 127), looked up once per code and kept:
// a converted character of up to three UTF-8 bytes is packed with its length into one word.
class DoubleByteTable {
 public:
  explicit DoubleByteTable(int codePage) : codePage_(codePage) {}

  void Append(uint16_t code, std::string& out) {
    std::atomic<uint32_t>& slot = slots_[code - 0x8000];
    uint32_t packed = slot.load(std::memory_order_relaxed);
    if (packed == 0) {
      std::string ch = CharFromAnsiCode(code, codePage_);
      if (ch.empty() || ch.size() > 3) {
        out += ch;
        return;
      }
      packed = static_cast<uint32_t>(ch.size()) << 24;
      for (size_t k = 0; k < ch.size(); ++k)
        packed |= static_cast<uint32_t>(static_cast<unsigned char>(ch[k])) << (8 * k);
      slot.store(packed, std::memory_order_relaxed);
    }
    for (uint32_t k = 0, n = packed >> 24; k < n; ++k) out += static_cast<char>((packed >> (8 * k)) & 0xFF);
  }

 private:
  int codePage_;
  std::array<std::atomic<uint32_t>, 0x8000> slots_{};
};

DoubleByteTable* TableFor(int codePage) {
  static DoubleByteTable gbk(kCodePageGbk);
  return codePage == kCodePageGbk ? &gbk : nullptr;
}

}  // namespace

std::string StringToBytes(std::string_view text, int codePage) {
  if (codePage == kCodePageUtf8) return EncodeCodePage(text, codePage);
  std::string out;
  ForEachUnit(text, [&](const Unit& u) {
    // Both code pages keep ASCII as it is: its code is the character's own, below 256.
    if (u.code < 0x80) {
      out += static_cast<char>(u.code);
      return;
    }
    // A lone surrogate or a stray byte has no character of its own in any code page: "?".
    uint32_t ansi = (u.surrogate || (u.utf8.size() == 1 && static_cast<unsigned char>(u.utf8[0]) >= 0x80))
                        ? uint32_t{'?'}
                        : AnsiCode(u.utf8, codePage);
    auto code = static_cast<int16_t>(static_cast<uint16_t>(ansi));
    int32_t adjusted = code < 0 ? code + 65535 : code;
    if (adjusted > 255) {
      std::string hex = Hex16(code);
      out += static_cast<char>(HexByte(std::string_view(hex).substr(0, 2)));
      out += static_cast<char>(HexByte(std::string_view(hex).substr(hex.size() - 2)));
    } else {
      out += static_cast<char>(u.code & 0xFF);
    }
  });
  return out;
}

std::string BytesToString(std::string_view bytes, int codePage) {
  if (codePage == kCodePageUtf8) return DecodeCodePage(bytes, codePage);
  std::string out;
  out.reserve(bytes.size());
  DoubleByteTable* table = TableFor(codePage);
  size_t i = 0;
  const size_t n = bytes.size();
  while (i < n) {
    // A run of single-byte characters is copied as it stands.
    size_t run = i;
    for (uint64_t word; run + 8 <= n; run += 8) {
      std::memcpy(&word, bytes.data() + run, 8);
      if (word & 0x8080808080808080ull) break;
    }
    while (run < n && static_cast<unsigned char>(bytes[run]) <= 127) ++run;
    out.append(bytes.data() + i, run - i);
    i = run;
    if (i == n) break;
    if (i + 1 == n) throw Error::InvalidCall();
    auto code = static_cast<uint16_t>(static_cast<unsigned char>(bytes[i]) * 256 +
                                      static_cast<unsigned char>(bytes[i + 1]));
    if (table)
      table->Append(code, out);
    else
      out += CharFromAnsiCode(code, codePage);
    i += 2;
  }
  return out;
}

}  // namespace corvane::upload
