// corvane-server over real HTTP on 127.0.0.1: sessions, the one-at-a-time rule, the code page,
// static files, the error page and the body limit, against an in-process server with test pages.
#include "http_server.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::server {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::atomic<int> gInside{0}, gMost{0};

PageRegistry TestPages() {
  PageRegistry pages;
  pages.Add("/count.asp", [](PageContext& p) {
    int n = p.Session.Get("n").IsEmpty() ? 1 : p.Session.Get("n").ToLong() + 1;
    p.Session.Set("n", Variant(n));
    p.Response.Write(Variant(n));
  });
  pages.Add("/hello.asp", [](PageContext& p) {
    p.Response.Write("你好,");
    p.Response.Write(p.Request.QueryString("q"));
    p.Response.Write(",");
    p.Response.Write(p.Request.Form("name"));
  });
  pages.Add("/slow.asp", [](PageContext& p) {
    int n = ++gInside;
    int m = gMost.load();
    while (n > m && !gMost.compare_exchange_weak(m, n)) {
    }
    std::this_thread::sleep_for(150ms);
    --gInside;
    p.Response.Write("done");
  });
  pages.Add("/fail.asp", [](PageContext& p) {
    p.Response.Write("half a page");
    throw Error::TypeMismatch();
  });
  pages.Add("/dberror.asp", [](PageContext&) {
    throw Error::Database("no such table: nothing; Provider=SQLite;Data Source=/secret/office.db");
  });
  pages.Add("/body.asp", [](PageContext& p) {
    int32_t n = p.Request.TotalBytes();
    Variant data = p.Request.BinaryRead(n);
    const Bytes& bytes = data.ToBytes();
    p.Response.Write(Variant(n));
    p.Response.Write(":");
    p.Response.Write(std::string(bytes.begin(), bytes.end()) == p.Request.Body() ? "same" : "differs");
  });
  pages.Add("/go.asp", [](PageContext& p) { p.Response.Redirect("/count.asp"); });
  return pages;
}

class HttpServerTest : public ::testing::Test {
 protected:
  void Start(int codePage = kCodePageGbk) {
    site_ = corvane::testing::ScratchPath("www");
    fs::create_directories(site_ / "images");
    std::ofstream(site_ / "images" / "edit.gif", std::ios::binary) << std::string("GIF89a\x01\x00", 8);
    ServerOptions o;
    o.port = 0;
    o.site = site_.string();
    o.codePage = codePage;
    o.threads = 8;
    o.maxBodyBytes = 4096;
    o.accessLog = false;
    server_ = std::make_unique<HttpServer>(o, TestPages(), host::PageHost{},
                                           std::vector<std::string>{"Provider=SQLite;Data Source=/secret/office.db"});
    port_ = server_->Bind();
    thread_ = std::thread([this] { server_->Run(); });
  }
  void TearDown() override {
    if (server_) server_->Stop();
    if (thread_.joinable()) thread_.join();
  }
  httplib::Client Client() {
    httplib::Client c("127.0.0.1", port_);
    c.set_read_timeout(10, 0);
    return c;
  }
  static std::string CookieOf(const httplib::Result& r) {
    std::string set = r->get_header_value("Set-Cookie");
    size_t eq = set.find('='), semi = set.find(';');
    return set.substr(eq + 1, semi - eq - 1);
  }

  fs::path site_;
  std::unique_ptr<HttpServer> server_;
  std::thread thread_;
  int port_ = 0;
};

TEST_F(HttpServerTest, ACookieCarriesTheSessionFromPageToPage) {
  Start();
  auto c = Client();
  auto first = c.Get("/count.asp");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->body, "1");
  std::string set = first->get_header_value("Set-Cookie");
  EXPECT_EQ(set.rfind(std::string(kSessionCookie) + "=", 0), 0u) << set;
  EXPECT_NE(set.find("HttpOnly"), std::string::npos);
  EXPECT_NE(set.find("SameSite=Lax"), std::string::npos);
  EXPECT_NE(set.find("Path=/"), std::string::npos);
  std::string id = CookieOf(first);
  EXPECT_EQ(id.size(), 32u);

  httplib::Headers withCookie{{"Cookie", "other=1; " + std::string(kSessionCookie) + "=" + id}};
  auto second = c.Get("/COUNT.asp", withCookie);  // page paths are case-insensitive
  ASSERT_TRUE(second);
  EXPECT_EQ(second->body, "2");
  EXPECT_FALSE(second->has_header("Set-Cookie"));

  auto stranger = c.Get("/count.asp", {{"Cookie", std::string(kSessionCookie) + "=forged"}});
  EXPECT_EQ(stranger->body, "1");
  EXPECT_NE(CookieOf(stranger), "forged");
  EXPECT_EQ(server_->SessionCount(), 2u);
}

