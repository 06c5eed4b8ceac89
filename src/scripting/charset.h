// Text in the character sets ADODB.Stream and the text files name: bytes to UTF-8 text and back.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::scripting {

enum class Charset {
  Utf8,     // "utf-8"
  Gbk,      // "gb2312", "gbk", "cp936", "x-gbk": code page 936
  Unicode,  // "unicode", "utf-16", "utf-16le": UTF-16, little-endian
  Ascii,    // "us-ascii", "ascii": bytes above 127 read as "?"
  Latin1,   // "iso-8859-1", "latin1": one byte per character, U+0000..U+00FF
};

// The character set of a name, in any case; nullopt for one we do not know.
std::optional<Charset> FindCharset(std::string_view name);

// UTF-8 text as bytes of the character set; a character the set lacks becomes "?".
std::string EncodeText(std::string_view text, Charset charset);
// Bytes of the character set as UTF-8 text; bytes that form no character become "?" (U+FFFD for
// the odd last byte of UTF-16). UTF-8 is taken as it is.
std::string DecodeText(std::string_view bytes, Charset charset);
// The length in bytes of the character that starts at bytes[at] (at < size): what ReadText(n)
// counts as one character.
size_t CharBytes(std::string_view bytes, size_t at, Charset charset);
// The byte order mark the platform writes before text in the set: UTF-8 and UTF-16 have one.
std::string_view ByteOrderMark(Charset charset);

}  // namespace corvane::scripting
