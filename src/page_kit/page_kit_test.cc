// The page kit: the trace line and the connection routines every component shares.
#include "page_kit/page_kit.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace corvane::page_kit {
namespace {

TEST(TraceLine, IsOneHiddenSpan) {
  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp"}, session);
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
  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp"}, session);
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
  host::Session session;
  host::Page page(host::PageRequest{.url = "/t.asp"}, session);
  std::shared_ptr<ado::Connection> conn;
  EXPECT_THROW(OpenConnection(conn, "Provider=Nope;", true, page.ContextObject()->Response()), Error);
  ASSERT_TRUE(conn);
  EXPECT_FALSE(conn->IsOpen());
  EXPECT_TRUE(page.Writes().empty());
}

}  // namespace
}  // namespace corvane::page_kit
