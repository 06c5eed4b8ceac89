// ADODB.Stream through late binding: text in each character set with the marks the platform
// writes, lines and character counts, bytes, positions, files, and ADO's errors.
#include <gtest/gtest.h>

#include "runtime/members.h"
#include "scripting/file_test_support.h"

namespace corvane::scripting {
namespace {

using testing::ErrorNumber;

Object OpenStream(const char* charset = nullptr, int type = 2) {
  Object s = StreamClass().create();
  s.Put("Type", Variant(type));
  if (charset) s.Put("Charset", Variant(charset));
  s.Invoke("Open");
  return s;
}

// All the stream's bytes, read from the start as a binary stream.
std::string AllBytes(const Object& s) {
  s.Put("Position", Variant(0));
  s.Put("Type", Variant(1));
  const Variant bytes = s.Invoke("Read");
  return bytes.IsNull() ? "" : std::string(bytes.ToBytes().begin(), bytes.ToBytes().end());
}

Variant BytesOf(const std::string& s) { return Variant::FromBytes(Bytes(s.begin(), s.end())); }

TEST(Stream, TextInEachCharsetWithThePlatformsMarks) {
  // clang-format off
  const struct { const char* charset; std::string text, bytes, back; } cases[] = {
      {"Unicode", "a中", std::string("\xFF\xFE" "a\0\x2D\x4E", 6), "a中"},
      {"utf-8", "a中", "\xEF\xBB\xBF" "a\xE4\xB8\xAD", "a中"}, {"GB2312", "a中", "a\xD6\xD0", "a中"},
      {"gbk", "中文", "\xD6\xD0\xCE\xC4", "中文"}, {"us-ascii", "aé中", "a??", "a??"},
      {"iso-8859-1", "aé中", "a\xE9?", "aé?"},
  };
  // clang-format on
  for (const auto& c : cases) {
    Object s = OpenStream(c.charset);
    s.Invoke("WriteText", {Variant(c.text)});
    EXPECT_EQ(AllBytes(s), c.bytes) << c.charset;
    s.Put("Position", Variant(0));
    s.Put("Type", Variant(2));
    EXPECT_EQ(s.Invoke("ReadText"), Variant(c.back)) << c.charset;
  }
}

TEST(Stream, LinesCharactersAndPositions) {
  Object s = OpenStream("utf-8");
  s.Invoke("WriteText", {Variant("一二"), Variant(1)});
  s.Put("LineSeparator", Variant(10));
  s.Invoke("WriteText", {Variant("三"), Variant(1)});
  EXPECT_EQ(s.Get("Size"), Variant(3 + 6 + 2 + 3 + 1));
  s.Put("Position", Variant(0));
  s.Put("LineSeparator", Variant(-1));
  EXPECT_EQ(s.Invoke("ReadText", {Variant(1)}), Variant("一"));
  EXPECT_EQ(s.Invoke("ReadText", {Variant(-2)}), Variant("二"));
  EXPECT_EQ(s.Invoke("ReadText", {Variant(-2)}), Variant("三\n"));  // no CR LF left
  EXPECT_EQ(s.Get("EOS"), Variant(true));
  EXPECT_EQ(s.Invoke("ReadText"), Variant(""));
  // The mark dropped: from position 3 on, into a binary stream.
  s.Put("Position", Variant(3));
  Object bin = OpenStream(nullptr, 1);
  s.Invoke("CopyTo", {Variant(Object(bin))});
  EXPECT_EQ(AllBytes(bin), "一二\r\n三\n");
  bin.Put("Position", Variant(3));
  bin.Invoke("SetEOS");
  EXPECT_EQ(AllBytes(bin), "一");
  bin.Put("Position", Variant(1));
  bin.Invoke("Write", {BytesOf("xy")});
  EXPECT_EQ(bin.Invoke("Read"), Variant::Null());  // at the end
  bin.Put("Position", Variant(0));
  EXPECT_EQ(bin.Invoke("Read", {Variant(2)}).ToBytes(), (Bytes{0xE4, 'x'}));
}

TEST(Stream, AdoErrors) {
  Object closed = StreamClass().create();
  Object bin = OpenStream(nullptr, 1);
  Object text = OpenStream();
  text.Invoke("WriteText", {Variant("a")});
  // clang-format off
  const struct { Object s; const char* member; Args args; int want; } cases[] = {
      {closed, "Size", {}, 3704},                        {closed, "ReadText", {}, 3704},
      {closed, "Close", {}, 3704},                       {bin, "Open", {}, 3705},
      {bin, "WriteText", {Variant("a")}, 3219},          {text, "Write", {BytesOf("a")}, 3219},
      {text, "Read", {}, 3219},                          {bin, "Write", {Variant("text")}, 13},
      {closed, "Charset", {Variant("klingon")}, 3001},   {text, "Type", {Variant(1)}, 3001},
      {text, "Charset", {Variant("utf-8")}, 3001},       {text, "Position", {Variant(99)}, 3001},
      {closed, "Type", {Variant(3)}, 3001},              {bin, "CopyTo", {Variant(Object(closed))}, 3704},
  };
  // clang-format on
  for (const auto& c : cases) {
    const MemberInfo* m = c.s.get()->Info().Member(c.member);
    const InvokeKind kind =
        m->Answers(InvokeKind::PropertyPut) && !c.args.empty() ? InvokeKind::PropertyPut : InvokeKind::Method;
    Args args = c.args;
    EXPECT_EQ(ErrorNumber([&] { c.s.Invoke(m->dispid, args, kind); }), c.want) << c.member;
  }
}

TEST_F(FileTest, StreamSavesAndLoadsConfinedFiles) {
  Object s = OpenStream("utf-8");
  s.Invoke("WriteText", {Variant("中")});
  s.Invoke("SaveToFile", {Variant("d:\\s.txt")});
  EXPECT_EQ(Bytes(d_ / "s.txt"), "\xEF\xBB\xBF中");
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("SaveToFile", {Variant("d:\\s.txt")}); }), 3004);
  s.Invoke("WriteText", {Variant("文")});
  s.Invoke("SaveToFile", {Variant("d:\\s.txt"), Variant(2)});
  EXPECT_EQ(Bytes(d_ / "s.txt"), "\xEF\xBB\xBF中文");
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("SaveToFile", {Variant("/tmp/s.txt"), Variant(2)}); }), 70);

  Object gbk = OpenStream("gb2312");
  Put(site_ / "g.txt", "\xD6\xD0\xCE\xC4");
  gbk.Invoke("LoadFromFile", {Variant(site_.string() + "/g.txt")});
  EXPECT_EQ(gbk.Invoke("ReadText"), Variant("中文"));
  EXPECT_EQ(ErrorNumber([&] { gbk.Invoke("LoadFromFile", {Variant("d:\\none.txt")}); }), 3002);
}

}  // namespace
}  // namespace corvane::scripting
