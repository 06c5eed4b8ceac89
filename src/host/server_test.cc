// Server as scripts reach it: site paths (MapPath), Execute and Transfer through the host's runner,
// ScriptTimeout.
#include <gtest/gtest.h>

#include <fstream>

#include "corvane/host.h"
#include "test_support.h"

namespace corvane::host {
namespace {

using testing::ErrorNumber;

TEST(SitePaths, ResolvedAgainstThePageAndKeptInsideTheSite) {
  // clang-format off
  struct { const char* base; const char* path; const char* expected; } cases[] = {
      {"/a/b/p.asp", "x.asp",          "/a/b/x.asp"},
      {"/a/b/p.asp", "/x.asp",         "/x.asp"},
      {"/a/b/p.asp", "../c\\d.inc",    "/a/c/d.inc"},
      {"/a/b/p.asp", "./../../x",      "/x"},
      {"/a/b/p.asp", "",               "/a/b"},
      {"/p.asp",     "/",              "/"},
      {"/a/b/p.asp", "../../../x",     nullptr},
      {"/p.asp",     "/../etc/passwd", nullptr},
      {"/p.asp",     "c:\\windows",    nullptr},
      {"/p.asp",     "x.asp::$DATA",   nullptr},
  };
  // clang-format on
  for (const auto& c : cases) {
    std::optional<std::string> got = ResolveSitePath(c.base, c.path);
    if (c.expected)
      EXPECT_EQ(got.value_or("(none)"), c.expected) << c.path;
    else
      EXPECT_FALSE(got) << c.path;
  }
}

TEST(ServerMapPath, FindsTheLocalPathCaseBlind) {
  std::filesystem::path site = testing::ScratchPath("site");
  std::filesystem::create_directories(site / "Images" / "Sub");
  Session session;
  Page page(PageRequest{.url = "/images/p.asp"}, session, {.siteFolder = site.string()});
  Object server = page.ContextObject()->Server();
  auto map = [&](const char* path) { return server.Invoke("MapPath", {Variant(path)}).ToString(); };
  EXPECT_EQ(map("sub/new.gif"), (site / "Images/Sub/new.gif").string());
  EXPECT_EQ(map("/IMAGES"), (site / "Images").string());
  EXPECT_EQ(map("/none/x"), (site / "none/x").string());
  EXPECT_EQ(ErrorNumber([&] { map("../../x"); }), HostError("").Number());
  Page bare(PageRequest{.url = "/p.asp"}, session);  // a host without a site folder
  EXPECT_NE(ErrorNumber([&] { Object(bare.ContextObject()->Server()).Invoke("MapPath", {Variant("/")}); }),
            0);
}

TEST(ServerExecute, RunsThePageInThisResponseThenGoesOnOrEnds) {
  std::vector<std::string> ran;
  PageHost host{.runPage = [&](std::string_view path, ScriptingContext& context) {
    ran.emplace_back(path);
    context.Response()->Write("[" + std::string(path) + " in " + context.Server()->CurrentPath() + "]");
    if (path == "/loop.asp") context.Server()->Execute("loop.asp");
  }};
  Session session;
  Page page(PageRequest{.url = "/dir/main.asp"}, session, host);
  Object server = page.ContextObject()->Server();
  server.Invoke("Execute", {Variant("part.asp")});
  EXPECT_EQ(page.Server().CurrentPath(), "/dir/main.asp");
  EXPECT_THROW(server.Invoke("Transfer", {Variant("/other.asp")}), PageEnd);
  EXPECT_TRUE(page.Response().Ended());
  EXPECT_EQ(page.Output(), "[/dir/part.asp in /dir/part.asp][/other.asp in /other.asp]");
  // A page that executes itself stops at a depth, with an error.
  EXPECT_NE(ErrorNumber([&] { server.Invoke("Execute", {Variant("/loop.asp")}); }), 0);
  EXPECT_EQ(ran.size(), 2u + 16u);
  EXPECT_EQ(page.Server().CurrentPath(), "/dir/main.asp");
  Page bare(PageRequest{.url = "/p.asp"}, session);  // a host that runs no script pages
  EXPECT_NE(
      ErrorNumber([&] { Object(bare.ContextObject()->Server()).Invoke("Execute", {Variant("x.asp")}); }), 0);
}

TEST(ServerScriptTimeout, NinetySecondsUnlessThePageSetsIt) {
  Session session;
  Page page(PageRequest{.url = "/p.asp"}, session);
  Object server = page.ContextObject()->Server();
  EXPECT_EQ(server.Get("ScriptTimeout").ToLong(), 90);
  server.Put("ScriptTimeout", Variant(5));
  EXPECT_EQ(page.Server().ScriptTimeout(), 5);
  EXPECT_EQ(ErrorNumber([&] { server.Put("ScriptTimeout", Variant(0)); }), 5);
}

}  // namespace
}  // namespace corvane::host
