// corvane-server over real HTTP on 127.0.0.1: sessions, the one-at-a-time rule, the code page,
// static files, the error page and the body limit, against an in-process server with test pages.
#include "http_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "http_test_support.h"

namespace corvane::server {
namespace {

namespace fs = std::filesystem;
using namespace ::testing;
const std::string kConnection = "Provider=SQLite;Data Source=/secret/office.db", kFile = "/secret/office.db";
const char* const kNewCookie = "CORVANESESSIONID=[0-9a-f]{32}; Path=/; HttpOnly; SameSite=Strict";
std::atomic<int> gInside = 0, gMost = 0;  // pages of /count.asp running now, and the most at once

PageRegistry TestPages() {
  PageRegistry pages;
  pages.Add("/count.asp", [](PageContext& p) {  // slow, so that pages served at once overlap
    for (int n = ++gInside, most = gMost; n > most && !gMost.compare_exchange_weak(most, n);) {
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    --gInside;
    p.Session.Set("n", Variant(p.Session.Get("n").ToLong() + 1));
    p.Response.Write(p.Session.Get("n"));
  });
  pages.Add("/hello.asp", [](PageContext& p) {
    p.Response.Write("你好," + p.Request.QueryString("q").Text() + "," + p.Request.Form("name").Text());
  });
  pages.Add("/fail.asp", [](PageContext& p) {
    p.Response.Write("half a page");
    throw Error::Database("no such table: <t> in " + kConnection + " (" + kFile + ")");
  });
  pages.Add("/mismatch.asp", [](PageContext&) { throw Error::TypeMismatch(); });
  pages.Add("/body.asp", [](PageContext& p) {
    int32_t n = p.Request.TotalBytes();
    p.Response.BinaryWrite(p.Request.BinaryRead(n).ToBytes());  // the body as the page reads it
  });
  pages.Add("/go.asp", [](PageContext& p) { p.Response.Redirect("/count.asp"); });
  return pages;
}

// A server on a free port of 127.0.0.1 with the test pages and an empty site folder, for one scope.
struct TestServer : testing::TestServer {
  explicit TestServer(int codePage = kCodePageGbk)
      : testing::TestServer({.codePage = codePage, .threads = 8, .maxBodyBytes = 4096, .accessLog = false},
                            TestPages()) {}
  httplib::Client Client() const { return httplib::Client("127.0.0.1", port); }
};

TEST(HttpServerTest, ACookieCarriesTheSessionWhosePagesRunOneAtATime) {
  TestServer s;
  auto c = s.Client();
  auto first = c.Get("/count.asp");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->body, "1");
  EXPECT_THAT(first->get_header_value("Set-Cookie"), MatchesRegex(kNewCookie));
  // The Set-Cookie value as it stands, among other cookies (its attributes read as cookies too).
  httplib::Headers cookie{{"Cookie", "other=1; " + first->get_header_value("Set-Cookie")}};
  // Four pages at once: those of one session run one after another, those of four new sessions together.
  for (bool oneSession : {true, false}) {
    gMost = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([&] { s.Client().Get("/count.asp", oneSession ? cookie : httplib::Headers{}); });
    threads.clear();  // joins them
    EXPECT_EQ(gMost == 1, oneSession) << "most pages at once: " << gMost;
  }
  auto sixth = c.Get("/COUNT.asp", cookie);  // page paths are case-insensitive too
  EXPECT_EQ(sixth->body, "6");
  EXPECT_FALSE(sixth->has_header("Set-Cookie"));
  // A well-formed id that the server never gave out is not adopted: the visitor gets a new one.
  auto forged = c.Get("/count.asp", {{"Cookie", "CORVANESESSIONID=0123456789abcdef0123456789abcdef"}});
  EXPECT_EQ(forged->body, "1");
  EXPECT_THAT(forged->get_header_value("Set-Cookie"), Not(HasSubstr("0123456789abcdef0123456789abcdef")));
}

TEST(HttpServerTest, PagesReadAndWriteTheirCodePage) {
  struct Case {
    int codePage;
    std::string text, charset;  // "中文" percent-encoded in the code page
  } cases[] = {{kCodePageGbk, "%D6%D0%CE%C4", "gbk"}, {kCodePageUtf8, "%E4%B8%AD%E6%96%87", "utf-8"}};
  for (const Case& c : cases) {
    TestServer s(c.codePage);
    auto r = s.Client().Post("/hello.asp?q=" + c.text, "name=" + c.text, "application/x-www-form-urlencoded");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->get_header_value("Content-Type"), "text/html; charset=" + c.charset);
    EXPECT_EQ(r->body, EncodeCodePage("你好,中文,中文", c.codePage));
  }
}

TEST(HttpServerTest, ARedirectOrAnErrorPageReplacesThePage) {
  TestServer s;
  auto c = s.Client();
  auto go = c.Get("/go.asp");
  ASSERT_TRUE(go);
  EXPECT_EQ(go->status, 302);
  EXPECT_EQ(go->get_header_value("Location"), "/count.asp");
  auto failed = c.Get("/fail.asp");
  EXPECT_EQ(failed->status, 500);
  std::string text = DecodeCodePage(failed->body, kCodePageGbk);
  // The number in hex as the platform shows it, the description escaped and the page; no secret.
  EXPECT_THAT(text, AllOf(HasSubstr("'80040e14'"), HasSubstr("table: &lt;t&gt; in"), HasSubstr("/fail.asp")));
  EXPECT_THAT(text, Not(AnyOf(HasSubstr("half a page"), HasSubstr("office.db"), HasSubstr("Data Source"))));
  // A run-time error of the script engine is shown in the engine's facility.
  EXPECT_THAT(c.Get("/mismatch.asp")->body, HasSubstr("'800a000d'"));
}

TEST(HttpServerTest, TheRawBodyReachesThePageUpToTheLimit) {
  TestServer s;
  auto c = s.Client();
  std::string multipart = "--XyZ\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a.bin\"\r\n\r\n" +
                          std::string("\x00\x01\xff\xfe binary", 11) + "\r\n--XyZ--\r\n";
  EXPECT_EQ(c.Post("/body.asp", multipart, "multipart/form-data; boundary=XyZ")->body, multipart);
  EXPECT_EQ(c.Post("/body.asp", std::string(5000, 'x'), "application/octet-stream")->status, 413);
}

TEST(HttpServerTest, StaticFilesMatchAnyCaseStayInTheSiteAndAnswerConditionalRequests) {
  TestServer s;
  for (const char* name : {"images/edit.gif", "images/..x", "Include/Cal.js", "include/x", "../secret"}) {
    fs::create_directories((s.site / name).parent_path());
    std::ofstream(s.site / name) << name;
  }
  fs::create_symlink(s.site / "../secret", s.site / "link.txt");
  auto c = s.Client();
  auto gif = c.Get("/IMAGES/Edit.GIF");
  ASSERT_TRUE(gif);
  EXPECT_EQ(gif->body, "images/edit.gif");
  EXPECT_EQ(gif->get_header_value("Content-Type"), "image/gif");
  // Found in Include/ although an include/ exists; the site's text files are UTF-8 whatever the code page.
  EXPECT_EQ(c.Get("/include/cal.js")->get_header_value("Content-Type"), "text/javascript; charset=utf-8");
  for (const char* path : {"/images/../../secret", "/link.txt", "/images/..x", "/images", "/nothing.asp"})
    EXPECT_EQ(c.Get(path)->status, 404) << path;
  EXPECT_EQ(c.Post("/images/edit.gif", "x", "text/plain")->status, 405);  // static files are only read
  EXPECT_EQ(c.Post("/images/none.gif", "x", "text/plain")->status, 404);
  std::string etag = gif->get_header_value("ETag"), lastModified = gif->get_header_value("Last-Modified");
  EXPECT_EQ(c.Get("/images/edit.gif", {{"If-None-Match", etag}})->status, 304);
  EXPECT_EQ(c.Get("/images/edit.gif", {{"If-Modified-Since", lastModified}})->status, 304);
  std::ofstream(s.site / "images/edit.gif") << "changed";
  EXPECT_EQ(c.Get("/images/edit.gif", {{"If-None-Match", etag}})->status, 200);
  auto head = c.Head("/images/edit.gif");  // the length of what GET sends, and no body
  EXPECT_EQ(head->get_header_value("Content-Length"), "7");
  EXPECT_EQ(head->body, "");
}

TEST(HttpServerTest, EveryReplyCarriesTheHostsHeaders) {
  TestServer s;
  std::ofstream(s.site / "a.css") << "p{}";
  auto c = s.Client();
  for (const char* path : {"/a.css", "/hello.asp", "/missing.gif", "/fail.asp"}) {
    auto r = c.Get(path);
    ASSERT_TRUE(r) << path;
    EXPECT_EQ(r->get_header_value("X-Content-Type-Options"), "nosniff") << path;
    EXPECT_EQ(r->get_header_value("Content-Security-Policy"), "frame-ancestors 'self'") << path;
    EXPECT_EQ(r->get_header_value("Referrer-Policy"), "same-origin") << path;
  }
  // Pages are private; files may be kept a while.
  EXPECT_EQ(c.Get("/hello.asp")->get_header_value("Cache-Control"), "private, no-cache");
  EXPECT_EQ(c.Get("/a.css")->get_header_value("Cache-Control"), "public, max-age=300");
  EXPECT_EQ(c.Delete("/hello.asp")->status, 405);
}

}  // namespace
}  // namespace corvane::server
