// Code pages: GBK (936) through iconv both ways, what it cannot convert ("?"), UTF-8 (65001) cleaning,
// the ANSI codes of characters, charset names, and the code pages refused.
#include "corvane/codepage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "test_support.h"

namespace corvane {

const std::string kChinese = "中文测试", kChineseGbk = "\xD6\xD0\xCE\xC4\xB2\xE2\xCA\xD4";

TEST(CodePage, ConvertsBothWaysWholeOnManyThreadsAndMarksWhatTheCodePageLacks) {
  // GBK: ASCII (NUL included) passes as it is; the euro sign is the single byte 80. Not in the code page:
  // a character outside the BMP, Thai, a stray byte, a cut-off sequence (two bytes). Undefined on the way
  // back: a lone lead byte at the end; D6 30, a trail byte out of range (the lead goes alone); AA A1, a
  // user-defined pair (one "?" for both); FF, no lead byte; 81 30 81 30, a four-byte GB18030 form. D6 61
  // is a defined pair (GBK/4). UTF-8 keeps well-formed text and marks each stray byte.
  const std::string ascii = "a'\r\n\t~\x7F" + std::string(1, '\0'), page = "<td>第一页</td>，！";
  // clang-format off
  const struct { std::string got, want; } cases[] = {
      {EncodeCodePage(kChinese), kChineseGbk}, {DecodeCodePage(kChineseGbk), kChinese},
      {EncodeCodePage(page), "<td>\xB5\xDA\xD2\xBB\xD2\xB3</td>\xA3\xAC\xA3\xA1"},
      {DecodeCodePage("<td>\xB5\xDA\xD2\xBB\xD2\xB3</td>\xA3\xAC\xA3\xA1"), page},
      {EncodeCodePage(ascii), ascii}, {DecodeCodePage(ascii), ascii}, {EncodeCodePage(""), ""},
      {EncodeCodePage("€5"), "\x80" "5"}, {DecodeCodePage("\x80" "5"), "€5"}, {EncodeCodePage("a😀b"), "a?b"},
      {EncodeCodePage("ก"), "?"}, {EncodeCodePage("中\xFF文"), "\xD6\xD0?\xCE\xC4"},
      {EncodeCodePage("x\xE4\xB8"), "x??"}, {EncodeCodePage("\xED\xA0\x80\xE0\x80\x80"), "??????"}, {DecodeCodePage("ab\xD6"), "ab?"},
      {DecodeCodePage("\xD6\x30" "x"), "?0x"}, {DecodeCodePage("\xAA\xA1\xD6\xD0"), "?中"},
      {DecodeCodePage("\xFF\xD6\xD0"), "?中"}, {DecodeCodePage("\xD6\xD0\xD6\xD0\x81"), "中中?"},
      {DecodeCodePage("\x81\x30\x81\x30"), "?0?0"}, {DecodeCodePage("\xD6" "a"), "\xE8\xAC\x85"},
      {EncodeCodePage(kChinese + "😀", 65001), kChinese + "😀"},
      {DecodeCodePage(kChinese + "😀", 65001), kChinese + "😀"}, {EncodeCodePage("a\xE4\xB8", 65001), "a??"},
      {DecodeCodePage("\xC0\xAF", 65001), "??"}, {DecodeCodePage("\xFF" "x", 65001), "?x"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(c.got, c.want) << "case " << &c - cases;
  // "€" grows from one byte to three: the text outgrows the first guess at its UTF-8 length.
  std::string text, gbk;
  for (int i = 0; i < 20000; ++i) text += kChinese + "€ ", gbk += kChineseGbk + "\x80 ";
  EXPECT_EQ(EncodeCodePage(text + "\xFF"), gbk + "?");
  EXPECT_EQ(DecodeCodePage(gbk + "\xD6"), text + "?");
  // The conversion tables are built by the first thread that needs them and read by all.
  const std::string part = text.substr(0, 4000), bytes = gbk.substr(0, 2500);  // 250 times
  std::atomic<int> failures = 0;
  auto convert = [&] {
    for (int i = 0; i < 200; ++i) failures += EncodeCodePage(part) != bytes || DecodeCodePage(bytes) != part;
  };
  { std::jthread a(convert), b(convert), c(convert), d(convert); }
  EXPECT_EQ(failures, 0);
}

TEST(CodePage, EveryDefinedPairComesBackAsItWent) {
  // Each pair the code page defines decodes to one character that encodes to the same pair; the
  // undefined ones are the user-defined areas and the unused corners of the lead/trail square.
  int defined = 0, changed = 0;
  for (int lead = 0x81; lead <= 0xFE; ++lead)
    for (int trail = 0x40; trail <= 0xFE; ++trail) {
      if (trail == 0x7F) continue;
      const std::string pair{static_cast<char>(lead), static_cast<char>(trail)};
      const std::string text = DecodeCodePage(pair);
      if (text == "?") continue;
      ++defined;
      changed += EncodeCodePage(text) != pair;
    }
  EXPECT_EQ(defined, 21791);
  EXPECT_EQ(changed, 0);
}

TEST(CodePage, AnsiCodesOfCharactersAndBackAndTheCodePagesRefused) {
  // Only the first character counts; one the code page lacks gives the code of "?"; under UTF-8 a
  // character's code is formed of its last two bytes.
  // clang-format off
  const struct { uint32_t got, want; } codes[] = {
      {AnsiCode("A"), 65}, {AnsiCode("中"), 0xD6D0}, {AnsiCode("中文"), 0xD6D0}, {AnsiCode("€"), 0x80},
      {AnsiCode("😀"), '?'}, {AnsiCode("\xFF"), '?'}, {AnsiCode(std::string(1, '\0')), 0},
      {AnsiCode("A", 65001), 65}, {AnsiCode("é", 65001), 0xC3A9}, {AnsiCode("中", 65001), 0xB8AD},
      {AnsiCode("😀", 65001), 0x9880}, {AnsiCode("\xE4\xB8", 65001), '?'},
  };
  // clang-format on
  for (const auto& c : codes) EXPECT_EQ(c.got, c.want) << "case " << &c - codes;
  for (const char* ch : {"中", "文", "第", "，", "A", "€"}) EXPECT_EQ(CharFromAnsiCode(AnsiCode(ch)), ch);
  // Not one character: a lead byte alone, a user-defined pair, a lead byte and NUL, two characters; under
  // UTF-8 two characters and a lone byte.
  for (uint32_t code : {0xD6, 0xAAA1, 0xD600, 0x4142}) EXPECT_EQ(CharFromAnsiCode(code), "?") << code;
  EXPECT_EQ(CharFromAnsiCode(0x4142, 65001) + CharFromAnsiCode(0xE9, 65001), "??");
  EXPECT_EQ(CharFromAnsiCode(0xC3A9, 65001) + CharFromAnsiCode(0), "é" + std::string(1, '\0'));
  EXPECT_EQ(CharsetName(936) + " " + CharsetName(65001), "gbk utf-8");
  EXPECT_FALSE(IsSupportedCodePage(1252));
  using testing::ErrorNumber;
  for (int n : {ErrorNumber([] { EncodeCodePage("a", 1252); }), ErrorNumber([] { DecodeCodePage("a", 437); }),
                ErrorNumber([] { CharsetName(0); }), ErrorNumber([] { AnsiCode("a", 1252); }),
                ErrorNumber([] { CharFromAnsiCode(65, 1252); }), ErrorNumber([] { AnsiCode(""); }),
                ErrorNumber([] { CharFromAnsiCode(0x10000); })})
    EXPECT_EQ(n, 5);
}

}  // namespace corvane
