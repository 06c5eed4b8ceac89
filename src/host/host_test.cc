#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "host/page_support.h"
#include "runtime/args.h"
#include "test_support.h"

namespace corvane::host {
namespace {

TEST(RequestValues, DecodedInTheCodePageAndJoined) {
  Session session;
  // "中文" in GBK is D6 D0 CE C4.
  Page page(PageRequest{.url = "/t.asp",
                        .queryString = "name=%D6%D0%CE%C4&a=1&A=2&empty=&flag&sp=a+b%2Bc",
                        .contentType = "application/x-www-form-urlencoded; charset=gbk",
                        .body = "choseItem=id&choseItem=name&q=%27x%27"},
            session);
  Request& r = page.Request();
  EXPECT_EQ(r.QueryString("name").ToString(), "中文");
  EXPECT_EQ(r.QueryString("a").ToString(), "1, 2");  // names are case-insensitive, repeats join
  EXPECT_EQ(r.QueryString("empty").Type(), vtString);
  EXPECT_EQ(r.QueryString("flag").ToString(), "");
  EXPECT_EQ(r.QueryString("sp").ToString(), "a b+c");
  EXPECT_TRUE(r.QueryString("missing").IsEmpty());
  EXPECT_EQ(r.QueryString(), "name=%D6%D0%CE%C4&a=1&A=2&empty=&flag&sp=a+b%2Bc");
  EXPECT_EQ(r.Form("choseItem").ToString(), "id, name");
  EXPECT_EQ(r.Form("q").ToString(), "'x'");
  EXPECT_EQ(r.ServerVariables("url").ToString(), "/t.asp");
  EXPECT_EQ(r.ServerVariables("REQUEST_METHOD").ToString(), "POST");
  EXPECT_TRUE(r.ServerVariables("NO_SUCH").IsEmpty());
}

TEST(RequestValues, Utf8CodePageAndRawBody) {
  Session session;
  Page page(PageRequest{.url = "/u.asp", .queryString = "n=%E4%B8%AD", .contentType = "multipart/form-data; boundary=x",
                        .body = "--x\r\nbody", .codePage = kCodePageUtf8},
            session);
  EXPECT_EQ(page.Request().QueryString("n").ToString(), "中");
  EXPECT_TRUE(page.Request().Form("anything").IsEmpty());  // a multipart body is not parsed
  EXPECT_EQ(page.Request().TotalBytes(), 9);
  int32_t n = 4;
  Variant first = page.Request().BinaryRead(n);
  EXPECT_EQ(n, 4);
  n = 100;
  Variant rest = page.Request().BinaryRead(n);
  EXPECT_EQ(n, 5);
  EXPECT_EQ(std::string(rest.ToBytes().begin(), rest.ToBytes().end()), "\nbody");
}

TEST(SessionValues, KeysAreCaseInsensitiveAndSharedAcrossPages) {
  Session session;
  {
    Page page(PageRequest{.url = "/a.asp"}, session);
    Object s = page.Session().AsObject();
    s.Invoke("Item", {Variant("strOrder"), Variant("x")});  // a method call reads
    Args put{Variant("strOrder"), Variant("name")};
    s.get()->InvokeMember(0, InvokeKind::PropertyPut, put);
  }
  EXPECT_EQ(session.Get("STRORDER").ToString(), "name");
  EXPECT_TRUE(session.Get("never").IsEmpty());
  session.Set("personID", Variant(3));
  EXPECT_EQ(session.ptr()->Keys(), (std::vector<std::string>{"personID", "strOrder"}));
}

TEST(ResponseWrites, EveryValueKindAndObjectsRefused) {
  Session session;
  Page page(PageRequest{.url = "/a.asp"}, session);
  Response& r = page.Response();
  r.Write(Variant("a"));
  r.Write(Variant::Null());
  r.Write(Variant(int16_t{7}));
  r.Write(Variant(true));
  r.Write("中");
  EXPECT_EQ(page.Writes(), (std::vector<std::string>{"a", "7", "True", "中"}));
  EXPECT_EQ(page.Output(), "a7True中");
  EXPECT_THROW(r.Write(Variant(Object())), Error);
}

// A component stand-in that records how the host attaches it.
class Probe : public Dispatch {
 public:
  static inline std::vector<std::string> log;
  const ClassInfo& Info() const override {
    static const ClassInfo info{.className = "Probe", .members = {{"OnStartPage", 1}, {"OnEndPage", 2}}};
    return info;
  }
  Variant InvokeMember(int32_t id, InvokeKind, Args& args) override {
    if (id == 1) {
      objects.Take(Arg(args, 0));
      log.push_back("start " + objects.Request().ServerVariables("URL").ToString());
    } else {
      objects.Session().Set("seen", Variant(true));
      objects.Release();
      log.push_back("end");
    }
    return {};
  }
  PageObjects objects;
};

TEST(ServerCreateObject, AttachesAtStartAndDetachesAtPageEnd) {
  Probe::log.clear();
  Session session;
  {
    Page page(PageRequest{.url = "/p.asp"}, session);
    // Not registered: attach by hand the way Server.CreateObject does for registered classes.
    auto probe = std::make_shared<Probe>();
    Args args{page.Context()};
    probe->InvokeMember(1, InvokeKind::Method, args);
    EXPECT_EQ(Probe::log, (std::vector<std::string>{"start /p.asp"}));
    Object aspHttp = page.Server().CreateObject("corvane.aspHttp");  // no page members: no calls
    EXPECT_FALSE(aspHttp.IsNothing());
    probe->InvokeMember(2, InvokeKind::Method, args);
  }
  EXPECT_EQ(Probe::log.back(), "end");
  EXPECT_TRUE(session.Get("seen").ToBool());
}

TEST(ContextLateBound, GivesTheHostObjects) {
  Session session;
  Page page(PageRequest{.url = "/c.asp", .queryString = "x=1"}, session);
  Object ctx = page.Context().ToObject();
  Object request = ctx.Get("Request").ToObject();
  EXPECT_EQ(request.Invoke("QueryString", {Variant("x")}).ToString(), "1");
  Object response = ctx.Get("Response").ToObject();
  response.Invoke("Write", {Variant("hi")});
  EXPECT_EQ(page.Output(), "hi");
  Args count{Variant(0)};
  request.Invoke("BinaryRead", count);
  EXPECT_EQ(count[0].ToLong(), 0);
}

TEST(TraceLine, IsOneHiddenSpan) {
  Session session;
  Page page(PageRequest{.url = "/t.asp"}, session);
  PageObjects objects;
  objects.Take(page.Context());
  WriteTrace(objects.objResponse, "##调试信息:进入调试模式<br>\r\n");
  EXPECT_EQ(page.Writes(),
            (std::vector<std::string>{"<span id=debugID style='display:none'>##调试信息:进入调试模式<br>\r\n</span>"}));
  objects.Release();
  try {
    WriteTrace(objects.objResponse, "x");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 91);
  }
}

TEST(ConnectionRoutines, OpenAndCloseTraceOnlyInDebug) {
  testing::ScratchDatabase db;
  Session session;
  Page page(PageRequest{.url = "/t.asp"}, session);
  PageObjects objects;
  objects.Take(page.Context());
  std::shared_ptr<ado::Connection> conn;
  OpenConnection(conn, db.connectionString, false, objects.objResponse);
  ASSERT_TRUE(conn && conn->IsOpen());
  CloseConnection(conn, false, objects.objResponse);
  EXPECT_FALSE(conn);
  EXPECT_TRUE(page.Writes().empty());

  OpenConnection(conn, db.connectionString, true, objects.objResponse);
  CloseConnection(conn, true, objects.objResponse);
  CloseConnection(conn, true, objects.objResponse);  // nothing to close: still traced
  EXPECT_EQ(page.Output(),
            "<span id=debugID style='display:none'>##调试信息:打开数据库 OK!<br>\r\n</span>"
            "<span id=debugID style='display:none'>##调试信息:关闭数据库 OK!<br>\r\n</span>"
            "<span id=debugID style='display:none'>##调试信息:关闭数据库 OK!<br>\r\n</span>");
}

TEST(ConnectionRoutines, AFailedOpenKeepsTheNewUnopenedConnection) {
  Session session;
  Page page(PageRequest{.url = "/t.asp"}, session);
  std::shared_ptr<ado::Connection> conn;
  EXPECT_THROW(OpenConnection(conn, "Provider=Nope;", true, page.ContextObject()->Response()), Error);
  ASSERT_TRUE(conn);
  EXPECT_FALSE(conn->IsOpen());
  EXPECT_TRUE(page.Writes().empty());
}

}  // namespace
}  // namespace corvane::host
