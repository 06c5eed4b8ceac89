// Script pages over real HTTP on 127.0.0.1: includes and directives, what is never served, global.asa,
// the host objects as scripts use them, error pages, components and data from script, recompiling
// and the script timeout. Each test has a site folder of its own.
#include <gmock/gmock.h>
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
using namespace ::testing;
using Files = std::vector<std::pair<std::string, std::string>>;

const char* const kSecret = "Data Source=/secret/site.db";

// A server on a free port of 127.0.0.1 over a site folder of the given files.
struct Site {
  explicit Site(const Files& files, int codePage = kCodePageUtf8) {
    for (const auto& [path, text] : files) Write(path, text);
    application->Set("ConnStr", Variant(db.connectionString));
    ServerOptions o{.port = 0, .site = root, .codePage = codePage, .threads = 4, .accessLog = false};
    server = std::make_unique<HttpServer>(
        o, PageRegistry{}, host::PageHost{.application = application, .createObject = CreateObject},
        std::vector<std::string>{kSecret});
    port = server->Bind();
    thread = std::jthread([this] { server->Run(); });
  }
  ~Site() { server->Stop(); }
  void Write(const std::string& path, const std::string& text) const {
    fs::create_directories((root / path.substr(1)).parent_path());
    std::ofstream(root / path.substr(1), std::ios::binary) << text;
  }
  httplib::Result Get(const std::string& path, const httplib::Headers& headers = {}) const {
    return httplib::Client("127.0.0.1", port).Get(path, headers);
  }
  // The body of a GET that must succeed.
  std::string Body(const std::string& path, const httplib::Headers& headers = {}) const {
    auto r = Get(path, headers);
    EXPECT_TRUE(r && r->status == 200) << path << ": " << (r ? r->body : "no reply");
    return r ? r->body : "";
  }

  fs::path root = corvane::testing::ScratchPath("site");
  corvane::testing::ScratchDatabase db;
  std::shared_ptr<host::Application> application = std::make_shared<host::Application>();
  std::unique_ptr<HttpServer> server;
  int port = 0;
  std::jthread thread;
};

httplib::Headers CookieOf(const httplib::Result& r) {
  std::string c = r->get_header_value("Set-Cookie");
  return {{"Cookie", c.substr(0, c.find(';'))}};
}

TEST(ScriptPagesTest, IncludesNestAndResolveCaseBlindDirectivesSetTheCodePage) {
  Site site({{"/inc/Head.inc", "<% title = \"T\" %><!--#include file=\"sub/more.inc\"-->"},
             {"/inc/sub/more.inc", "<% title = title & \"+more\" %>"},
             {"/Pages/p.asp", "<!--#include virtual=\"/INC/head.inc\"-->[<%= title %>]"},
             {"/c/a.inc", "<!--#include file=\"b.inc\"-->"},
             {"/c/b.inc", "x\r\n<!--#include file=\"a.inc\"-->"},
             {"/c/cycle.asp", "<!--#include file=\"a.inc\"-->"},
             {"/cp.asp", "<%@ LANGUAGE=\"VBSCRIPT\" CODEPAGE=65001 %>中<%= Request.QueryString(\"q\") %>"}},
            kCodePageGbk);
  EXPECT_EQ(site.Body("/pages/P.ASP"), "[T+more]");
  auto cycle = site.Get("/c/cycle.asp");
  EXPECT_EQ(cycle->status, 500);
  EXPECT_THAT(cycle->body, HasSubstr(".inc"));
  // CODEPAGE=65001 on a GBK server: the query is read and the page sent in UTF-8.
  auto cp = site.Get("/cp.asp?q=%E6%96%87");
  EXPECT_EQ(cp->body, "中文");
  EXPECT_EQ(cp->get_header_value("Content-Type"), "text/html; charset=utf-8");
}

TEST(ScriptPagesTest, ScriptSourcesAreNeverSentAndAFolderRunsItsDefaultPage) {
  Site site({{"/x.asp", "ran"},
             {"/inc/x.inc", "<% secret = 1 %>"},
             {"/global.asa", "<script runat=server language=vbscript>\r\n</script>"},
             {"/y.cer", "cert"},
             {"/A.ASA", "a"},
             {"/x.asp.", "dotted"},
             {"/ok.txt", "fine"},
             {"/d/Default.asp", "home"}});
  EXPECT_EQ(site.Body("/X.Asp"), "ran");
  EXPECT_EQ(site.Body("/d/"), "home");  // a folder's default page
  EXPECT_EQ(site.Body("/ok.txt"), "fine");
  for (const char* path : {"/x.asp.", "/X.ASP.", "/x.asp::$DATA", "/x.asp%3A%3A%24DATA", "/x.asp/",
                           "/x.asp%20", "/inc/x.inc", "/INC/X.INC", "/inc/x.inc::$DATA", "/global.asa",
                           "/GLOBAL.ASA.", "/y.cer", "/y.cer::$DATA", "/a.asa", "/none.asp", "/../x.asp"})
    EXPECT_EQ(site.Get(path)->status, 404) << path;
}

