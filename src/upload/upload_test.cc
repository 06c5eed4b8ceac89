// SystemInit.Upload driven as a page drives it: a multipart post, then Form, FileName, Size, count.
#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "upload/upload_result.h"
#include "upload/upload_test_support.h"

namespace corvane::upload {
namespace {

using namespace testing;

const std::string kOk = "OK";
const std::string kExists =
    "对不起，目标文件在上载的目录中已经存在，如果需要覆盖，请将[overwrite]属性定义为[2]。(Sorry,the file which you "
    "want to upload has already exists.if you want to overwrite it ,please define the property of [overwrite] to [2])";
const std::string kEmpty = "警告：一文件的内容为空。(warning: Content of a file is empty.)";
const std::string kTooMany = "对不起，文件总数不得超过255(Sorry ,the count of the files must not be over 255.)";
const std::string kNone = "对不起，您没有选择文件上传.(Sorry,you have not selected a file to upload.)";
const std::string kRelative = "对不起，路径必须为绝对路径.(Sorry,the path must be a absolute path)";
std::string TooLarge(const std::string& f) {
  return "对不起，文件名为[" + f + "] 的文件大小超出了范围。(Sorry ,the size of file [" + f + "] is beyond.)";
}

Variant V(const char* s) { return Variant(s); }

int32_t SizeOf(SystemInit& up, const char* name) {
  Variant n(name);
  return up.Size(n);
}
std::string FileNameOf(SystemInit& up, const char* name) {
  Variant n(name);
  return up.FileName(n);
}
Variant FormOf(SystemInit& up, const char* name) {
  Variant n(name);
  return up.Form(n);
}

TEST(UploadResultText, EveryCodeHasItsMessage) {
  EXPECT_EQ(UploadResultText(UploadCode::kOk, "i", "f"), kOk);
  EXPECT_EQ(UploadResultText(UploadCode::kFileExists, "i", "f"), kExists);
  EXPECT_EQ(UploadResultText(UploadCode::kContentEmpty, "i", "f"), kEmpty);
  EXPECT_EQ(UploadResultText(UploadCode::kFileNameEmpty, "照片", "f"),
            "对不起，[照片]表单项中的文件名为空。(Sorry,item [照片] is empty.)");
  EXPECT_EQ(UploadResultText(UploadCode::kTooLarge, "i", "a.zip"), TooLarge("a.zip"));
  EXPECT_EQ(UploadResultText(UploadCode::kTooManyItems, "i", "f"), kTooMany);
  EXPECT_EQ(UploadResultText(UploadCode::kNoItems, "i", "f"), kNone);
  EXPECT_EQ(UploadResultText(UploadCode::kPathNotAbsolute, "i", "f"), kRelative);
}

TEST(Upload, StoresFieldsAndFiles) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({Field("title", "Q3 report"), File("doc", "C:\\Users\\me\\q3.txt", "line 1\r\nline 2"),
                              Field("note", "")}));
  EXPECT_EQ(p.up->Upload(V("100000"), V("d:\\up")), kOk);
  EXPECT_EQ(p.up->count(), Variant(int32_t{3}));
  EXPECT_EQ(FormOf(*p.up, "title"), V("Q3 report"));
  EXPECT_EQ(SizeOf(*p.up, "title"), 9);
  EXPECT_EQ(FileNameOf(*p.up, "title"), "");
  EXPECT_EQ(Text(FormOf(*p.up, "doc")), "line 1\r\nline 2");
  EXPECT_EQ(FormOf(*p.up, "doc").Type(), vtByteArray);
  EXPECT_EQ(SizeOf(*p.up, "doc"), 14);
  EXPECT_EQ(FileNameOf(*p.up, "doc"), "q3.txt");
  EXPECT_EQ(FormOf(*p.up, "note"), V(""));
  // No such item; names are compared exactly.
  EXPECT_EQ(FormOf(*p.up, "Title"), V(""));
  EXPECT_EQ(SizeOf(*p.up, "missing"), 0);
  EXPECT_EQ(FileNameOf(*p.up, "missing"), "");
  EXPECT_EQ(ReadFile(drives.Up() / "q3.txt"), "line 1\r\nline 2");
  EXPECT_EQ(drives.Files(), std::vector<std::string>{"root/d/up/q3.txt"});
}

