#include "corvane/codepage.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "corvane/error.h"

namespace corvane {
namespace {

const std::string kChineseUtf8 = "中文测试";
const std::string kChineseGbk = "\xD6\xD0\xCE\xC4\xB2\xE2\xCA\xD4";

TEST(CodePageGbk, RoundTripsChineseText) {
  EXPECT_EQ(EncodeCodePage(kChineseUtf8), kChineseGbk);
  EXPECT_EQ(DecodeCodePage(kChineseGbk), kChineseUtf8);
  const std::string mixed = "<td nowrap>第一页</td>，上一页！ab";
  EXPECT_EQ(DecodeCodePage(EncodeCodePage(mixed)), mixed);
}

TEST(CodePageGbk, AsciiPassesUnchanged) {
  const std::string ascii = "select * from t where a='x'\r\n\t~\x7F";
  EXPECT_EQ(EncodeCodePage(ascii), ascii);
  EXPECT_EQ(DecodeCodePage(ascii), ascii);
  EXPECT_EQ(EncodeCodePage(std::string("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(EncodeCodePage(""), "");
}

TEST(CodePageGbk, EuroIsTheSingleByte80) {
  EXPECT_EQ(EncodeCodePage("€5"), "\x80" "5");
  EXPECT_EQ(DecodeCodePage("\x80" "5"), "€5");
}

TEST(CodePageGbk, CharactersOutsideTheCodePageBecomeQuestionMarks) {
  EXPECT_EQ(EncodeCodePage("a😀b"), "a?b");        // outside the BMP: not in CP936
  EXPECT_EQ(EncodeCodePage("中\xFF文"), "\xD6\xD0?\xCE\xC4");  // a stray byte
  EXPECT_EQ(EncodeCodePage("x\xE4\xB8"), "x??");   // a cut-off sequence: two stray bytes
  EXPECT_EQ(EncodeCodePage("ก"), "?");             // Thai
}

TEST(CodePageGbk, UndefinedBytesBecomeQuestionMarks) {
  struct Case {
    std::string bytes, text;
  } cases[] = {
      {"ab\xD6", "ab?"},                          // a lone lead byte at the end
      {"\xD6" "a", "\xE8\xAC\x85"},               // D6 61 is a defined pair (GBK/4 area)
      {"\xD6\x30" "x", "?0x"},                    // a trail byte out of range: the lead alone
      {"\xAA\xA1\xD6\xD0", "?中"},                // a user-defined pair: one "?" for both bytes
      {"\xFF\xD6\xD0", "?中"},                    // 0xFF is not a lead byte
      {"\xD6\xD0\xD6\xD0\x81", "中中?"},
      {"\x81\x30\x81\x30", "?0?0"},               // four-byte GB18030 forms are not CP936
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeCodePage(c.bytes), c.text) << c.text;
}

TEST(CodePageGbk, LongTextsConvertWhole) {
  std::string text, gbk;
  for (int i = 0; i < 20000; ++i) {
    text += "中文测试 ";
    gbk += kChineseGbk + " ";
  }
  text += "\xFF";
  gbk += "?";
  EXPECT_EQ(EncodeCodePage(text), gbk);
  EXPECT_EQ(DecodeCodePage(gbk), text.substr(0, text.size() - 1) + "?");
  // Mostly single bytes that each grow to three (euro signs) overrun the first output guess.
  std::string euros(5000, '\x80');
  std::string expect;
  for (int i = 0; i < 5000; ++i) expect += "€";
  EXPECT_EQ(DecodeCodePage(euros), expect);
}

TEST(CodePageGbk, ThreadsConvertIndependently) {
  std::vector<std::thread> threads;
  std::vector<int> failures(4, 0);
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([t, &failures] {
      for (int i = 0; i < 200; ++i) {
        if (EncodeCodePage(kChineseUtf8 + "\xD6") != kChineseGbk + "?") ++failures[t];
        if (DecodeCodePage(kChineseGbk + "\xD6") != kChineseUtf8 + "?") ++failures[t];
      }
    });
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures, std::vector<int>(4, 0));
}

TEST(CodePageUtf8, PassesWellFormedTextAndMarksStrayBytes) {
  EXPECT_EQ(EncodeCodePage(kChineseUtf8, kCodePageUtf8), kChineseUtf8);
  EXPECT_EQ(DecodeCodePage(kChineseUtf8 + "😀", kCodePageUtf8), kChineseUtf8 + "😀");
  EXPECT_EQ(DecodeCodePage("a\xE4\xB8", kCodePageUtf8), "a??");
  EXPECT_EQ(DecodeCodePage("\xC0\xAF", kCodePageUtf8), "??");
  EXPECT_EQ(EncodeCodePage("\xFF" "x", kCodePageUtf8), "?x");
}

TEST(CodePageAnsiCode, GbkCodes) {
  EXPECT_EQ(AnsiCode("A"), 65u);
  EXPECT_EQ(AnsiCode("中"), 0xD6D0u);
  EXPECT_EQ(AnsiCode("中文"), 0xD6D0u);  // the first character only
  EXPECT_EQ(AnsiCode("€"), 0x80u);
  EXPECT_EQ(AnsiCode("😀"), 63u);  // not in the code page: the code of "?"
  EXPECT_EQ(AnsiCode("\xFF"), 63u);
  EXPECT_EQ(AnsiCode(std::string(1, '\0')), 0u);
  EXPECT_THROW(AnsiCode(""), Error);
}

TEST(CodePageAnsiCode, Utf8CodesKeepTheLastTwoBytes) {
  EXPECT_EQ(AnsiCode("A", kCodePageUtf8), 65u);
  EXPECT_EQ(AnsiCode("é", kCodePageUtf8), 0xC3A9u);
  EXPECT_EQ(AnsiCode("中", kCodePageUtf8), 0xB8ADu);    // E4 B8 AD
  EXPECT_EQ(AnsiCode("😀", kCodePageUtf8), 0x9880u);    // F0 9F 98 80
  EXPECT_EQ(AnsiCode("\xE4\xB8", kCodePageUtf8), 63u);  // a stray byte
}

TEST(CodePageAnsiCode, CharFromCode) {
  EXPECT_EQ(CharFromAnsiCode(65), "A");
  EXPECT_EQ(CharFromAnsiCode(0xD6D0), "中");
  EXPECT_EQ(CharFromAnsiCode(0x80), "€");
  EXPECT_EQ(CharFromAnsiCode(0xD6), "?");    // a lead byte alone
  EXPECT_EQ(CharFromAnsiCode(0xAAA1), "?");  // user-defined area
  EXPECT_EQ(CharFromAnsiCode(0xD600), "?");  // a lead byte and NUL
  EXPECT_EQ(CharFromAnsiCode(0x4142), "?");  // two characters, not one
  EXPECT_EQ(CharFromAnsiCode(0), std::string(1, '\0'));
  EXPECT_EQ(CharFromAnsiCode(0xC3A9, kCodePageUtf8), "é");
  EXPECT_EQ(CharFromAnsiCode(0xE9, kCodePageUtf8), "?");
  EXPECT_EQ(CharFromAnsiCode(0x4142, kCodePageUtf8), "?");
  EXPECT_THROW(CharFromAnsiCode(0x10000), Error);
  for (const char* ch : {"中", "文", "测", "试", "第", "页", "，", "A", "€"}) EXPECT_EQ(CharFromAnsiCode(AnsiCode(ch)), ch);
}

TEST(CodePageSupport, OnlyGbkAndUtf8) {
  EXPECT_TRUE(IsSupportedCodePage(936));
  EXPECT_TRUE(IsSupportedCodePage(65001));
  EXPECT_FALSE(IsSupportedCodePage(1252));
  try {
    EncodeCodePage("a", 1252);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 5);
  }
  EXPECT_THROW(DecodeCodePage("a", 437), Error);
}

}  // namespace
}  // namespace corvane
