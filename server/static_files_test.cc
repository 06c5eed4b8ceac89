#include "static_files.h"

#include <gtest/gtest.h>

#include <fstream>

#include "test_support.h"

namespace corvane::server {
namespace {

namespace fs = std::filesystem;

class StaticFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root_ = corvane::testing::ScratchPath("www");
    fs::create_directories(root_ / "images");
    fs::create_directories(root_ / "Include");
    Write(root_ / "images" / "edit.gif", "GIF89a-edit");
    Write(root_ / "Include" / "Calendar.js", "function ShowCal(){}");
    Write(root_ / "images" / "..x", "");  // never served: hidden name
    Write(root_.parent_path() / "secret.txt", "secret");
  }
  static void Write(const fs::path& p, const std::string& text) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << text;
  }
  fs::path root_;
};

TEST_F(StaticFilesTest, SegmentsMatchWhateverTheirCase) {
  StaticFiles files(root_);
  for (const char* url : {"/images/edit.gif", "/Images/edit.gif", "/IMAGES/EDIT.GIF", "//images//edit.gif"}) {
    auto p = files.Resolve(url);
    ASSERT_TRUE(p) << url;
    EXPECT_EQ(p->filename(), "edit.gif");
  }
  EXPECT_TRUE(files.Resolve("/include/calendar.js"));
  EXPECT_FALSE(files.Resolve("/images/none.gif"));
  EXPECT_FALSE(files.Resolve("/images"));  // a folder is not a file
  EXPECT_FALSE(files.Resolve("/"));
}

TEST_F(StaticFilesTest, NothingOutsideTheRootOrHiddenIsServed) {
  StaticFiles files(root_);
  for (const char* url : {"/../secret.txt", "/images/../../secret.txt", "/images/..x", "/.git/config",
                          "/images\\..\\..\\secret.txt"})
    EXPECT_FALSE(files.Resolve(url)) << url;
  fs::create_symlink(root_.parent_path() / "secret.txt", root_ / "link.txt");
  EXPECT_FALSE(files.Resolve("/link.txt"));
  fs::create_directory_symlink(root_ / "images", root_ / "pics");
  EXPECT_TRUE(files.Resolve("/pics/edit.gif"));  // a link that stays inside the root is followed
}

TEST_F(StaticFilesTest, RepliesCarryTypeAndValidatorsAndAnswerConditionalRequests) {
  StaticFiles files(root_);
  auto reply = files.Get("/Images/edit.gif");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->status, 200);
  EXPECT_EQ(reply->contentType, "image/gif");
  EXPECT_EQ(reply->body, "GIF89a-edit");
  std::string etag, lastModified;
  for (const auto& [name, value] : reply->headers) {
    if (name == "ETag") etag = value;
    if (name == "Last-Modified") lastModified = value;
  }
  ASSERT_FALSE(etag.empty());
  ASSERT_FALSE(lastModified.empty());

  auto again = files.Get("/images/edit.gif", etag);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->status, 304);
  EXPECT_TRUE(again->body.empty());
  EXPECT_EQ(files.Get("/images/edit.gif", "", lastModified)->status, 304);
  EXPECT_EQ(files.Get("/images/edit.gif", "\"other\"")->status, 200);

  Write(root_ / "images" / "edit.gif", "GIF89a-changed!");
  EXPECT_EQ(files.Get("/images/edit.gif", etag)->status, 200);
}

TEST(ContentTypeTest, ByExtension) {
  EXPECT_EQ(ContentTypeFor("style.css"), "text/css; charset=utf-8");
  EXPECT_EQ(ContentTypeFor("Calendar.JS"), "text/javascript; charset=utf-8");
  EXPECT_EQ(ContentTypeFor("a.png"), "image/png");
  EXPECT_EQ(ContentTypeFor("README"), "application/octet-stream");
  EXPECT_EQ(ContentTypeFor("x.exe"), "application/octet-stream");
}

}  // namespace
}  // namespace corvane::server
