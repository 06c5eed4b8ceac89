// SystemInit.Upload driven as a page drives it: a multipart post, then Form, FileName, Size, count.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "corvane/corvane.h"
#include "upload/file_store.h"
#include "upload/upload_result.h"
#include "upload/upload_test_support.h"

namespace corvane::upload {
namespace {

using namespace testing;

const std::string kExists =
    "对不起，目标文件在上载的目录中已经存在，如果需要覆盖，请将[overwrite]属性定义为[2]。(Sorry,the file "
    "which you "
    "want to upload has already exists.if you want to overwrite it ,please define the property of "
    "[overwrite] to [2])";
const std::string kEmpty = "警告：一文件的内容为空。(warning: Content of a file is empty.)";
std::string TooLarge(const std::string& f) {
  return "对不起，文件名为[" + f + "] 的文件大小超出了范围。(Sorry ,the size of file [" + f + "] is beyond.)";
}

// What the look-ups give for one name: Form (a text as it is, a byte array as "bytes:" and its
// bytes; "error n" when it raises), Size and FileName.
using Seen = std::tuple<std::string, int32_t, std::string>;
Seen Item(SystemInit& up, const std::string& name) {
  Variant n(name);
  if (int32_t error = ErrorNumber([&] { up.Form(n); })) return {"error " + std::to_string(error), 0, ""};
  const Variant form = up.Form(n);
  const bool bytes = form.Type() == vtByteArray, text = form.Type() == vtString;
  return {bytes ? "bytes:" + Text(form) : text ? form.ToString() : "neither", up.Size(n), up.FileName(n)};
}

// Code 103 never comes out of a parse (the file name's marks lie 10 bytes apart, or a search that
// found nothing has already failed); its text names the item, not the file.
TEST(UploadResultText, FileNameEmptyNamesTheItem) {
  EXPECT_EQ(UploadResultText(UploadCode::kFileNameEmpty, "照片", "f.txt"),
            "对不起，[照片]表单项中的文件名为空。(Sorry,item [照片] is empty.)");
}

// One Upload per row: the body, the setters called first and Upload's arguments; then the answer,
// every file under the drive root afterwards, count, and what the look-ups give.
TEST(Upload, AnswersStoredFilesAndItems) {
  std::vector<std::string> fields;
  for (int i = 0; i <= 255; ++i) fields.push_back(Field("f" + std::to_string(i), std::to_string(i)));
  const std::string p = Body({File("f", "C:\\p.txt", "data")}), big(100001, 'z'), fit(100000, 'z');
  // Two files that NewFileName sends to one name; the second is shorter.
  const std::string two =
      Body({File("a", "C:\\a.txt", "first and longer"), Field("x", "y"), File("b", "C:\\b.txt", "SECOND")});
  auto same = [](int16_t overWrite) {
    return [=](SystemInit& u) {
      u.NewFileName("same.txt");
      if (overWrite) u.OverWrite(overWrite);
    };
  };
  auto memory = [](SystemInit& u) { u.UpToFile(2); };
  const Files first{{"d/up/same.txt", "first and longer"}}, replaced{{"d/up/same.txt", "SECONDand longer"}},
      stored{{"d/up/p.txt", "data"}};
  struct Case {
    std::string body;
    std::function<void(SystemInit&)> set = [](SystemInit&) {};
    Variant maxSize = Variant::Missing(), path = Variant("d:\\up"), overWrite = Variant::Missing();
    std::string answer = "OK";
    Files files = {};
    int32_t count = 1;
    std::map<std::string, Seen> items = {};
    int codePage = kCodePageGbk;
    // clang-format off
  } cases[] = {
      {.body = Body({}), .answer = "对不起，您没有选择文件上传.(Sorry,you have not selected a file to upload.)",
       .count = 0, .items = {{"f", {"", 0, ""}}}},
      // Look-ups take the first item of exactly the name; a bare client name is used but not reported.
      {.body = Body({Field("t", "one"), File("f", "f.bin", std::string("\0\xFF", 2)), Field("t", "two")}),
       .files = {{"d/up/f.bin", std::string("\0\xFF", 2)}}, .count = 3,
       .items = {{"t", {"one", 3, ""}}, {"f", {std::string("bytes:\0\xFF", 8), 2, ""}}, {"T", {"", 0, ""}}}},
      {.body = Body({fields.begin(), fields.end() - 1}), .count = 255, .items = {{"f254", {"254", 3, ""}}}},
      {.body = Body(fields),
       .answer = "对不起，文件总数不得超过255(Sorry ,the count of the files must not be over 255.)", .count = 256},
      // OverWrite: the setter wins over the argument when it is 1 or 2 (3 is not kept), the default is
      // 1, anything but 2 keeps the file; a stop leaves no items to look up. A file that replaces
      // another is written over the old one's start, which is not cut.
      {.body = two, .set = same(0), .answer = kExists, .files = first, .count = 3,
       .items = {{"a", {"error 9", 0, ""}}}},
      {.body = two, .set = same(0), .overWrite = Variant(int16_t{7}), .answer = kExists, .files = first, .count = 3},
      {.body = two, .set = same(1), .overWrite = Variant(int16_t{2}), .answer = kExists, .files = first, .count = 3},
      {.body = two, .set = same(0), .overWrite = Variant(int16_t{2}), .files = replaced, .count = 3,
       .items = {{"b", {"bytes:SECOND", 6, "b.txt"}}}},
      {.body = two, .set = same(2), .overWrite = Variant(int16_t{1}), .files = replaced, .count = 3},
      {.body = two, .set = same(3), .overWrite = Variant(int16_t{2}), .files = replaced, .count = 3},
      // Content under 2 bytes is stored, then reported (over the code of a relative folder); an empty
      // file input asks for the folder itself to be written, and kept in memory it is only empty.
      {.body = Body({File("f", "C:\\one.txt", "1")}), .path = Variant("up"), .answer = kEmpty,
       .files = {{"work/up/one.txt", "1"}}},
      {.body = Body({File("f", "", "")}), .answer = "Path/File access error"},
      {.body = Body({File("f", "", "")}), .set = memory, .answer = kEmpty, .items = {{"f", {"bytes:", 0, ""}}}},
      // The default limit is 100000 bytes; a larger file is written empty, Size tells its true size,
      // and the text names the last file parsed. The MaxSize setter wins, a negative one too, and its
      // code comes after that of empty content.
      {.body = Body({File("f", "C:\\big.bin", big), File("g", "C:\\fit.bin", fit)}), .answer = TooLarge("fit.bin"),
       .files = {{"d/up/big.bin", ""}, {"d/up/fit.bin", fit}}, .count = 2,
       .items = {{"f", {"bytes:", 100001, "big.bin"}}}},
      {.body = p, .maxSize = Variant("3"), .answer = TooLarge("p.txt"), .files = {{"d/up/p.txt", ""}}},
      {.body = Body({File("f", "C:\\e.txt", "")}), .set = [](SystemInit& u) { u.MaxSize(-1); },
       .maxSize = Variant(1000), .answer = TooLarge("e.txt"), .files = {{"d/up/e.txt", ""}}},
      // Folders: the Path setter wins; one without ":" second is refused and one of two characters
      // not used; "" is c:\; a relative one is used from the working folder, then reported.
      {.body = p, .set = [](SystemInit& u) { u.Path("d:\\up"); }, .path = Variant("d:\\elsewhere"), .files = stored},
      {.body = p, .set = [](SystemInit& u) { u.Path("up\\"); }, .path = Variant("D:/up/"), .files = stored},
      {.body = p, .set = [](SystemInit& u) { u.Path("d:"); }, .path = Variant(""), .files = {{"c/p.txt", "data"}}},
      {.body = p, .path = Variant("up"), .answer = "对不起，路径必须为绝对路径.(Sorry,the path must be a absolute path)",
       .files = {{"work/up/p.txt", "data"}}},
      // UpToFile 2 keeps files in memory; a later other value writes them again. NewFileName "" clears.
      {.body = p, .set = memory, .items = {{"f", {"bytes:data", 4, "p.txt"}}}},
      {.body = p, .set = [](SystemInit& u) { u.UpToFile(2); u.UpToFile(7); u.NewFileName("n"); u.NewFileName(""); },
       .files = stored},
      // Client names lose their folders ("\" or ":"); names that leave the folder are refused.
      {.body = Body({File("f", "D:rel.txt", "RR"), File("g", "..\\..\\in.txt", "II")}),
       .files = {{"d/up/in.txt", "II"}, {"d/up/rel.txt", "RR"}}, .count = 2,
       .items = {{"f", {"bytes:RR", 2, "rel.txt"}}}},
      {.body = Body({File("f", "../../../../out.txt", "evil")}), .answer = "Path not found"},
      // "; name=" in a file's content is one more item, whose search runs past the real ones.
      {.body = Body({File("f", "C:\\c.txt", "a; name=\"fake\""), Field("g", "v")}), .set = memory,
       .answer = "Invalid procedure call or argument", .count = 3},
      // Names and values in the page's code page.
      {.body = Body({Field(Gbk("姓名"), Gbk("张三")), File(Gbk("附件"), Gbk("C:\\文件\\报告.txt"), Gbk("内容"))}),
       .files = {{"d/up/报告.txt", Gbk("内容")}}, .count = 2,
       .items = {{"姓名", {"张三", 4, ""}}, {"附件", {"bytes:" + Gbk("内容"), 4, "报告.txt"}}}},
      {.body = Body({Field("姓名", "李四"), File("甲", "C:\\文件\\张三.txt", "AA"), File("乙", "李四.txt", "BB")}),
       .files = {{"d/up/张三.txt", "AA"}, {"d/up/李四.txt", "BB"}}, .count = 3,
       .items = {{"姓名", {"李四", 6, ""}}, {"甲", {"bytes:AA", 2, "张三.txt"}}}, .codePage = kCodePageUtf8},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE("row " + std::to_string(&c - cases));
    ScratchDrives drives;
    std::shared_ptr<SystemInit> up;
    {
      UploadPage page(c.body, c.codePage);
      up = page.up;
      c.set(*up);
      EXPECT_EQ(up->Upload(c.maxSize, c.path, c.overWrite), c.answer);
    }
    EXPECT_EQ(drives.Stored(), c.files);
    // The items outlive the page and its request; an Upload without a page fails and leaves them.
    EXPECT_EQ(up->Upload(), "Object variable or With block variable not set");
    EXPECT_EQ(up->count(), Variant(c.count));
    for (const auto& [name, seen] : c.items) EXPECT_EQ(Item(*up, name), seen) << name;
  }
}

// The folder is the caller's variable: the backslash it gains is there for the next file.
TEST(SaveFile, TheFolderKeepsTheBackslashItGains) {
  ScratchDrives drives;
  std::string folder = "D:/up";
  EXPECT_TRUE(SaveFile(folder, "client.txt", "one", 1, "a.txt"));
  EXPECT_EQ(folder, "D:/up\\");
  EXPECT_FALSE(SaveFile(folder, "a.txt", "two", 1, ""));
  EXPECT_EQ(drives.Stored(), (Files{{"d/up/a.txt", "one"}}));
}

}  // namespace
}  // namespace corvane::upload
