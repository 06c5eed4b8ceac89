// SystemInit through late binding, as a page script reaches it.
#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "upload/upload_test_support.h"

namespace corvane::upload {
namespace {

using namespace testing;

TEST(SystemInitClass, IdentityAndDispatchIds) {
  const ClassInfo* c = FindClass("CORVANE.SYSTEMINIT");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c, FindClass("{3F4F3461-BE35-4BA8-B320-37E41DB10371}"));
  EXPECT_EQ(c->iid, "{424a8184-ec49-4749-873c-02170ee6de50}");
  const std::pair<const char*, int32_t> ids[] = {
      {"OverWrite", 0x68030000}, {"Path", 0x68030001},        {"MaxSize", 0x68030002},
      {"count", 0x68030003},     {"NewFileName", 0x68030004}, {"UpToFile", 0x68030005},
      {"OnStartPage", 0x60030006}, {"OnEndPage", 0x60030007}, {"Upload", 0x60030008},
      {"FileName", 0x60030009},  {"Size", 0x6003000a},        {"Form", 0x6003000b},
  };
  for (auto [name, id] : ids) EXPECT_EQ(c->DispIdOf(name), id) << name;
  EXPECT_EQ(c->DispIdOf("SaveFile"), -1);  // private routines are not on the interface
  EXPECT_EQ(c->DispIdOf("StringToBytes"), -1);
}

TEST(SystemInitClass, LateBoundUpload) {
  ScratchDrives drives;
  UploadPage p(MultipartBody({Field("a", "1"), File("f", "C:\\late.txt", "late bound")}));
  Object& o = p.obj;
  o.Put("MaxSize", Variant("50"));
  o.Put("OverWrite", Variant(2.0));
  o.Put("Path", Variant("d:\\up"));
  o.Put("NewFileName", Variant(""));
  o.Put("UpToFile", Variant(int16_t{1}));
  EXPECT_EQ(o.Invoke("Upload"), Variant("OK"));  // every argument left out
  EXPECT_EQ(o.Get("count"), Variant(int32_t{2}));
  Args name{Variant("f")};
  EXPECT_EQ(o.Invoke("FileName", name), Variant("late.txt"));
  EXPECT_EQ(o.Invoke("Size", name), Variant(int32_t{10}));
  EXPECT_EQ(o.Invoke("Form", name).Type(), vtByteArray);
  Args field{Variant("a")};
  EXPECT_EQ(o.Invoke("form", field), Variant("1"));
  EXPECT_EQ(ReadFile(drives.Up() / "late.txt"), "late bound");

  // Explicit arguments, some of them Missing.
  UploadPage q(MultipartBody({File("f", "C:\\two.txt", "22")}));
  Args args{Variant::Missing(), Variant("d:\\up"), Variant::Missing()};
  EXPECT_EQ(q.obj.Invoke("Upload", args), Variant("OK"));
  EXPECT_EQ(ReadFile(drives.Up() / "two.txt"), "22");
}

TEST(SystemInitClass, SettersCannotBeReadNorCountWritten) {
  SystemInit up;
  Object o(std::shared_ptr<SystemInit>(&up, [](SystemInit*) {}));
  for (const char* name : {"OverWrite", "Path", "MaxSize", "NewFileName", "UpToFile"}) {
    try {
      o.Get(name);
      ADD_FAILURE() << name;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 438) << name;
    }
  }
  EXPECT_THROW(o.Put("count", Variant(3)), Error);
  EXPECT_THROW(o.Put("OverWrite", Variant("two")), Error);  // CInt of text
}

TEST(SystemInitClass, OnStartPageWantsAScriptingContext) {
  Object o = CreateObject("corvane.SystemInit");
  Args args{Variant("not a context")};
  try {
    o.Invoke("OnStartPage", args);
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 424);
  }
  // After the page ends the request is gone: a later Upload answers with the error's text.
  UploadPage p(MultipartBody({Field("a", "1")}));
  p.page.End();
  EXPECT_EQ(p.up->Upload(), "Object variable or With block variable not set");
}

}  // namespace
}  // namespace corvane::upload
