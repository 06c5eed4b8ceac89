// Code page conversions: GBK by tables built from glibc's iconv ("CP936"), UTF-8 by our own
// validation.
//
// glibc's CP936 is Microsoft's table: ASCII as is, 0x80 alone is the euro sign, lead bytes 0x81-0xFE
// with trail bytes 0x40-0x7E and 0x80-0xFE. It leaves the user-defined areas (for example AA A1 and
// A1 40) and the byte 0xFF undefined; those decode to "?" here.
//
// Every page's reply goes through the encoder, so conversions do not call iconv: on first use iconv
// is asked once about every character of the BMP and every byte pair, and the answers are kept in two
// tables (a few hundred KB, shared read-only by every thread). The tables therefore say exactly what
// iconv says. A text of ASCII only (the common case for markup) is copied as it is.
#include "corvane/codepage.h"

#include <iconv.h>

#include <cstring>
#include <memory>
#include <vector>

#include "corvane/error.h"
#include "runtime/utf8.h"

namespace corvane {
namespace {

bool IsGbkLead(unsigned char b) { return b >= 0x81 && b <= 0xFE; }
bool IsGbkTrail(unsigned char b) { return b >= 0x40 && b <= 0xFE && b != 0x7F; }

struct GbkTables {
  // A BMP code point's GBK code: one byte below 0x100, a lead and a trail byte above; 0 when CP936
  // has no code for it.
  std::vector<uint16_t> toGbk = std::vector<uint16_t>(0x10000);
  // The code point of the single byte b (index b - 0x80) or of the pair lead/trail (index
  // lead << 8 | trail, from 0x8000 on); 0 when undefined.
  std::vector<char32_t> fromGbk = std::vector<char32_t>(0x10000);
};

// What one iconv conversion of the whole of `in` gives, or "" when iconv refuses any of it.
std::string IconvOnce(iconv_t cd, std::string_view in) {
  char buffer[8];
  char* inPtr = const_cast<char*>(in.data());
  size_t inLeft = in.size();
  char* outPtr = buffer;
  size_t outLeft = sizeof buffer;
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  if (iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1) || inLeft != 0) return "";
  return std::string(buffer, static_cast<size_t>(outPtr - buffer));
}

std::unique_ptr<GbkTables> BuildGbkTables() {
  iconv_t encode = iconv_open("CP936", "UTF-8"), decode = iconv_open("UTF-8", "CP936");
  const auto bad = reinterpret_cast<iconv_t>(-1);
  if (encode == bad || decode == bad) {
    if (encode != bad) iconv_close(encode);
    if (decode != bad) iconv_close(decode);
    return nullptr;
  }
  auto t = std::make_unique<GbkTables>();
  for (char32_t c = 0x80; c < 0x10000; ++c) {
    if (c >= 0xD800 && c <= 0xDFFF) continue;
    std::string utf8;
    utf8::Append(utf8, c);
    const std::string gbk = IconvOnce(encode, utf8);
    if (gbk.size() == 1) t->toGbk[c] = static_cast<unsigned char>(gbk[0]);
    if (gbk.size() == 2)
      t->toGbk[c] =
          static_cast<uint16_t>(static_cast<unsigned char>(gbk[0]) << 8 | static_cast<unsigned char>(gbk[1]));
  }
  auto decodeOne = [&](std::string_view bytes) -> char32_t {
    const std::string text = IconvOnce(decode, bytes);
    if (text.empty()) return 0;
    const utf8::Char ch = utf8::DecodeAt(text, 0);
    return ch.valid && ch.bytes == text.size() ? ch.code : 0;
  };
  for (unsigned b = 0x80; b < 0x100; ++b)
    t->fromGbk[b - 0x80] = decodeOne(std::string(1, static_cast<char>(b)));
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead)
    for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
      if (!IsGbkTrail(static_cast<unsigned char>(trail))) continue;
      const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
      t->fromGbk[lead << 8 | trail] = decodeOne(std::string_view(pair, 2));
    }
  iconv_close(encode);
  iconv_close(decode);
  return t;
}

const GbkTables& Gbk() {
  static const std::unique_ptr<GbkTables> tables = BuildGbkTables();
  if (!tables) throw Error(5, "Code page 936 is not available (iconv CP936)");
  return *tables;
}

