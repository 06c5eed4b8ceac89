#include "upload/ansi_bytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "corvane/text.h"
#include "upload/byte_string.h"

namespace corvane::upload {
namespace {

TEST(StringToBytes, DoubleByteCharactersBecomeLeadAndTrail) {
  struct Case {
    const char* text;
    int codePage;
    std::string bytes;
  } cases[] = {
      {"a=\"1\"\r\n", kCodePageGbk, "a=\"1\"\r\n"},
      {"中文", kCodePageGbk, "\xD6\xD0\xCE\xC4"},
      {"x姓名y", kCodePageGbk, "x\xD0\xD5\xC3\xFBy"},
      // The euro sign is the single byte 0x80 in the code page, so the character's own UTF-16
      // code gives the byte: its low byte, 0xAC.
      {"€", kCodePageGbk, "\xAC"},
      // A character the code page lacks has the code of "?" and gives the low byte of its code;
      // one outside the BMP is two such characters (U+D83D U+DE00).
      {"ก", kCodePageGbk, "\x01"},
      {"😀", kCodePageGbk, std::string("\x3D\x00", 2)},
      // Under UTF-8 a character is its whole sequence.
      {"é", kCodePageUtf8, "\xC3\xA9"},
      {"张三.txt", kCodePageUtf8, "\xE5\xBC\xA0\xE4\xB8\x89.txt"},
      {"😀", kCodePageUtf8, "\xF0\x9F\x98\x80"},
  };
  for (const Case& c : cases) EXPECT_EQ(StringToBytes(c.text, c.codePage), c.bytes) << c.text;
}

TEST(BytesToString, PairsEveryByteAbove127WithTheNext) {
  EXPECT_EQ(BytesToString("", kCodePageGbk), "");
  EXPECT_EQ(BytesToString("plain text\r\n", kCodePageGbk), "plain text\r\n");
  EXPECT_EQ(BytesToString("\xD6\xD0\xCE\xC4!", kCodePageGbk), "中文!");
  EXPECT_EQ(BytesToString("\x81\x40", kCodePageGbk), "丂");  // a trail byte below 128
  // A pair the code page does not define is one "?", and it takes its second byte with it, even
  // a ";" that could not be a trail byte.
  EXPECT_EQ(BytesToString("\xAA\xA1z", kCodePageGbk), "?z");
  EXPECT_EQ(BytesToString("\xB0;a", kCodePageGbk), "?a");
  EXPECT_EQ(BytesToString("\xC3\xA9", kCodePageUtf8), "é");
  EXPECT_EQ(BytesToString(std::string("a\0b", 3), kCodePageGbk), std::string("a\0b", 3));
}

TEST(BytesToString, ALastByteAbove127HasNoPartnerAndRaises5) {
  for (std::string bytes : {"\xD6", "abc\xD6", "\xD6\xD0\xCE"}) {
    try {
      BytesToString(bytes, kCodePageGbk);
      ADD_FAILURE() << "no error for " << bytes.size() << " bytes";
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 5);
    }
  }
}

TEST(BytesToString, TextRoundTripsInBothCodePages) {
  for (int cp : {kCodePageGbk, kCodePageUtf8})
    for (const char* text : {"姓名", "上传文件：报告（终稿）.doc", "mixed 中英 text"})
      EXPECT_EQ(BytesToString(StringToBytes(text, cp), cp), text) << cp;
  // Under UTF-8 two names that differ only in their Chinese stay apart, and a stray byte is "?".
  EXPECT_NE(BytesToString("\xE5\xBC\xA0.txt", kCodePageUtf8), BytesToString("\xE6\x9D\x8E.txt", kCodePageUtf8));
  EXPECT_EQ(BytesToString("a\xE5\xBC" "b\xFF", kCodePageUtf8), "a??b?");
}

// The count taken on the raw bytes must be the count in the converted text, lead bytes and all.
int64_t CountInText(std::string_view body, int codePage) {
  std::string text = DecodeCodePage(body, codePage);
  return Len(text) - Len(Replace(text, "; name=", " name="));
}

TEST(NameMarks, CountOnTheBytesIsTheCountInTheConvertedText) {
  const std::string cases[] = {
      "",
      "; name=",
      "a; name=\"x\"; name=\"y\"",
      "\xB0; name=",          // a lead byte before ";" does not take it
      "\xB0\xA1; name=",      // a whole character before it
      "\x81\x3B name=",       // ";" after a lead byte
      "; \xB0name=; name=",
      "\xFF; name=\x80; name=",
      std::string("\0; name=\0", 9),
  };
  for (const std::string& body : cases)
    for (int cp : {kCodePageGbk, kCodePageUtf8})
      EXPECT_EQ(static_cast<int64_t>(CountBytes(body, "; name=")), CountInText(body, cp)) << "code page " << cp;

  std::mt19937 rng(3);
  const std::string pieces[] = {"; name=", ";", " ", "name=", "\xB0", "\xA1", "\x81", "\xFF", "\x80", "a", "\xE4\xB8\xAD"};
  for (int round = 0; round < 500; ++round) {
    std::string body;
    for (int k = rng() % 30; k > 0; --k) body += pieces[rng() % std::size(pieces)];
    for (int cp : {kCodePageGbk, kCodePageUtf8})
      ASSERT_EQ(static_cast<int64_t>(CountBytes(body, "; name=")), CountInText(body, cp)) << "round " << round;
  }
}

}  // namespace
}  // namespace corvane::upload
