// The site's input guard (site/www/include/guard.inc) over real HTTP: small pages in a site folder of
// their own include the site's common.inc and guard.inc and check a request against a table, against
// a page's fixed filter and against the group pages' lists; a refused request gets 400 and a page
// naming the field, and the page's own output never follows.
#include <gtest/gtest.h>
#include <httplib.h>

#include <fstream>
#include <thread>

#include "corvane/codepage.h"
#include "corvane/registry.h"
#include "http_server.h"
#include "test_support.h"

namespace corvane::server {
namespace {

namespace fs = std::filesystem;

const char* const kIncludes =
    "<!--#include virtual=\"/include/common.inc\"--><!--#include virtual=\"/include/guard.inc\"-->";

struct GuardSite {
  // `admin`: the host tells the pages that their person is an administrator.
  explicit GuardSite(bool admin = false) {
    for (const char* inc : {"common.inc", "guard.inc"})
      fs::copy_file(fs::path(CORVANE_SITE_WWW) / "include" / inc, root / "include" / inc);
    Write("t.asp", "<% GuardTable \"t\" %>ok");
    Write("fixed.asp", "<% GuardTableSql \"select id,n from t where owner=3 order by id\" %>ok");
    Write("lists.asp",
          "<% GuardInput \"m\", \"menuIDs\", Nothing : GuardInput \"p\", \"personIDs\", Nothing\r\n"
          "GuardInput \"g\", \"groupName\", Nothing %>ok");
    Write("debug.asp",
          "<% Session(\"debug\") = True : Response.Write DebugOn() & \",\" & Session(\"debug\") %>");
    db.Run({"create table t(id INTEGER PRIMARY KEY, n INT, r REAL, d DATETIME, s VARCHAR(20), owner INT)"});
    application->Set("ConnStr", Variant(db.connectionString));
    ServerOptions o{.port = 0, .site = root, .codePage = kCodePageUtf8, .threads = 2, .accessLog = false};
    server = std::make_unique<HttpServer>(
        o, PageRegistry{}, host::PageHost{.application = application, .createObject = CreateObject});
    if (admin)
      server->SetPageGuard([](const GuardRequest&) {
        return GuardVerdict{.serverVariables = {{"CORVANE_ADMIN", "1"}}};
      });
    port = server->Bind();
    thread = std::jthread([this] { server->Run(); });
  }
  ~GuardSite() { server->Stop(); }
  void Write(const std::string& name, const std::string& page) const {
    std::ofstream(root / name, std::ios::binary) << kIncludes << page;
  }

  fs::path root = [] {
    fs::path p = corvane::testing::ScratchPath("guard-site");
    fs::create_directories(p / "include");
    return p;
  }();
  corvane::testing::ScratchDatabase db;
  std::shared_ptr<host::Application> application = std::make_shared<host::Application>();
  std::unique_ptr<HttpServer> server;
  int port = 0;
  std::jthread thread;
};

struct Case {
  const char* path;  // page and query string
  const char* form;  // urlencoded body, posted when not null
  int status;
  const char* field;  // the field the refusal names ("" when the page runs)
};

// clang-format off
const Case kCases[] = {
    {"/t.asp", nullptr, 200, ""},
    {"/t.asp?id=12&n=3&r=-2.5&d=2026-11-02%2008:30:00&s=abc&owner=", nullptr, 200, ""},
    {"/t.asp?order=s%20DESC&page=2&pageSize=0&choseItem=id,%20S&action=search2", nullptr, 200, ""},
    {"/t.asp?s=1%3C2%20and%20a%20%3E%20b&order=N", nullptr, 200, ""},
    {"/t.asp?id=0%20or%20planID=1", nullptr, 400, "id"},
    {"/t.asp?n=1,password=777777", nullptr, 400, "n"},
    {"/t.asp?r=1e5", nullptr, 400, "r"},
    {"/t.asp?d=2026-11-02'", nullptr, 400, "d"},
    {"/t.asp?s=%3Cimg%20src=x%20onerror=alert(1)%3E", nullptr, 400, "s"},
    {"/t.asp?s=x%3C/y", nullptr, 400, "s"},
    {"/t.asp?title=%3Cscript%3E&debug=1", nullptr, 400, "title"},
    {"/t.asp?%3C!--=1", nullptr, 400, "&lt;!--"},
    {"/t.asp?order=(case%20when%201=1%20then%20id%20else%20-id%20end)", nullptr, 400, "order"},
    {"/t.asp?order=s%20desc", nullptr, 400, "order"},
    {"/t.asp?page=0", nullptr, 400, "page"},
    {"/t.asp?pageSize=20;", nullptr, 400, "pageSize"},
    {"/t.asp?choseItem=id,password", nullptr, 400, "choseItem"},
    {"/t.asp?action=drop", nullptr, 400, "action"},
    {"/t.asp?id=5x", "id=5", 400, "id"},
    {"/t.asp?id=5", "n=x", 400, "n"},
    {"/fixed.asp?owner=3", "owner=3", 200, ""},
    {"/fixed.asp", "action=insert2&owner=4", 400, "owner"},
    {"/fixed.asp?owner=4", nullptr, 400, "owner"},
    {"/fixed.asp?order=n%20DESC&choseItem=id,n", nullptr, 200, ""},
    {"/fixed.asp?order=owner", nullptr, 400, "order"},
    {"/fixed.asp?choseItem=id,s", nullptr, 400, "choseItem"},
    {"/lists.asp?m=3*7&p=3,%2012,5&g=%E6%B5%8B%E8%AF%95%E7%BB%84", nullptr, 200, ""},
    {"/lists.asp?m=3**", nullptr, 400, "m"},
    {"/lists.asp?p=3,,4", nullptr, 400, "p"},
    {"/lists.asp", "p=3;delete", 400, "p"},
    {"/lists.asp?g=x'y", nullptr, 400, "g"},
    {"/lists.asp?g=%3Csvg%20onload=alert(1)%3E", nullptr, 400, "g"},
};
// clang-format on

TEST(InputGuardTest, RefusesWhatDoesNotFitTheTableOrList) {
  GuardSite site;
  httplib::Client client("127.0.0.1", site.port);
  for (const Case& c : kCases) {
    auto r = c.form ? client.Post(c.path, c.form, "application/x-www-form-urlencoded") : client.Get(c.path);
    ASSERT_TRUE(r) << c.path;
    EXPECT_EQ(r->status, c.status) << c.path << " " << (c.form ? c.form : "");
    if (c.status == 200) {
      EXPECT_EQ(r->body, "ok") << c.path;
    } else {
      EXPECT_NE(r->body.find("<p class=message>" + std::string(c.field) + "："), std::string::npos)
          << c.path << ": " << r->body;
      EXPECT_EQ(r->body.find("ok"), std::string::npos) << c.path;
    }
  }
}

TEST(InputGuardTest, DebugIsOnlyForAdministrators) {
  for (bool admin : {false, true}) {
    GuardSite site(admin);
    auto r = httplib::Client("127.0.0.1", site.port).Get("/debug.asp?debug=1");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->body, admin ? "True,True" : "False,False");
  }
}

}  // namespace
}  // namespace corvane::server