TEST(Upload, ValuesOutliveThePage) {
  ScratchDrives drives;
  std::shared_ptr<SystemInit> up;
  {
    UploadPage p(MultipartBody({File("f", "a.bin", std::string("\0\x01\xFF", 3))}));
    up = p.up;
    p.up->UpToFile(2);
    EXPECT_EQ(p.up->Upload(), kOk);
    p.page.End();
  }
  EXPECT_EQ(Text(FormOf(*up, "f")), std::string("\0\x01\xFF", 3));
}

TEST(Upload, BareClientFileNameIsUsedButNotReported) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({File("f", "photo.jpg", "JPEG"), File("g", "D:relative.txt", "REL")}));
  EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up\\")), kOk);
  EXPECT_EQ(FileNameOf(*p.up, "f"), "");
  EXPECT_EQ(ReadFile(drives.Up() / "photo.jpg"), "JPEG");
  EXPECT_EQ(FileNameOf(*p.up, "g"), "relative.txt");  // ":" cuts as "\" does
  EXPECT_EQ(ReadFile(drives.Up() / "relative.txt"), "REL");
}

TEST(Upload, ItemLimitIs255) {
  ScratchDrives drives;
  std::vector<Part> parts;
  for (int i = 0; i < 255; ++i) parts.push_back(Field("f" + std::to_string(i), std::to_string(i)));
  {
    UploadPage p(MultipartBody(parts));
    EXPECT_EQ(p.up->Upload(), kOk);
    EXPECT_EQ(p.up->count(), Variant(int32_t{255}));
    EXPECT_EQ(FormOf(*p.up, "f254"), V("254"));
  }
  parts.push_back(Field("f255", "255"));
  UploadPage p(MultipartBody(parts));
  EXPECT_EQ(p.up->Upload(), kTooMany);
  EXPECT_EQ(p.up->count(), Variant(int32_t{256}));
}

TEST(Upload, NoItems) {
  ScratchDrives drives;
  UploadPage p("--" + std::string(kBoundary) + "--\r\n");
  EXPECT_EQ(p.up->Upload(), kNone);
  EXPECT_EQ(p.up->count(), Variant(int32_t{0}));
  EXPECT_EQ(FormOf(*p.up, "x"), V(""));  // count 0: the "none" value at once
}

TEST(Upload, MaxSizeBoundary) {
  ScratchDrives drives;
  const std::string content(1000, 'x');
  {
    UploadPage p(MultipartBody({File("f", "C:\\fit.bin", content)}));
    EXPECT_EQ(p.up->Upload(V("1000"), V("d:\\up\\")), kOk);
    EXPECT_EQ(ReadFile(drives.Up() / "fit.bin"), content);
  }
  {
    UploadPage p(MultipartBody({File("f", "C:\\big.bin", content + "y"), Field("after", "v")}));
    EXPECT_EQ(p.up->Upload(V("1000"), V("d:\\up\\")), TooLarge("big.bin"));
    EXPECT_EQ(SizeOf(*p.up, "f"), 1001);          // the true size
    EXPECT_EQ(Text(FormOf(*p.up, "f")), "");      // an empty byte array
    EXPECT_EQ(FormOf(*p.up, "f").Type(), vtByteArray);
    EXPECT_EQ(FormOf(*p.up, "after"), V("v"));    // the parse went on
    EXPECT_TRUE(fs::exists(drives.Up() / "big.bin"));
    EXPECT_EQ(ReadFile(drives.Up() / "big.bin"), "");  // written empty
  }
  {
    // The MaxSize setter wins over the argument, even a negative one.
    UploadPage p(MultipartBody({File("f", "C:\\neg.bin", "")}));
    p.up->MaxSize(-1);
    EXPECT_EQ(p.up->Upload(V("1000"), V("d:\\up\\")), TooLarge("neg.bin"));
  }
  {
    // Without either the limit is 100000 bytes.
    UploadPage p(MultipartBody({File("f", "C:\\limit.bin", std::string(100001, 'z'))}));
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up\\")), TooLarge("limit.bin"));
  }
}

