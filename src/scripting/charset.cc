// Character set conversions: code page 936 through the runtime's iconv conversion, the others here.
#include "scripting/charset.h"

#include "corvane/codepage.h"
#include "corvane/text.h"
#include "runtime/utf8.h"

namespace corvane::scripting {

namespace {

// Text to single bytes, each character up to `highest`; others become "?".
std::string EncodeBytes(std::string_view text, char32_t highest) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const utf8::Char c = utf8::DecodeAt(text, i);
    i += c.bytes;
    out.push_back(c.valid && c.code <= highest ? static_cast<char>(c.code) : '?');
  }
  return out;
}

}  // namespace

std::optional<Charset> FindCharset(std::string_view name) {
  static const struct {
    std::string_view name;
    Charset charset;
  } kNames[] = {
      {"utf-8", Charset::Utf8},      {"utf8", Charset::Utf8},      {"gb2312", Charset::Gbk},
      {"gbk", Charset::Gbk},         {"cp936", Charset::Gbk},      {"x-gbk", Charset::Gbk},
      {"unicode", Charset::Unicode}, {"utf-16", Charset::Unicode}, {"utf-16le", Charset::Unicode},
      {"us-ascii", Charset::Ascii},  {"ascii", Charset::Ascii},    {"iso-8859-1", Charset::Latin1},
      {"latin1", Charset::Latin1},
  };
  for (const auto& n : kNames)
    if (EqualsNoCase(n.name, name)) return n.charset;
  return std::nullopt;
}

std::string EncodeText(std::string_view text, Charset charset) {
  switch (charset) {
    case Charset::Utf8: return std::string(text);
    case Charset::Gbk: return EncodeCodePage(text, kCodePageGbk);
    case Charset::Ascii: return EncodeBytes(text, 0x7F);
    case Charset::Latin1: return EncodeBytes(text, 0xFF);
    case Charset::Unicode: break;
  }
  std::string out;
  for (char16_t u : ToUtf16(text)) {
    out.push_back(static_cast<char>(u & 0xFF));
    out.push_back(static_cast<char>(u >> 8));
  }
  return out;
}

std::string DecodeText(std::string_view bytes, Charset charset) {
  std::string out;
  switch (charset) {
    case Charset::Utf8: return std::string(bytes);
    case Charset::Gbk: return DecodeCodePage(bytes, kCodePageGbk);
    case Charset::Ascii:
      for (char b : bytes) out.push_back(static_cast<unsigned char>(b) < 0x80 ? b : '?');
      return out;
    case Charset::Latin1:
      for (char b : bytes) utf8::Append(out, static_cast<unsigned char>(b));
      return out;
    case Charset::Unicode: break;
  }
  std::u16string units;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2)
    units.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8));
  out = FromUtf16(units);
  if (bytes.size() % 2) utf8::Append(out, 0xFFFD);
  return out;
}

size_t CharBytes(std::string_view bytes, size_t at, Charset charset) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  switch (charset) {
    case Charset::Utf8: return utf8::DecodeAt(bytes, at).bytes;
    case Charset::Unicode: return at + 1 < bytes.size() ? 2 : 1;
    case Charset::Gbk:
      if (byte(at) >= 0x81 && byte(at) <= 0xFE && at + 1 < bytes.size() && byte(at + 1) >= 0x40 &&
          byte(at + 1) <= 0xFE && byte(at + 1) != 0x7F)
        return 2;
      return 1;
    case Charset::Ascii:
    case Charset::Latin1: return 1;
  }
  return 1;
}

std::string_view ByteOrderMark(Charset charset) {
  switch (charset) {
    case Charset::Utf8: return "\xEF\xBB\xBF";
    case Charset::Unicode: return "\xFF\xFE";
    default: return "";
  }
}

}  // namespace corvane::scripting
