#include "script_cache.h"

#include <gtest/gtest.h>

#include <fstream>

#include "corvane/codepage.h"
#include "test_support.h"

namespace corvane::server {
namespace {

namespace fs = std::filesystem;

TEST(ScriptCacheTest, PageTextIsUtf8OrReadInTheCodePage) {
  // clang-format off
  struct { std::string bytes; int codePage; std::string text; } cases[] = {
      {"\xEF\xBB\xBF<%= 1 %>",  kCodePageGbk,  "<%= 1 %>"},   // the byte order mark is dropped
      {"中文",                   kCodePageGbk,  "中文"},        // UTF-8 stays
      {"\xD6\xD0\xCE\xC4",      kCodePageGbk,  "中文"},        // GBK is read as GBK
      {"\xD6\xD0",              kCodePageUtf8, "\xD6\xD0"},    // a UTF-8 site takes the bytes as they are
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(PageText(c.bytes, c.codePage), c.text);
}

TEST(ScriptCacheTest, FindsPagesCaseBlindKeepsThemAndCompilesAgainOnAChange) {
  fs::path site = corvane::testing::ScratchPath("cache");
  fs::create_directories(site / "Dir");
  std::ofstream(site / "Dir/Page.asp") << "<!--#include file=\"part.inc\"-->";
  std::ofstream(site / "Dir/part.inc") << "1";
  ScriptCache cache(site, kCodePageUtf8, std::chrono::milliseconds(0));
  auto first = cache.Get("/dir/page.ASP");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->sitePath, "/Dir/Page.asp");
  EXPECT_EQ(cache.Get("/DIR/PAGE.asp"), first);  // kept while no file changes
  std::ofstream(site / "Dir/part.inc") << "22";
  auto second = cache.Get("/dir/page.asp");
  EXPECT_NE(second, first);
  EXPECT_TRUE(second->Names("INCLUDE"));  // the names of its files, for the declared objects
  fs::remove(site / "Dir/Page.asp");
  EXPECT_EQ(cache.Get("/dir/page.asp"), nullptr);
  EXPECT_EQ(cache.Get("/../cache/Dir/part.inc"), nullptr);
}

}  // namespace
}  // namespace corvane::server