TEST(ScriptPagesTest, HostObjectsAsScriptsUseThem) {
  // clang-format off
  struct Case { std::string path, page, query; int status; std::string body; } cases[] = {
      {"/req.asp",
       "<% For Each k In Request.QueryString : Response.Write k & \"=\" & Request.QueryString(k) & \";\" : Next\r\n"
       "Response.Write Request.QueryString.Count & Request(\"c\") & Request.Cookies.Count %>",
       "a=1&b=2&a=3", 200, "a=1, 3;b=2;2C1"},
      {"/resp.asp",
       "<% Response.Write \"dropped\" : Response.Clear : Response.Status = \"404 Not Found\"\r\n"
       "Response.Cookies(\"k\") = \"v\" : Response.Write \"kept\" : Response.End : Response.Write \"never\" %>",
       "", 404, "kept"},
      {"/sess.asp",
       "<% Session(\"a\") = 1 : Session.Contents(\"b\") = 2\r\n"
       "For Each k In Session.Contents : Response.Write k : Next\r\n"
       "Response.Write Session.Contents.Count & Session.Timeout %>",
       "", 200, "ab220"},
      {"/d/srv.asp",
       "<%= Server.HTMLEncode(\"<a>\") & Server.URLEncode(\"a b\") & Mid(Server.MapPath(\"x.txt\"), "
       "Len(Server.MapPath(\"/\")) + 1) & Server.ScriptTimeout %>",
       "", 200, "&lt;a&gt;a+b/d/x.txt90"},
      {"/app.asp",
       "<% Application.Lock : Application(\"n\") = Application(\"n\") + 1 : Application.Unlock %>"
       "<%= Application(\"n\") & Application.Contents.Count %>",
       "", 200, "12"},
      {"/e/main.asp", "A<% Server.Execute \"part.asp\" %>B<% Server.Transfer \"/e/end.asp\" %>C", "", 200, "ApBe"},
      {"/go.asp", "x<% Response.Redirect \"/there.asp\" : Response.Write \"never\" %>", "", 302, ""},
  };
  // clang-format on
  Site site({{"/e/part.asp", "p"}, {"/e/end.asp", "e"}});
  for (const Case& c : cases) site.Write(c.path, c.page);
  for (const Case& c : cases) {
    auto r = site.Get(c.path + "?" + c.query, {{"Cookie", "c=C"}});
    ASSERT_TRUE(r) << c.path;
    EXPECT_EQ(r->status, c.status) << c.path;
    if (c.status == 302) {
      EXPECT_EQ(r->get_header_value("Location"), "/there.asp");
      EXPECT_THAT(r->body, AllOf(HasSubstr("Object Moved"), Not(HasSubstr("never"))));
    } else {
      EXPECT_EQ(r->body, c.body) << c.path;
    }
  }
  // The page stores nothing in its session: its own cookie is the only one.
  EXPECT_EQ(site.Get("/resp.asp")->get_header_value("Set-Cookie"), "k=v; path=/");
  // A page asked for in another case knows its file as it is on disk.
  site.Write("/d/Path.asp",
             "<%= Mid(Request.ServerVariables(\"PATH_TRANSLATED\"), Len(Server.MapPath(\"/\")) + 1) %>");
  EXPECT_EQ(site.Body("/D/PATH.ASP"), "/d/Path.asp");
}

TEST(ScriptPagesTest, GlobalAsaEventsAndDeclaredObjects) {
  const std::string globalAsa =
      "<object runat=\"server\" scope=\"Application\" id=\"appConn\" "
      "progid=\"ADODB.Connection\"></object>\r\n"
      "<OBJECT RUNAT=Server ID=rs PROGID=ADODB.Recordset></OBJECT>\r\n"
      "<script language=\"VBScript\" runat=\"Server\">\r\n"
      "Sub Application_OnStart\r\n  Application(\"starts\") = Application(\"starts\") + 1\r\nEnd Sub\r\n"
      "Sub Session_OnStart\r\n  Session(\"started\") = \"yes\"\r\n"
      "  Application(\"sessions\") = Application(\"sessions\") + 1\r\nEnd Sub\r\n"
      "Sub Session_OnEnd\r\n  Application(\"ended\") = Application(\"ended\") & Session(\"started\")\r\nEnd "
      "Sub\r\n"
      "</script>\r\n";
  Site site({{"/global.asa", globalAsa},
             {"/g.asp",
              "<%= Application(\"starts\") & Session(\"started\") & Application(\"sessions\") & \"|\" & "
              "appConn.State & rs.State %>"},
             {"/open.asp", "<% appConn.Open Application(\"ConnStr\") %>"},
             {"/bye.asp", "<% Session.Abandon %><%= Session(\"started\") %>"},
             {"/ended.asp", "<%= Application(\"ended\") %>"}});
  auto first = site.Get("/g.asp");
  EXPECT_EQ(first->body, "1yes1|00");
  httplib::Headers a = CookieOf(first);
  site.Body("/open.asp", a);
  EXPECT_EQ(site.Body("/g.asp", a), "1yes1|10");  // the application's connection stays open
  EXPECT_EQ(site.Body("/g.asp"), "1yes2|10");     // for every session
  EXPECT_EQ(site.Body("/bye.asp", a), "yes");     // the values last until the page's end
  EXPECT_EQ(site.Body("/ended.asp", a), "yes");   // Session_OnEnd ran; this is a new session
  // A change to global.asa starts the application again; a syntax error in it shows on every page.
  site.Write("/global.asa", globalAsa + "<script runat=server>\r\nSub Broken(\r\n</script>");
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  auto broken = site.Get("/g.asp");
  EXPECT_EQ(broken->status, 500);
  EXPECT_THAT(broken->body, HasSubstr("/global.asa, line 1"));
  site.Write("/global.asa", globalAsa);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_THAT(site.Body("/g.asp"), StartsWith("2"));
}

