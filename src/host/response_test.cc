// Response as scripts reach it: the reply's status, headers, cookies, code page, and End / Clear.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "corvane/codepage.h"
#include "corvane/dates.h"
#include "corvane/host.h"
#include "test_support.h"

namespace corvane::host {
namespace {

using ::testing::ElementsAre;
using testing::ErrorNumber;
using ::testing::HasSubstr;
using ::testing::Pair;

// Writes an indexed property late-bound, as `obj.name(index...) = value` does.
void PutIndexed(const Object& o, std::string_view name, Args args) {
  o.get()->InvokeMember(o.get()->Info().DispIdOf(name), InvokeKind::PropertyPut, args);
}

// Local time is UTC while it lives, so that HTTP dates are known.
struct UtcZone {
  UtcZone() {
    const char* tz = std::getenv("TZ");
    saved = tz ? tz : "";
    had = tz != nullptr;
    ::setenv("TZ", "UTC", 1);
    ::tzset();
  }
  ~UtcZone() {
    if (had)
      ::setenv("TZ", saved.c_str(), 1);
    else
      ::unsetenv("TZ");
    ::tzset();
  }
  std::string saved;
  bool had;
};

struct ResponseFixture : ::testing::Test {
  Session session;
  Page page{PageRequest{.url = "/r.asp"}, session};
  Object response = Object(page.ContextObject()->Response());
  Response& r = page.Response();
};

TEST_F(ResponseFixture, StatusTakesACodeWithOrWithoutItsText) {
  // clang-format off
  struct { const char* set; int code; const char* line; } cases[] = {
      {"404 Not Found",   404, "404 Not Found"},
      {"401",             401, "401 Unauthorized"},
      {" 299 Custom ",    299, "299 Custom"},
  };
  // clang-format on
  for (const auto& c : cases) {
    response.Put("Status", Variant(c.set));
    EXPECT_EQ(r.Status(), c.code);
    EXPECT_EQ(response.Get("Status").ToString(), c.line);
  }
  for (const char* bad : {"", "OK", "20", "2000 x", "099"})
    EXPECT_EQ(ErrorNumber([&] { response.Put("Status", Variant(bad)); }), 5) << bad;
}

TEST_F(ResponseFixture, CookiesAndExpiryBecomeHeaders) {
  UtcZone utc;
  PutIndexed(response, "Cookies", {Variant("name"), Variant("张 三")});
  Object prefs = response.Invoke("Cookies", {Variant("prefs")}).ToObject();
  PutIndexed(prefs, "Item", {Variant("lang"), Variant("zh")});
  PutIndexed(prefs, "Item", {Variant("size"), Variant("a&b")});
  prefs.Put("Expires", Variant::Date(2027, 1, 2, 3, 4, 5));
  prefs.Put("Path", Variant("/app"));
  prefs.Put("HttpOnly", Variant(true));
  EXPECT_TRUE(prefs.Get("HasKeys").ToBool());
  response.Put("ExpiresAbsolute", Variant::Date(2027, 1, 2));
  response.Put("CacheControl", Variant("private"));
  response.Invoke("AddHeader", {Variant("X-One"), Variant("1")});
  EXPECT_THAT(r.ReplyHeaders(),
              ElementsAre(Pair("X-One", "1"), Pair("Expires", "Sat, 02 Jan 2027 00:00:00 GMT"),
                          Pair("Cache-Control", "private"), Pair("Set-Cookie", "name=%D5%C5+%C8%FD; path=/"),
                          Pair("Set-Cookie",
                               "prefs=lang=zh&size=a%26b; expires=Sat, 02 Jan 2027 03:04:05 GMT; path=/app; "
                               "HttpOnly")));
  // Expires in minutes counts from now.
  SetClock([] { return std::chrono::system_clock::from_time_t(24 * 3600); });
  response.Put("Expires", Variant(int16_t{90}));
  SetClock(nullptr);
  EXPECT_THAT(r.ReplyHeaders()[1], Pair("Expires", "Fri, 02 Jan 1970 01:30:00 GMT"));
  EXPECT_EQ(response.Get("Expires").ToLong(), 90);
}

TEST_F(ResponseFixture, CodePageAndCharsetShapeTheReply) {
  // clang-format off
  struct { const char* contentType; const char* charset; int codePage; const char* header; std::string body; } cases[] = {
      {"text/html",       "",         936,   "text/html; charset=gbk",      "\xD6\xD0"},
      {"text/html",       "gb2312",   936,   "text/html; charset=gb2312",   "\xD6\xD0"},
      {"text/plain",      "",         65001, "text/plain; charset=utf-8",   "中"},
      {"text/xml; charset=x", "",     65001, "text/xml; charset=x",         "中"},
      {"image/png",       "",         936,   "image/png",                   "\xD6\xD0"},
  };
  // clang-format on
  response.Invoke("Write", {Variant("中")});
  for (const auto& c : cases) {
    response.Put("ContentType", Variant(c.contentType));
    response.Put("Charset", Variant(c.charset));
    response.Put("CodePage", Variant(c.codePage));
    EXPECT_EQ(r.ReplyContentType(), c.header);
    EXPECT_EQ(r.ReplyBody(), c.body) << c.header;
  }
  EXPECT_EQ(ErrorNumber([&] { response.Put("CodePage", Variant(1234)); }), 5);
}

TEST_F(ResponseFixture, ClearEndAndAScriptsRedirect) {
  response.Invoke("Write", {Variant("dropped")});
  response.Invoke("Clear");
  response.Invoke("Write", {Variant("kept")});
  EXPECT_THROW(response.Invoke("End"), PageEnd);
  EXPECT_TRUE(r.Ended());
  EXPECT_EQ(r.Output(), "kept");
  // A script's Redirect replaces the page with a pointer to the new place, and ends it.
  EXPECT_THROW(response.Invoke("Redirect", {Variant("/b.asp?q=<x>")}), PageEnd);
  EXPECT_EQ(r.Status(), 302);
  EXPECT_THAT(r.ReplyHeaders().back(), Pair("Location", "/b.asp?q=<x>"));
  EXPECT_THAT(r.Output(), HasSubstr("<a HREF=\"/b.asp?q=&lt;x&gt;\">here</a>"));
  EXPECT_THAT(r.Output(), ::testing::Not(HasSubstr("kept")));
  // The C++ call only sets the redirection: the page goes on.
  r.Redirect("/c.asp");
  EXPECT_EQ(r.RedirectLocation(), "/c.asp");
}

TEST_F(ResponseFixture, AppendToLogKeepsLinesForTheHostAndNoneForThePage) {
  response.Invoke("AppendToLog", {Variant("refused: id")});
  response.Invoke("Clear");
  response.Invoke("AppendToLog", {Variant(int32_t{7})});
  EXPECT_THAT(r.LogEntries(), ElementsAre("refused: id", "7"));
  EXPECT_EQ(r.Output(), "");
}

}  // namespace
}  // namespace corvane::host