TEST_F(HttpServerTest, PagesOfOneSessionRunOneAtATimeOthersInParallel) {
  Start();
  std::string id = CookieOf(Client().Get("/count.asp"));
  auto hammer = [&](bool shared) {
    gInside = 0;
    gMost = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([&, shared] {
        httplib::Headers h;
        if (shared) h.emplace("Cookie", std::string(kSessionCookie) + "=" + id);
        auto r = Client().Get("/slow.asp", h);
        EXPECT_TRUE(r && r->body == "done");
      });
    for (auto& t : threads) t.join();
    return gMost.load();
  };
  EXPECT_EQ(hammer(true), 1);
  EXPECT_GT(hammer(false), 1);
}

TEST_F(HttpServerTest, TextIsServedAndReadInTheGbkCodePage) {
  Start();
  // "中文" in GBK, percent-encoded in the query and in an urlencoded form.
  auto r = Client().Post("/hello.asp?q=%D6%D0%CE%C4", "name=%D5%C5%C8%FD",
                         "application/x-www-form-urlencoded");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 200);
  EXPECT_EQ(r->get_header_value("Content-Type"), "text/html; charset=gbk");
  EXPECT_EQ(r->body, EncodeCodePage("你好,中文,张三", kCodePageGbk));
}

TEST_F(HttpServerTest, Utf8CodePageServesUtf8) {
  Start(kCodePageUtf8);
  auto r = Client().Get("/hello.asp?q=%E4%B8%AD");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->get_header_value("Content-Type"), "text/html; charset=utf-8");
  EXPECT_EQ(r->body, "你好,中,");
}

TEST_F(HttpServerTest, StaticFilesCaseInsensitiveWithValidators) {
  Start();
  auto c = Client();
  auto r = c.Get("/Images/EDIT.gif");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 200);
  EXPECT_EQ(r->get_header_value("Content-Type"), "image/gif");
  EXPECT_EQ(r->body, std::string("GIF89a\x01\x00", 8));
  std::string etag = r->get_header_value("ETag");
  ASSERT_FALSE(etag.empty());
  EXPECT_FALSE(r->get_header_value("Last-Modified").empty());
  EXPECT_NE(r->get_header_value("Cache-Control").find("max-age"), std::string::npos);
  auto again = c.Get("/images/edit.gif", {{"If-None-Match", etag}});
  EXPECT_EQ(again->status, 304);
  EXPECT_EQ(c.Get("/images/missing.gif")->status, 404);
  EXPECT_EQ(c.Get("/images/%2e%2e/%2e%2e/etc/passwd")->status, 404);
  EXPECT_EQ(c.Post("/images/edit.gif", "x", "text/plain")->status, 405);
  EXPECT_EQ(c.Post("/images/none.gif", "x", "text/plain")->status, 404);
}

TEST_F(HttpServerTest, AnErrorOfAPageGivesTheErrorPage) {
  Start();
  auto c = Client();
  auto r = c.Get("/fail.asp");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 500);
  std::string text = DecodeCodePage(r->body, kCodePageGbk);
  EXPECT_NE(text.find("800a000d"), std::string::npos) << text;
  EXPECT_NE(text.find("Type mismatch"), std::string::npos);
  EXPECT_NE(text.find("/fail.asp"), std::string::npos);
  EXPECT_EQ(text.find("half a page"), std::string::npos);

  auto db = c.Get("/dberror.asp");
  EXPECT_EQ(db->status, 500);
  std::string dbText = DecodeCodePage(db->body, kCodePageGbk);
  EXPECT_NE(dbText.find("no such table"), std::string::npos);
  EXPECT_EQ(dbText.find("office.db"), std::string::npos);
  EXPECT_EQ(dbText.find("Data Source"), std::string::npos);
}

TEST_F(HttpServerTest, TheRawBodyReachesThePageUpToTheLimit) {
  Start();
  auto c = Client();
  std::string multipart =
      "--XyZ\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a.bin\"\r\n\r\n" +
      std::string("\x00\x01\xff\xfe binary", 11) + "\r\n--XyZ--\r\n";
  auto r = c.Post("/body.asp", multipart, "multipart/form-data; boundary=XyZ");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->body, std::to_string(multipart.size()) + ":same");

  auto big = c.Post("/body.asp", std::string(5000, 'x'), "application/octet-stream");
  ASSERT_TRUE(big);
  EXPECT_EQ(big->status, 413);
}

TEST_F(HttpServerTest, RedirectsAndUnknownPages) {
  Start();
  auto c = Client();
  auto r = c.Get("/go.asp");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->status, 302);
  EXPECT_EQ(r->get_header_value("Location"), "/count.asp");
  EXPECT_EQ(c.Get("/nothing.asp")->status, 404);
}

}  // namespace
}  // namespace corvane::server
