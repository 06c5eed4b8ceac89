// The upload's conversions between text and byte strings in the host's "ANSI" code page.
//
// Under GBK they work character by character, as the upload always has, rather than through a
// whole-string conversion: a double-byte character becomes its lead and trail byte, and bytes become
// text two at a time whenever the first is above 127, whatever the second is. Text is UTF-8;
// characters are UTF-16 code units, as the platform's text functions count them.
//
// Under UTF-8 (65001) a character is its whole UTF-8 sequence, however many bytes it takes: text
// becomes its own bytes and bytes become the characters they spell, so that names and values
// round-trip. A byte that begins no valid sequence becomes "?".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::upload {

// StringToBytes: for each character, its code in the code page taken as a signed 16-bit number; a
// double-byte character (the number, plus 65535 when negative, is above 255) gives two bytes: the
// first two and the last two hex digits of the signed number's hex text; any other character gives
// the low byte of its UTF-16 code.
std::string StringToBytes(std::string_view text, int codePage);

// BytesToString: a byte above 127 joins the next byte into the code byte * 256 + next, which
// becomes the character with that code in the code page ("?" when it has none); any other byte is
// the character with that code. A byte above 127 in the last place has no partner and raises 5,
// as reading the byte past the end does.
std::string BytesToString(std::string_view bytes, int codePage);

}  // namespace corvane::upload