std::string EncodeGbk(std::string_view text) {
  const GbkTables& t = Gbk();
  // GBK never takes more bytes than UTF-8 for the same text: the output is written in place into
  // a buffer of the input's size and cut to length at the end. The output never runs ahead of the
  // input, so a word read from the input always fits where it goes.
  std::string out(text.size(), '\0');
  char* o = out.data();
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* const end = p + text.size();
  while (p < end) {
    // ASCII a word at a time: the whole word is written, and the output moves on by its ASCII
    // bytes only.
    while (end - p >= 8) {
      std::memcpy(o, p, 8);
      const size_t ascii = utf8::AsciiBytesAt(p);
      o += ascii;
      p += ascii;
      if (ascii < 8) break;
    }
    while (p < end && *p < 0x80) *o++ = static_cast<char>(*p++);
    if (p >= end) break;
    const utf8::Char c =
        utf8::DecodeAt(text, static_cast<size_t>(p - reinterpret_cast<const unsigned char*>(text.data())));
    const uint16_t code = c.valid && c.code < 0x10000 ? t.toGbk[c.code] : 0;
    if (code == 0) {
      *o++ = '?';
    } else if (code < 0x100) {
      *o++ = static_cast<char>(code);
    } else {
      *o++ = static_cast<char>(code >> 8);
      *o++ = static_cast<char>(code & 0xFF);
    }
    p += c.bytes;
  }
  out.resize(static_cast<size_t>(o - out.data()));
  return out;
}

// An undefined pair (a lead byte and a byte in the trail range) is one "?"; otherwise a bad byte goes
// alone and what follows it is read afresh.
std::string DecodeGbk(std::string_view bytes) {
  const GbkTables& t = Gbk();
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 2);
  size_t i = 0;
  while (i < bytes.size()) {
    const size_t run = utf8::AsciiRun(bytes, i);
    out.append(bytes.substr(i, run));
    i += run;
    if (i >= bytes.size()) break;
    const auto b = static_cast<unsigned char>(bytes[i]);
    char32_t c = t.fromGbk[b - 0x80];
    size_t used = 1;
    if (c == 0 && IsGbkLead(b) && i + 1 < bytes.size() &&
        IsGbkTrail(static_cast<unsigned char>(bytes[i + 1]))) {
      c = t.fromGbk[b << 8 | static_cast<unsigned char>(bytes[i + 1])];
      used = 2;
    }
    if (c == 0)
      out.push_back('?');
    else
      utf8::Append(out, c);
    i += used;
  }
  return out;
}

// UTF-8 to UTF-8 with every malformed byte replaced by "?": the 65001 conversion both ways.
std::string SanitizeUtf8(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  size_t i = 0;
  while (i < s.size()) {
    size_t run = utf8::AsciiRun(s, i);
    out.append(s.substr(i, run));
    i += run;
    if (i >= s.size()) break;
    utf8::Char c = utf8::DecodeAt(s, i);
    if (c.valid)
      out.append(s.substr(i, c.bytes));
    else
      out.push_back('?');
    i += c.bytes;
  }
  return out;
}

void CheckCodePage(int codePage) {
  if (!IsSupportedCodePage(codePage)) throw Error::InvalidCall();
}

// Whether `s` is exactly one character.
bool IsOneChar(std::string_view s) { return !s.empty() && utf8::DecodeAt(s, 0).bytes == s.size(); }

}  // namespace

bool IsSupportedCodePage(int codePage) { return codePage == kCodePageGbk || codePage == kCodePageUtf8; }

std::string CharsetName(int codePage) {
  CheckCodePage(codePage);
  return codePage == kCodePageUtf8 ? "utf-8" : "gbk";
}

std::string EncodeCodePage(std::string_view text, int codePage) {
  CheckCodePage(codePage);
  if (utf8::IsAscii(text)) return std::string(text);
  return codePage == kCodePageUtf8 ? SanitizeUtf8(text) : EncodeGbk(text);
}

std::string DecodeCodePage(std::string_view bytes, int codePage) {
  CheckCodePage(codePage);
  if (utf8::IsAscii(bytes)) return std::string(bytes);
  return codePage == kCodePageUtf8 ? SanitizeUtf8(bytes) : DecodeGbk(bytes);
}

uint32_t AnsiCode(std::string_view ch, int codePage) {
  CheckCodePage(codePage);
  if (ch.empty()) throw Error::InvalidCall();
  const utf8::Char c = utf8::DecodeAt(ch, 0);
  if (!c.valid) return '?';
  const std::string bytes = codePage == kCodePageUtf8 ? std::string(ch.substr(0, c.bytes))
                                                      : EncodeCodePage(ch.substr(0, c.bytes), codePage);
  uint32_t code = 0;
  for (unsigned char b : bytes) code = (code << 8 | b) & 0xFFFF;
  return code;
}

std::string CharFromAnsiCode(uint32_t code, int codePage) {
  CheckCodePage(codePage);
  if (code > 0xFFFF) throw Error::InvalidCall();
  std::string bytes;
  if (code > 0xFF) bytes.push_back(static_cast<char>(code >> 8));
  bytes.push_back(static_cast<char>(code & 0xFF));
  std::string text = DecodeCodePage(bytes, codePage);
  return IsOneChar(text) ? text : std::string("?");
}

}  // namespace corvane
