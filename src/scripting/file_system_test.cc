// Scripting.FileSystemObject through late binding: the name functions, the confinement of paths,
// files and folders as objects, the operations and their errors, and text streams in both formats.
#include <gtest/gtest.h>

#include <filesystem>

#include "runtime/members.h"
#include "scripting/file_test_support.h"

namespace corvane::scripting {
namespace {

namespace fs = std::filesystem;
using testing::ErrorNumber;

Object Fso() { return FileSystemObjectClass().create(); }

// What a call gives, as text ("#n" for error n; "" for an object).
std::string Call(const Object& o, const char* member, Args args = {}) {
  return testing::Outcome([&] {
    const Variant v = o.Invoke(member, args);
    return v.IsObject() ? "" : v.Text();
  });
}
Object Obj(const Object& o, const char* member, Args args = {}) { return o.Invoke(member, args).ToObject(); }

TEST(FileNames, PartsOfAPathFromItsTextAlone) {
  // clang-format off
  const struct { const char* member; Args args; std::string want; } cases[] = {
      {"GetFileName", {Variant("d:\\up\\a.txt")}, "a.txt"},  {"GetFileName", {Variant("d:\\up\\")}, "up"},
      {"GetFileName", {Variant("d:\\")}, ""},                {"GetFileName", {Variant("/srv/x/b")}, "b"},
      {"GetBaseName", {Variant("d:\\up\\a.tar.gz")}, "a.tar"}, {"GetBaseName", {Variant(".htaccess")}, ""},
      {"GetBaseName", {Variant("noext")}, "noext"},          {"GetExtensionName", {Variant("a.tar.gz")}, "gz"},
      {"GetExtensionName", {Variant("d:\\up.d\\x")}, ""},    {"GetParentFolderName", {Variant("d:\\up\\a.txt")}, "d:\\up"},
      {"GetParentFolderName", {Variant("d:\\up\\")}, "d:\\"}, {"GetParentFolderName", {Variant("d:\\")}, ""},
      {"GetParentFolderName", {Variant("a.txt")}, ""},       {"GetParentFolderName", {Variant("/srv")}, "/"},
      {"BuildPath", {Variant("d:\\up"), Variant("a.txt")}, "d:\\up\\a.txt"},
      {"BuildPath", {Variant("d:\\up\\"), Variant("\\a")}, "d:\\up\\a"},
      {"BuildPath", {Variant("/srv/site"), Variant("a")}, "/srv/site/a"},
      {"BuildPath", {Variant(""), Variant("a")}, "a"},       {"BuildPath", {Variant("d:"), Variant("a")}, "d:a"},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(Call(Fso(), c.member, c.args), c.want) << c.member << " " << c.args[0].Text();
}

TEST_F(FileTest, PathsOutsideTheDrivesAndTheSiteAreRefused) {
  fs::create_symlink("/etc", d_ / "link");
  const std::string site = site_.string();
  // clang-format off
  const struct { std::string path, want; } cases[] = {
      {"d:\\none.txt", "False"},   {site + "/x", "False"},        {site + "\\sub\\x", "False"}, {"", "False"},
      {"/etc/passwd", "#70"},      {"relative.txt", "#70"},       {"\\\\server\\share\\a", "#70"},
      {site + "/../x", "#70"},     {site + "2/x", "#70"},         {"d:\\..\\x", "#76"},
      {"d:\\link\\passwd", "#70"}, {root_.string() + "/d/x", "False"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(Call(Fso(), "FileExists", {Variant(c.path)}), c.want) << c.path;
  SetSiteFolder("");
  EXPECT_EQ(Call(Fso(), "FolderExists", {Variant(site)}), "#70");
}

TEST_F(FileTest, FilesAndFoldersAsObjects) {
  Put(d_ / "docs/b.txt", "hello");
  Put(d_ / "docs/A.txt", "x");
  Put(d_ / "docs/sub/c.txt", "12345");
  Object docs = Obj(Fso(), "GetFolder", {Variant("d:\\docs\\")});
  Args none;
  EXPECT_EQ(docs.Invoke(int32_t{0}, none), Variant("D:\\docs"));  // Path is the default member
  Object files = docs.Get("Files").ToObject();
  std::string names;
  for (const Variant& f : files.get()->Elements()) names += f.ToObject().Get("Name").Text() + ",";
  EXPECT_EQ(names, "A.txt,b.txt,");
  Object b = Obj(files, "Item", {Variant("B.TXT")});
  EXPECT_EQ(b.Get("Path"), Variant("D:\\docs\\b.txt"));
  EXPECT_EQ(b.Get("Size"), Variant(5));
  EXPECT_EQ(b.Get("DateLastModified").Type(), vtDate);
  EXPECT_EQ(b.Get("ParentFolder").ToObject().Get("Path"), Variant("D:\\docs"));
  EXPECT_EQ(docs.Get("SubFolders").ToObject().Get("Count"), Variant(1));
  EXPECT_EQ(docs.Get("Size"), Variant(11));
  EXPECT_EQ(docs.Get("ParentFolder").ToObject().Get("IsRootFolder"), Variant(true));
  EXPECT_TRUE(Obj(Fso(), "GetFolder", {Variant("d:")}).Get("ParentFolder").ToObject().IsNothing());
  Put(site_ / "p.txt", "");
  EXPECT_EQ(Obj(Fso(), "GetFile", {Variant(site_.string() + "\\p.txt")}).Get("Path"),
            Variant(site_.string() + "/p.txt"));
  EXPECT_EQ(Call(Fso(), "GetFile", {Variant("d:\\docs\\none")}), "#53");
  EXPECT_EQ(Call(Fso(), "GetFile", {Variant("d:\\docs")}), "#53");
  EXPECT_EQ(Call(Fso(), "GetFolder", {Variant("d:\\docs\\b.txt")}), "#76");
  EXPECT_EQ(Call(files, "Item", {Variant("c.txt")}), "#53");
}

TEST_F(FileTest, CreateCopyMoveAndDelete) {
  Put(d_ / "docs/b.txt", "hello");
  Put(d_ / "docs/c.TXT", "c");
  Object fso = Fso();
  // clang-format off
  const struct { const char* member; Args args; std::string want; } steps[] = {
      {"CreateFolder", {Variant("d:\\new")}, ""},           {"CreateFolder", {Variant("d:\\new")}, "#58"},
      {"CreateFolder", {Variant("d:\\no\\such")}, "#76"},   {"CopyFile", {Variant("d:\\docs\\b.txt"), Variant("d:\\new\\")}, ""},
      {"CopyFile", {Variant("d:\\docs\\b.txt"), Variant("d:\\new\\b.txt"), Variant(false)}, "#58"},
      {"CopyFile", {Variant("d:\\docs\\b.txt"), Variant("d:\\new")}, "#70"},
      {"CopyFile", {Variant("d:\\docs\\none"), Variant("d:\\new\\")}, "#53"},
      {"CopyFile", {Variant("d:\\docs\\*.txt"), Variant("d:\\new")}, ""},
      {"CopyFile", {Variant("d:\\docs\\b.txt"), Variant("d:\\no\\b.txt")}, "#76"},
      {"MoveFile", {Variant("d:\\new\\b.txt"), Variant("d:\\moved.txt")}, ""},
      {"MoveFile", {Variant("d:\\new\\c.TXT"), Variant("d:\\moved.txt")}, "#58"},
      {"FileExists", {Variant("d:\\new\\b.txt")}, "False"}, {"FileExists", {Variant("d:\\moved.txt")}, "True"},
      {"DeleteFile", {Variant("d:\\new\\*.*")}, ""},        {"DeleteFile", {Variant("d:\\new\\*.*")}, "#53"},
      {"DeleteFolder", {Variant("d:\\new")}, ""},           {"DeleteFolder", {Variant("d:\\new")}, "#76"},
  };
  // clang-format on
  for (const auto& s : steps)
    EXPECT_EQ(Call(fso, s.member, s.args), s.want) << s.member << " " << s.args[0].Text();
  EXPECT_EQ(Bytes(d_ / "moved.txt"), "hello");
  Object moved = Obj(fso, "GetFile", {Variant("d:\\moved.txt")});
  moved.Invoke("Move", {Variant("d:\\docs\\")});
  EXPECT_EQ(moved.Get("Path"), Variant("D:\\docs\\moved.txt"));
  EXPECT_EQ(Bytes(d_ / "docs/moved.txt"), "hello");
}

TEST_F(FileTest, TextStreamsReadAndWriteLinesInEitherFormat) {
  Object fso = Fso();
  Object out = Obj(fso, "CreateTextFile", {Variant("d:\\t.txt")});
  out.Invoke("WriteLine", {Variant("一行")});
  out.Invoke("Write", {Variant("ab")});
  out.Invoke("WriteBlankLines", {Variant(1)});
  EXPECT_EQ(out.Get("Line"), Variant(3));
  EXPECT_EQ(Call(out, "ReadLine"), "#54");
  out.Invoke("Close");
  EXPECT_EQ(Bytes(d_ / "t.txt"), "一行\r\nab\r\n");
  Obj(fso, "OpenTextFile", {Variant("d:\\t.txt"), Variant(8)}).Invoke("WriteLine", {Variant("more")});

  Object in = Obj(fso, "OpenTextFile", {Variant("d:\\t.txt")});
  // clang-format off
  const struct { const char* member; Args args; std::string want; } reads[] = {
      {"ReadLine", {}, "一行"}, {"Line", {}, "2"},           {"Read", {Variant(1)}, "a"},     {"Column", {}, "2"},
      {"AtEndOfLine", {}, "False"}, {"Skip", {Variant(1)}, ""}, {"AtEndOfLine", {}, "True"}, {"ReadLine", {}, ""},
      {"ReadAll", {}, "more\r\n"}, {"AtEndOfStream", {}, "True"}, {"ReadLine", {}, "#62"}, {"Write", {Variant("x")}, "#54"},
      {"Close", {}, ""},       {"ReadAll", {}, "#52"},
  };
  // clang-format on
  for (const auto& r : reads) EXPECT_EQ(Call(in, r.member, r.args), r.want) << r.member;

  // UTF-16 with its mark; read back by the mark (-2); a UTF-8 mark is skipped.
  Obj(fso, "CreateTextFile", {Variant("d:\\u.txt"), Variant(true), Variant(true)})
      .Invoke("Write", {Variant("中a")});
  EXPECT_EQ(Bytes(d_ / "u.txt"), std::string("\xFF\xFE\x2D\x4E\x61\x00", 6));
  EXPECT_EQ(Call(Obj(fso, "OpenTextFile", {Variant("d:\\u.txt"), Variant(1), Variant(false), Variant(-2)}),
                 "ReadAll"),
            "中a");
  Put(d_ / "bom.txt", "\xEF\xBB\xBFx");
  EXPECT_EQ(Call(Obj(fso, "OpenTextFile", {Variant("d:\\bom.txt")}), "ReadAll"), "x");

  // clang-format off
  const struct { Args args; std::string want; } opens[] = {
      {{Variant("d:\\none.txt")}, "#53"},   {{Variant("d:\\t.txt"), Variant(3)}, "#5"},
      {{Variant("d:\\")}, "#70"},           {{Variant("d:\\no\\x.txt"), Variant(2), Variant(true)}, "#76"},
  };
  // clang-format on
  for (const auto& o : opens) EXPECT_EQ(Call(fso, "OpenTextFile", o.args), o.want) << o.args[0].Text();
  EXPECT_EQ(Call(fso, "CreateTextFile", {Variant("d:\\t.txt"), Variant(false)}), "#58");
  Object created = Obj(fso, "OpenTextFile", {Variant("d:\\new.txt"), Variant(1), Variant(true)});
  EXPECT_TRUE(fs::exists(d_ / "new.txt"));
  EXPECT_EQ(Call(created, "ReadAll"), "#62");
}

}  // namespace
}  // namespace corvane::scripting
