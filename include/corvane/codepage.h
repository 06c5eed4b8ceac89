// The web boundary's code page: 936 (Simplified Chinese, GBK) by default, 65001 (UTF-8) allowed.
// Conversions go through glibc iconv (CP936).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

constexpr int kCodePageGbk = 936;
constexpr int kCodePageUtf8 = 65001;

// UTF-8 text to bytes in the code page. A character the code page lacks becomes "?".
std::string EncodeCodePage(std::string_view utf8, int codePage = kCodePageGbk);
// Bytes in the code page to UTF-8 text. A byte sequence the code page does not define (such as a lone
// lead byte at the end) becomes "?".
std::string DecodeCodePage(std::string_view bytes, int codePage = kCodePageGbk);

// One character's code in the code page, as the platform's "ANSI code" of it: a single-byte character
// gives its byte (0..255), a double-byte one lead * 256 + trail (so above 255). A character the code
// page lacks gives the code of "?". Under 65001 a multi-byte UTF-8 sequence counts as one character
// and its code is formed of its bytes the same way (at most the last two bytes are kept).
// `ch` is one character as UTF-8.
uint32_t AnsiCode(std::string_view ch, int codePage = kCodePageGbk);
// The character (as UTF-8) whose code in the code page is `code` (0..65535); "?" when undefined.
std::string CharFromAnsiCode(uint32_t code, int codePage = kCodePageGbk);

bool IsSupportedCodePage(int codePage);
// The charset name of a supported code page, as HTTP and HTML name it: "gbk" for 936, "utf-8" for
// 65001.
std::string CharsetName(int codePage);

}  // namespace corvane
