// Request as scripts reach it: named values, the collections without a name, cookies and the default
// member.
#include <gtest/gtest.h>

#include "corvane/host.h"
#include "test_support.h"

namespace corvane::host {
namespace {

using testing::ErrorNumber;

struct RequestFixture : ::testing::Test {
  Session session;
  Page page{PageRequest{.url = "/d/p.asp",
                        .queryString = "a=1&b=2&a=3&x=q",
                        .contentType = "application/x-www-form-urlencoded",
                        .body = "f=%D6%D0&x=form",
                        .serverVariables = {{"REMOTE_ADDR", "127.0.0.1"},
                                            {"HTTP_COOKIE", "theme=dark; who=%D6%D0+x; x=cookie"}}},
            session};
  Object request = Object(page.ContextObject()->Request());

  Variant Call(std::string_view member, Args args = {}) const { return request.Invoke(member, args); }
  Object Collection(std::string_view member) const { return Call(member).ToObject(); }
};

TEST_F(RequestFixture, NamedValuesByNameOrPosition) {
  // clang-format off
  struct { const char* member; Variant arg; const char* expected; } cases[] = {
      {"QueryString", Variant("A"),        "1, 3"},
      {"QueryString", Variant(int16_t{2}), "2"},       // the second distinct name
      {"Form",        Variant("f"),        "中"},
      {"Form",        Variant("none"),     ""},
      {"Cookies",     Variant("who"),      "中 x"},
      {"Cookies",     Variant("THEME"),    "dark"},
      {"ServerVariables", Variant("remote_addr"), "127.0.0.1"},
      {"ServerVariables", Variant("URL"),  "/d/p.asp"},
      // Request("x"): QueryString before Form before Cookies before ServerVariables.
      {"Item",        Variant("x"),        "q"},
      {"Item",        Variant("theme"),    "dark"},
      {"Item",        Variant("REQUEST_METHOD"), "POST"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(Call(c.member, {c.arg}).Text(), c.expected) << c.member;
  EXPECT_TRUE(Call("Item", {Variant("nowhere")}).IsEmpty());
  EXPECT_EQ(ErrorNumber([&] { Call("Form", {Variant(int16_t{3})}); }), 9);
}

TEST_F(RequestFixture, CollectionsCountNameAndWalkTheirNames) {
  Object query = Collection("QueryString");
  EXPECT_EQ(query.Get("Count").ToLong(), 3);  // a, b, x: a repeated name counts once
  EXPECT_EQ(query.Invoke("Key", {Variant(int16_t{3})}).ToString(), "x");
  EXPECT_EQ(query.Invoke("Item", {Variant("a")}).ToString(), "1, 3");
  std::vector<Variant> names = query.get()->Elements();
  ASSERT_EQ(names.size(), 3u);
  EXPECT_EQ(names[1].ToString(), "b");
  // Read as a value (the default member without arguments), Form and QueryString are the raw text.
  Args none;
  EXPECT_EQ(query.Invoke(0, none, InvokeKind::PropertyGet).ToString(), "a=1&b=2&a=3&x=q");
  EXPECT_EQ(Collection("Form").Invoke(0, none, InvokeKind::PropertyGet).ToString(), "f=%D6%D0&x=form");
  EXPECT_EQ(Collection("Cookies").Get("Count").ToLong(), 3);
  EXPECT_GE(Collection("ServerVariables").Get("Count").ToLong(), 9);
  EXPECT_EQ(ErrorNumber([&] { query.Invoke("Key", {Variant(int16_t{0})}); }), 9);
}

// The collection keeps its request alive after the page is gone.
TEST(RequestCollection, OutlivesItsPage) {
  Object form;
  {
    Session session;
    Page page(PageRequest{.url = "/x.asp", .queryString = "k=v"}, session);
    form = Object(page.ContextObject()->Request()).Get("QueryString").ToObject();
  }
  EXPECT_EQ(form.Invoke("Item", {Variant("k")}).ToString(), "v");
}

}  // namespace
}  // namespace corvane::host