TEST(Upload, EmptyAndOneByteContentAreStoredButReported) {
  ScratchDrives drives;
  for (const std::string content : {"", "1"}) {
    UploadPage p(MultipartBody({File("f", "C:\\tiny.txt", content)}));
    p.up->OverWrite(2);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kEmpty);
    EXPECT_EQ(SizeOf(*p.up, "f"), static_cast<int32_t>(content.size()));
    EXPECT_EQ(Text(FormOf(*p.up, "f")), content);
  }
  EXPECT_EQ(ReadFile(drives.Up() / "tiny.txt"), "1");
}

TEST(Upload, AnEmptyFileInputWritesTheFolderAndFails) {
  ScratchDrives drives;
  {
    UploadPage p(MultipartBody({Field("a", "1"), File("f", "", "")}));
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), "Path/File access error");
  }
  {
    UploadPage p(MultipartBody({Field("a", "1"), File("f", "", "")}));
    p.up->UpToFile(2);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kEmpty);
  }
  EXPECT_TRUE(drives.Files().empty());
}

TEST(Upload, NewFileNameWithTwoFilesAndEachOverWrite) {
  struct Case {
    std::optional<int16_t> setter;  // OverWrite set before Upload
    Variant argument;               // lngOverWrite
    bool replaces;
  } cases[] = {
      {{}, Variant(), false},   {{}, Variant(int16_t{1}), false}, {{}, Variant(int16_t{2}), true},
      {{}, Variant(int16_t{7}), false}, {int16_t{0}, Variant(int16_t{2}), true},  // 0 means not set
      {int16_t{1}, Variant(int16_t{2}), false}, {int16_t{2}, Variant(int16_t{1}), true},
      {int16_t{3}, Variant(int16_t{2}), true},  // 3 is refused by the setter
  };
  for (const Case& c : cases) {
    ScratchDrives drives;
    UploadPage p(MultipartBody({File("a", "C:\\a.txt", "first and longer"), Field("x", "y"),
                                File("b", "C:\\b.txt", "SECOND")}));
    p.up->NewFileName("same.txt");
    if (c.setter) p.up->OverWrite(*c.setter);
    std::string result = p.up->Upload(Variant(), V("d:\\up"), c.argument);
    if (c.replaces) {
      EXPECT_EQ(result, kOk);
      // Written from the start without truncation: the first file's tail stays.
      EXPECT_EQ(ReadFile(drives.Up() / "same.txt"), "SECONDand longer");
      EXPECT_EQ(FileNameOf(*p.up, "b"), "b.txt");  // the client's name, not NewFileName
    } else {
      EXPECT_EQ(result, kExists);
      EXPECT_EQ(ReadFile(drives.Up() / "same.txt"), "first and longer");
      EXPECT_EQ(p.up->count(), Variant(int32_t{3}));
      // The stop left the items of no earlier Upload: the look-ups run past them.
      Variant name("a");
      try {
        p.up->Form(name);
        ADD_FAILURE() << "no error";
      } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 9);
      }
    }
    EXPECT_EQ(drives.Files(), std::vector<std::string>{"root/d/up/same.txt"});
  }
}

