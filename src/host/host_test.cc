#include "corvane/host.h"

#include <gtest/gtest.h>

#include "runtime/members.h"
#include "test_support.h"

namespace corvane::host {
namespace {

using testing::ErrorNumber;

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

// A multipart body is not parsed but read raw: BinaryRead copies, BinaryReadView gives a view of the body.
TEST(RequestValues, Utf8CodePageAndRawBody) {
  Session session;
  Page page(PageRequest{.url = "/u.asp",
                        .queryString = "n=%E4%B8%AD",
                        .contentType = "multipart/form-data; boundary=x",
                        .body = "--x\r\nbody",
                        .codePage = kCodePageUtf8},
            session);
  Request& r = page.Request();
  EXPECT_EQ(r.QueryString("n").ToString(), "中");
  EXPECT_TRUE(r.Form("anything").IsEmpty());
  EXPECT_EQ(r.TotalBytes(), 9);
  int32_t n = 3;
  EXPECT_EQ(r.BinaryReadView(n), "--x");
  n = 2;
  EXPECT_EQ(r.BinaryRead(n).ToBytes(), (Bytes{'\r', '\n'}));
  n = 100;
  EXPECT_EQ(r.BinaryReadView(n).data(), r.Body().data() + 5);
  EXPECT_EQ(n, 4);
  n = -1;
  EXPECT_EQ(ErrorNumber([&] { r.BinaryReadView(n); }), 5);
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
  // Keys keep the order and the case they were first set with.
  session.Set("STRORDER", Variant("id"));
  EXPECT_EQ(session.ptr()->Keys(), (std::vector<std::string>{"strOrder", "personID"}));
}

TEST(ResponseWrites, EveryValueKindAndObjectsRefused) {
  Session session;
  Page page(PageRequest{.url = "/a.asp"}, session);
  Response& r = page.Response();
  for (const Variant& v : {Variant("a"), Variant::Null(), Variant(), Variant(int16_t{7}), Variant(true)})
    r.Write(v);
  r.Write("中");
  EXPECT_EQ(page.Writes(), (std::vector<std::string>{"a", "7", "True", "中"}));
  EXPECT_EQ(ErrorNumber([&] { r.Write(Variant(Object())); }), 13);
}

// A component stand-in that records how the host attaches it; one made with `failing` raises 91 in
// OnEndPage, as an object does that traces after it let go of its response.
class Probe : public Dispatch {
 public:
  explicit Probe(bool failing) : failing_(failing) {}
  static inline std::vector<std::string> log;
  const ClassInfo& Info() const override {
    static const ClassInfo info{
        .className = "Probe",
        .members = {Method<Probe>("OnStartPage", 1,
                                  [](Probe& p, Args& a) {
                                    auto context = Arg(a, 0).ToObject().As<ScriptingContext>();
                                    p.session_ = context->Session();
                                    log.push_back("start " +
                                                  context->Request()->ServerVariables("URL").ToString());
                                  }),
                    Method<Probe>("OnEndPage", 2, [](Probe& p, Args&) {
                      log.push_back("end");
                      p.session_->Set("seen", Variant(true));
                      if (p.failing_) throw Error::ObjectNotSet();
                    })}};
    return info;
  }

 private:
  bool failing_;
  std::shared_ptr<SessionObject> session_;
};

TEST(ServerCreateObject, AttachesAtStartAndEndsEveryObjectAtPageEnd) {
  Probe::log.clear();
  Session session;
  PageHost host{.createObject = [](std::string_view name) -> Object {
    if (name == "probe" || name == "failing") return Object(std::make_shared<Probe>(name == "failing"));
    throw Error::CannotCreateObject(std::string(name));
  }};
  Page page(PageRequest{.url = "/p.asp"}, session, host);
  page.Server().CreateObject("failing");
  page.Server().CreateObject("probe");
  EXPECT_EQ(Probe::log, (std::vector<std::string>{"start /p.asp", "start /p.asp"}));
  EXPECT_EQ(ErrorNumber([&] { page.Server().CreateObject("other"); }), 429);

  // The failing object's error is answered, and the object after it still gets its OnEndPage.
  std::vector<EndPageError> errors = page.End();
  EXPECT_EQ(Probe::log.size(), 4u);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].className, "Probe");
  EXPECT_EQ(errors[0].error.Number(), 91);
  EXPECT_TRUE(session.Get("seen").ToBool());
  EXPECT_TRUE(page.End().empty());  // once
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
  // Without a class factory from the page host, every name is 429.
  Object server = ctx.Get("Server").ToObject();
  EXPECT_EQ(ErrorNumber([&] { server.Invoke("CreateObject", {Variant("corvane.DNA")}); }), 429);
}

}  // namespace
}  // namespace corvane::host
