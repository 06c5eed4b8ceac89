#include "upload/ansi_bytes.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "corvane/codepage.h"
#include "test_support.h"

namespace corvane::upload {
namespace {

TEST(AnsiBytes, GbkCharactersAreLeadAndTrailUtf8OnesTheirSequence) {
  // clang-format off
  const std::tuple<const char*, int, std::string> cases[] = {
      {"x姓名y", kCodePageGbk, "x\xD0\xD5\xC3\xFBy"},
      // The euro sign is the single byte 0x80 in the code page, so the character's own UTF-16
      // code gives the byte: its low byte, 0xAC.
      {"€", kCodePageGbk, "\xAC"},
      // A character the code page lacks has the code of "?" and gives the low byte of its UTF-16
      // code; one outside the BMP is two such characters (U+D83D U+DE00).
      {"😀", kCodePageGbk, std::string("\x3D\x00", 2)},
      // Under UTF-8 a character is its whole sequence.
      {"张三.txt", kCodePageUtf8, "\xE5\xBC\xA0\xE4\xB8\x89.txt"},
  };
  // clang-format on
  for (const auto& [text, codePage, bytes] : cases) EXPECT_EQ(StringToBytes(text, codePage), bytes) << text;

  // Bytes become text two at a time whenever the first is above 127; under UTF-8 a sequence at a time.
  // clang-format off
  const std::tuple<std::string, int, std::string> pairs[] = {
      {"\x7F\xD6\xD0\xCE\xC4!", kCodePageGbk, "\x7F中文!"},
      {"\x81\x40", kCodePageGbk, "丂"},  // a trail byte below 128
      // A pair the code page does not define is one "?", and takes its second byte with it, even
      // a ";" that could not be a trail byte.
      {"\xAA\xA1z", kCodePageGbk, "?z"},
      {"\xB0;a", kCodePageGbk, "?a"},
      // Under UTF-8 a whole sequence is one character; a byte that begins none is "?".
      {"\xE5\xBC\xA0\xE4\xB8\x89.txt", kCodePageUtf8, "张三.txt"},
      {"a\xE5\xBC" "b\xFF", kCodePageUtf8, "a??b?"},
  };
  // clang-format on
  for (const auto& [bytes, codePage, text] : pairs) EXPECT_EQ(BytesToString(bytes, codePage), text) << text;
  // A last byte above 127 has no partner.
  for (const char* bytes : {"\xD6", "abc\xD6", "\xD6\xD0\xCE"})
    EXPECT_EQ(corvane::testing::ErrorNumber([&] { BytesToString(bytes, kCodePageGbk); }), 5) << bytes;
}

}  // namespace
}  // namespace corvane::upload