TEST(Upload, ASecondUploadFindsTheBodyReadAndKeepsTheItems) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({File("a", "C:\\a.txt", "aaa"), File("b", "C:\\a.txt", "bbb")}));
  p.up->UpToFile(2);
  EXPECT_EQ(p.up->Upload(), kOk);
  p.up->UpToFile(1);
  // The page body was read once; a second Upload reads nothing more and finds no items.
  EXPECT_EQ(p.up->Upload(), "Invalid procedure call or argument");
  EXPECT_EQ(p.up->count(), Variant(int32_t{2}));
  EXPECT_EQ(Text(FormOf(*p.up, "b")), "bbb");
}

TEST(Upload, PathAndServerPathRules) {
  ScratchDrives drives;
  const std::string body = MultipartBody({File("f", "C:\\p.txt", "data")});
  {
    UploadPage p(body);
    p.up->Path("d:\\up");  // wins over the argument; the backslash is added
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\elsewhere")), kOk);
    EXPECT_EQ(ReadFile(drives.Up() / "p.txt"), "data");
  }
  {
    UploadPage p(body);
    p.up->Path("up");  // no ":" as its second character: refused, the argument is used
    p.up->OverWrite(2);
    EXPECT_EQ(p.up->Upload(Variant(), V("D:/up/")), kOk);
  }
  {
    UploadPage p(body);
    p.up->Path("d:");  // kept by the setter but too short to be used: "" gives c:\ .
    EXPECT_EQ(p.up->Upload(Variant(), V("")), kOk);
    EXPECT_EQ(ReadFile(drives.Drive('c') / "p.txt"), "data");
  }
  {
    // A relative folder: the files go under the working folder, then 108 is reported.
    fs::create_directories(drives.Work() / "up");
    UploadPage p(body);
    EXPECT_EQ(p.up->Upload(Variant(), V("up")), kRelative);
    EXPECT_EQ(ReadFile(drives.Work() / "up" / "p.txt"), "data");
  }
  {
    UploadPage p(body);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\missing")), "Path not found");
  }
}

TEST(Upload, UpToFile2KeepsFilesInMemory) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({File("f", "C:\\m.bin", "memory only")}));
  p.up->UpToFile(2);
  EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kOk);
  EXPECT_EQ(Text(FormOf(*p.up, "f")), "memory only");
  EXPECT_TRUE(drives.Files().empty());
  p.up->UpToFile(5);  // anything but 2 writes again
  UploadPage q(MultipartBody({File("f", "C:\\m.bin", "to disk")}));
  q.up->UpToFile(7);
  EXPECT_EQ(q.up->Upload(Variant(), V("d:\\up")), kOk);
  EXPECT_EQ(ReadFile(drives.Up() / "m.bin"), "to disk");
}

TEST(Upload, NameMarkInsideContentAddsIterationsThatRunPastTheItems) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({File("f", "C:\\c.txt", "header; name=\"fake\""), Field("g", "v")}));
  p.up->UpToFile(2);
  // The third search for an item finds none (0); taking bytes from position 0 is refused.
  EXPECT_EQ(p.up->Upload(), "Invalid procedure call or argument");
  EXPECT_EQ(p.up->count(), Variant(int32_t{3}));
}

TEST(Upload, APartWithoutABlankLineTakesItsDataFromTheBodysStart) {
  ScratchDrives drives;
  // The file part has no blank line after its headers: its data run from byte 4 to the first
  // boundary, and the walk goes on from there, meeting the file again for the count's third item.
  const std::string b = kBoundary;
  const std::string body = "--" + b + "\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\nv; name=z\r\n--" + b +
                           "\r\nContent-Disposition: form-data; name=\"f\"; filename=\"C:\\x.txt\"\r\n--" + b + "--\r\n";
  const std::string data = body.substr(3, body.find("\r\n--" + b, 10) - 3);
  {
    UploadPage p(body);
    p.up->UpToFile(2);
    EXPECT_EQ(p.up->Upload(), kOk);
    EXPECT_EQ(p.up->count(), Variant(int32_t{3}));
    EXPECT_EQ(FormOf(*p.up, "a"), V("v; name=z"));
    EXPECT_EQ(Text(FormOf(*p.up, "f")), data);
  }
  {
    UploadPage p(body);  // on disk the second visit finds the file there
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kExists);
  }
  {
    UploadPage p(body);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up"), Variant(int16_t{2})), kOk);
    EXPECT_EQ(ReadFile(drives.Up() / "x.txt"), data);
  }
}

