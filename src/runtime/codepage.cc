// Code page conversions: GBK through glibc iconv ("CP936"), UTF-8 by our own validation.
//
// glibc's CP936 is Microsoft's table: ASCII as is, 0x80 alone is the euro sign, lead bytes 0x81-0xFE
// with trail bytes 0x40-0x7E and 0x80-0xFE. It leaves the user-defined areas (for example AA A1 and
// A1 40) and the byte 0xFF undefined; those decode to "?" here.
//
// iconv descriptors hold conversion state and must not be shared between threads, so each thread
// opens its own pair once and resets it before each conversion. A text of ASCII only (the common
// case for markup) never reaches iconv: both code pages keep ASCII as it is.
#include "corvane/codepage.h"

#include <iconv.h>

#include <cerrno>

#include "corvane/error.h"
#include "runtime/utf8.h"

namespace corvane {
namespace {

class IconvHandle {
 public:
  IconvHandle(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  ~IconvHandle() {
    if (Ok()) iconv_close(cd_);
  }
  IconvHandle(const IconvHandle&) = delete;
  IconvHandle& operator=(const IconvHandle&) = delete;

  bool Ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t Get() const { return cd_; }

 private:
  iconv_t cd_;
};

struct GbkConverters {
  IconvHandle encode{"CP936", "UTF-8"};
  IconvHandle decode{"UTF-8", "CP936"};
};

iconv_t ThreadConverter(bool encode) {
  thread_local GbkConverters converters;
  const IconvHandle& h = encode ? converters.encode : converters.decode;
  if (!h.Ok()) throw Error(5, "Code page 936 is not available (iconv CP936)");
  iconv(h.Get(), nullptr, nullptr, nullptr, nullptr);  // back to the initial state
  return h.Get();
}

bool IsGbkLead(unsigned char b) { return b >= 0x81 && b <= 0xFE; }
bool IsGbkTrail(unsigned char b) { return b >= 0x40 && b <= 0xFE && b != 0x7F; }

// Runs one iconv conversion over all of `in`. Where iconv stops at a sequence it cannot convert,
// `skip(offset)` says how many input bytes that sequence spans; they become one "?".
template <typename Skip>
std::string Convert(iconv_t cd, std::string_view in, size_t outGuess, Skip skip) {
  std::string out(outGuess + 16, '\0');
  char* inPtr = const_cast<char*>(in.data());
  size_t inLeft = in.size();
  size_t used = 0;
  auto grow = [&] { out.resize(out.size() * 2); };
  while (inLeft > 0) {
    char* outPtr = out.data() + used;
    size_t outLeft = out.size() - used;
    size_t r = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    used = out.size() - outLeft;
    if (r != static_cast<size_t>(-1)) break;
    if (errno == E2BIG) {
      grow();
      continue;
    }
    // EILSEQ (undefined or malformed) or EINVAL (cut short at the end).
    if (used == out.size()) grow();
    out[used++] = '?';
    size_t n = skip(in.size() - inLeft);
    inPtr += n;
    inLeft -= n;
  }
  out.resize(used);
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
  if (codePage == kCodePageUtf8) return SanitizeUtf8(text);
  // GBK never takes more bytes than UTF-8 for the same text ("?" replaces at least one byte).
  return Convert(ThreadConverter(true), text, text.size(),
                 [&](size_t at) -> size_t { return utf8::DecodeAt(text, at).bytes; });
}

std::string DecodeCodePage(std::string_view bytes, int codePage) {
  CheckCodePage(codePage);
  if (utf8::IsAscii(bytes)) return std::string(bytes);
  if (codePage == kCodePageUtf8) return SanitizeUtf8(bytes);
  // A double-byte character grows from 2 to 3 bytes; a lone 0x80 (euro) from 1 to 3 is rare.
  return Convert(ThreadConverter(false), bytes, bytes.size() + bytes.size() / 2, [&](size_t at) -> size_t {
    // An undefined pair (a lead byte and a byte in the trail range) is one character; otherwise the
    // bad byte goes alone and what follows it is read afresh.
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const bool pair =
        at + 1 < bytes.size() && IsGbkLead(lead) && IsGbkTrail(static_cast<unsigned char>(bytes[at + 1]));
    return pair ? 2 : 1;
  });
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
