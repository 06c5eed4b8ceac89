// SystemInit through late binding, as a page script reaches it.
#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "upload/upload_test_support.h"

namespace corvane::upload {
namespace {

using namespace testing;

TEST(SystemInitClass, MembersAsAScriptSeesThem) {
  const ClassInfo* c = FindClass("CORVANE.SYSTEMINIT");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c, FindClass("{3F4F3461-BE35-4BA8-B320-37E41DB10371}"));
  EXPECT_EQ(c->iid, "{424a8184-ec49-4749-873c-02170ee6de50}");
  // clang-format off
  const std::pair<const char*, int32_t> ids[] = {
      {"OverWrite", 0x68030000},   {"Path", 0x68030001},      {"MaxSize", 0x68030002}, {"count", 0x68030003},
      {"NewFileName", 0x68030004}, {"UpToFile", 0x68030005},  {"OnStartPage", 0x60030006},
      {"OnEndPage", 0x60030007},   {"Upload", 0x60030008},    {"FileName", 0x60030009},
      {"Size", 0x6003000a},        {"Form", 0x6003000b},      {"SaveFile", -1},  // private: not on the interface
  };
  // clang-format on
  for (auto [name, id] : ids) EXPECT_EQ(c->DispIdOf(name), id) << name;

  ScratchDrives drives;
  UploadPage p(Body({Field("a", "1"), File("f", "C:\\late.txt", "late bound")}));
  Object& o = p.obj;
  // The settings can only be set, count only read; OnStartPage wants a page context.
  for (const char* name : {"OverWrite", "Path", "MaxSize", "NewFileName", "UpToFile"})
    EXPECT_EQ(ErrorNumber([&] { o.Get(name); }), 438) << name;
  EXPECT_NE(ErrorNumber([&] { o.Put("count", Variant(3)); }), 0);
  Args notAContext{Variant("page")};
  EXPECT_EQ(ErrorNumber([&] { o.Invoke("OnStartPage", notAContext); }), 424);

  o.Put("MaxSize", Variant("5"));  // converted to the member's type
  o.Put("Path", Variant("d:\\up"));
  o.Put("NewFileName", Variant("new.txt"));
  EXPECT_EQ(o.Invoke("Upload"),  // every argument left out
            Variant("对不起，文件名为[late.txt] 的文件大小超出了范围。(Sorry ,the size of file [late.txt] is "
                    "beyond.)"));
  EXPECT_EQ(o.Get("count"), Variant(2));
  Args file{Variant("f")}, field{Variant("a")};
  EXPECT_EQ(o.Invoke("FileName", file), Variant("late.txt"));
  EXPECT_EQ(o.Invoke("Size", file), Variant(10));
  EXPECT_EQ(o.Invoke("form", field), Variant("1"));
  EXPECT_EQ(drives.Stored(), (Files{{"d/up/new.txt", ""}}));
}

}  // namespace
}  // namespace corvane::upload
