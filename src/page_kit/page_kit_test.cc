// The page kit's routines where no component shows them: the components' tests see the trace line,
// the traces of a successful open and close, and the 91 of a detached object.
#include "page_kit/page_kit.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace corvane::page_kit {
namespace {

using testing::ErrorNumber;

TEST(PageKit, AFailedOpenTracesNothingAndKeepsTheUnopenedConnection) {
  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp"}, session);
  std::shared_ptr<ado::Connection> conn;
  auto open = [&] { OpenConnection(conn, "Provider=Nope;", true, page.ContextObject()->Response()); };
  EXPECT_NE(ErrorNumber(open), 0);
  ASSERT_TRUE(conn);
  EXPECT_FALSE(conn->IsOpen());
  EXPECT_TRUE(page.Writes().empty()) << "the open's trace comes only after a successful open";

  PageObjects objects;
  EXPECT_EQ(ErrorNumber([&] { objects.Take(Variant(Object(conn))); }), 424);  // no ScriptingContext
}

TEST(PageKit, ASecondCloseHasNothingToCloseButStillTraces) {
  testing::ScratchDatabase db;
  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp"}, session);
  std::shared_ptr<ado::Connection> conn;
  OpenConnection(conn, db.connectionString, false, page.ContextObject()->Response());
  for (int i = 0; i < 2; ++i) CloseConnection(conn, true, page.ContextObject()->Response());
  EXPECT_EQ(page.Output(),
            TraceLine("##调试信息:关闭数据库 OK!<br>\r\n") + TraceLine("##调试信息:关闭数据库 OK!<br>\r\n"));
}

}  // namespace
}  // namespace corvane::page_kit