TEST(Upload, GbkNamesAndValuesRoundTrip) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({Field(Gbk("姓名"), Gbk("张三")), File(Gbk("附件"), Gbk("C:\\文件\\报告.txt"), Gbk("内容"))}));
  EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kOk);
  EXPECT_EQ(FormOf(*p.up, "姓名"), V("张三"));
  EXPECT_EQ(SizeOf(*p.up, "姓名"), 4);
  EXPECT_EQ(FileNameOf(*p.up, "附件"), "报告.txt");
  EXPECT_EQ(Text(FormOf(*p.up, "附件")), Gbk("内容"));  // file content stays bytes
  EXPECT_EQ(ReadFile(drives.Up() / "报告.txt"), Gbk("内容"));
}

TEST(Upload, AValueEndingInALoneLeadByteFails) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({Field("a", "abc\xB0")}));
  EXPECT_EQ(p.up->Upload(), "Invalid procedure call or argument");
}

TEST(Upload, ClimbingNamesAreRefused) {
  ScratchDrives drives;
  const auto before = drives.Files();
  for (const char* name : {"../../../../escape.txt", "a/../../../escape.txt"}) {
    UploadPage p(MultipartBody({File("f", name, "evil")}));
    p.up->OverWrite(2);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), "Path not found") << name;
  }
  {
    UploadPage p(MultipartBody({File("f", "x.txt", "evil")}));
    p.up->NewFileName("..\\..\\..\\escape.txt");
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), "Path not found");
  }
  EXPECT_EQ(drives.Files(), before);
  // A backslash path from the client loses its folders, ".." among them.
  UploadPage p(MultipartBody({File("f", "..\\..\\..\\inside.txt", "fine")}));
  EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), kOk);
  EXPECT_EQ(drives.Files(), std::vector<std::string>{"root/d/up/inside.txt"});
}

TEST(Upload, MalformedBodiesEndWithAText) {
  ScratchDrives drives;
  const std::string b = std::string("--") + kBoundary;
  const std::string cases[] = {
      "",                                                                          // no first line at all
      "x",
      "no line end ; name=\"a\"",
      b + "\r\nContent-Disposition: form-data; name=\"a\r\n\r\nvalue",               // no closing quote
      b + "\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\nvalue",             // boundary never returns
      b + "\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a.txt\"\r\n\r\ncut",  // truncated file
      b + "\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a.txt",          // truncated name
      b + "\r\nContent-Disposition: form-data; name=\"f\"; filename=x\r\n\r\nv\r\n" + b,  // unquoted name
  };
  for (const std::string& body : cases) {
    UploadPage p(body);
    EXPECT_EQ(p.up->Upload(Variant(), V("d:\\up")), "Invalid procedure call or argument") << body;
  }
  EXPECT_TRUE(drives.Files().empty());
}

TEST(Upload, WithoutAPageTheRequestIsMissing) {
  SystemInit up;
  EXPECT_EQ(up.Upload(), "Object variable or With block variable not set");
  EXPECT_EQ(up.count(), Variant(int32_t{0}));
}

TEST(Upload, ArgumentsAreConvertedBeforeTheUpload) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({Field("a", "1")}));
  EXPECT_THROW(p.up->Upload(V("lots")), Error);  // CLng of a non-number
  EXPECT_EQ(p.up->Upload(Variant(2.5), Variant(), V("1")), kOk);
}

}  // namespace
}  // namespace corvane::upload