TEST(ScriptPagesTest, ErrorPagesNameTheFileLineAndSourceWithoutSecrets) {
  // clang-format off
  struct Case { std::string path, page; std::vector<std::string> shown; } cases[] = {
      {"/syntax.asp", "<p>\r\n<%\r\nx = = 1\r\n%>", {"compilation error", "'800a03", "/syntax.asp, line 3", "x = = 1"}},
      {"/runtime.asp", "<!--#include file=\"div.inc\"-->", {"'800a000b'", "/div.inc, line 2", "y = 1 / 0"}},
      {"/hidden.asp", "<% c = \"Data Source=/secret/site.db\" : x = CInt(\"<b>\") %>",
       {"'800a000d'", "&lt;b&gt;"}},
  };
  // clang-format on
  Site site(Files{{"/div.inc", "<%\r\ny = 1 / 0\r\n%>"}});
  for (const Case& c : cases) site.Write(c.path, c.page);
  for (const Case& c : cases) {
    auto r = site.Get(c.path);
    EXPECT_EQ(r->status, 500) << c.path;
    for (const std::string& s : c.shown) EXPECT_THAT(r->body, HasSubstr(s)) << c.path;
    EXPECT_THAT(r->body, Not(AnyOf(HasSubstr("secret"), HasSubstr("<b>"))));
  }
}

TEST(ScriptPagesTest, ComponentsAndDataFromScript) {
  Site site(
      {{"/ado.asp",
        "<% Set conn = Server.CreateObject(\"ADODB.Connection\")\r\n"
        "conn.Open Application(\"ConnStr\")\r\n"
        "conn.Execute \"create table staff(id integer primary key, name varchar(20))\"\r\n"
        "conn.Execute \"insert into staff values(1,'张三'),(2,'李四')\"\r\n"
        "Set rs = CreateObject(\"ADODB.Recordset\")\r\n"
        "rs.Open \"select id, name from staff order by id\", conn, 1\r\n"
        "Do While Not rs.EOF : Response.Write rs(\"id\") & rs(\"name\") & \";\" : rs.MoveNext : Loop\r\n"
        "rs.Close : conn.Close %>"},
       {"/dna.asp",
        "<% Set dna = Server.CreateObject(\"corvane.DNA\")\r\n"
        "dna.OpenDNA Application(\"ConnStr\"), \"select id,name from staff \", \"编号,姓名\"\r\n"
        "dna.DispList\r\ndna.CloseDNA %>"}});
  EXPECT_EQ(site.Body("/ado.asp"), "1张三;2李四;");
  EXPECT_THAT(site.Body("/dna.asp"), AllOf(HasSubstr("张三"), HasSubstr("李四"), HasSubstr("姓名")));
}

TEST(ScriptPagesTest, APageIsCompiledAgainWhenOneOfItsFilesChanges) {
  Site site({{"/p.asp", "<!--#include file=\"v.inc\"--><%= v %>"}, {"/v.inc", "<% v = 1 %>"}});
  EXPECT_EQ(site.Body("/p.asp"), "1");
  site.Write("/v.inc", "<% v = 22 %>");
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_EQ(site.Body("/p.asp"), "22");
  // Many requests at once run the one compiled page.
  std::vector<std::jthread> threads;
  std::atomic<int> right{0};
  for (int i = 0; i < 8; ++i) threads.emplace_back([&] { right += site.Get("/p.asp")->body == "22"; });
  threads.clear();
  EXPECT_EQ(right, 8);
}

TEST(ScriptPagesTest, ScriptTimeoutStopsARunawayPage) {
  Site site(Files{{"/loop.asp", "<% Server.ScriptTimeout = 1 : Do : Loop %>"}});
  auto start = std::chrono::steady_clock::now();
  auto r = site.Get("/loop.asp");
  EXPECT_EQ(r->status, 500);
  EXPECT_THAT(r->body, HasSubstr("/loop.asp"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace corvane::server
