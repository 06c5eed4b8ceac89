#include <gtest/gtest.h>

#include <set>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

const std::string kTraceOpen = "<span id=debugID style='display:none'>";

TEST_F(SchedulerTest, PageAttachmentKeepsTheUrlAndStoresItAtTheEnd) {
  page = std::make_unique<host::Page>(host::PageRequest{.url = "/scheduler/personWeek.asp"}, session, corvane::testing::LibraryHost());
  obj = page->Server().CreateObject("corvane.scheduler");
  EXPECT_EQ(obj.Get("strURL").ToString(), "/scheduler/personWeek.asp");
  obj.Put("strURL", Variant("changed.asp"));  // the page may change it; the end stores it anyway
  EXPECT_EQ(obj.As<scheduler>()->strURL, "changed.asp");
  page->End();
  EXPECT_EQ(session.Get("strURL").ToString(), "changed.asp");
  EXPECT_TRUE(page->Writes().empty());
}

TEST_F(SchedulerTest, DebugModeTracesEntryOpenAndNothingBefore) {
  page = std::make_unique<host::Page>(host::PageRequest{.url = "/a.asp"}, session, corvane::testing::LibraryHost());
  obj = page->Server().CreateObject("corvane.scheduler");
  Variant conn(db.connectionString);
  obj.Invoke("DebugMode");
  obj.Invoke("Init", {conn});
  EXPECT_EQ(page->Writes(), (std::vector<std::string>{
                                kTraceOpen + "##调试信息:进入调试模式<br>\r\n</span>",
                                kTraceOpen + "##调试信息:打开数据库 OK!<br>\r\n</span>",
                            }));
  // The close at page end comes after the host objects are let go: its trace line has no response
  // to go to. The connection is closed all the same and "strURL" is stored; the page host hears of
  // the error and keeps the page.
  std::vector<host::EndPageError> errors = page->End();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].className, "scheduler");
  EXPECT_EQ(errors[0].error.Number(), 91);
  EXPECT_EQ(session.Get("strURL").ToString(), "/a.asp");
  EXPECT_EQ(page->Writes().size(), 2u);
}

TEST_F(SchedulerTest, AFailingPageEndDoesNotSkipTheObjectsAfterIt) {
  page = std::make_unique<host::Page>(host::PageRequest{.url = "/a.asp"}, session, corvane::testing::LibraryHost());
  Object first = page->Server().CreateObject("corvane.scheduler");
  Object second = page->Server().CreateObject("corvane.scheduler");
  Variant conn(db.connectionString);
  first.Invoke("DebugMode");  // its end fails on the close's trace line
  second.Invoke("Init", {conn});
  second.Put("strURL", Variant("second.asp"));
  EXPECT_EQ(page->End().size(), 1u);
  EXPECT_EQ(session.Get("strURL").ToString(), "second.asp");
  EXPECT_THROW(second.Invoke("GetName", {Variant(1)}), Error);  // its connection was closed
}

TEST_F(SchedulerTest, WithoutAPageThereIsNothingToTraceTo) {
  scheduler s;
  try {
    s.DebugMode();
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 91);
  }
}

TEST_F(SchedulerTest, ConnectionClosesAtPageEnd) {
  scheduler& s = Open();
  Variant id(1);
  EXPECT_EQ(s.GetName(id).Text(), "未名");
  page->End();
  EXPECT_THROW(s.GetName(id), Error);  // closed and released at the end
  page.reset();
}

TEST_F(SchedulerTest, BadConnectionStringFailsTheOpen) {
  page = std::make_unique<host::Page>(host::PageRequest{.url = "/a.asp"}, session, corvane::testing::LibraryHost());
  obj = page->Server().CreateObject("corvane.scheduler");
  Variant bad("Provider=NoSuchThing;Data Source=/nonexistent/x.db");
  EXPECT_THROW(obj.Invoke("Init", {bad}), Error);
  Variant nul = Variant::Null();
  try {
    obj.Invoke("Init", {nul});
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 94);
  }
  // The failed open left its unopened connection in place; the close at page end tries to close it.
  std::vector<host::EndPageError> errors = page->End();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].error.Number(), 3704);
}

TEST_F(SchedulerTest, LateBoundCallsReachEveryMember) {
  db.Run({"insert into person values (1,'张三',1,1)"});
  AddPlans(db, {{1, "2026-11-03", "2026-11-03", 2, 2, 1}});
  scheduler& s = Open("/p.asp");
  Variant dt("2026-11-03"), id(1), cond("1=1"), which("w"), type(2);
  Object o = obj;

  EXPECT_EQ(o.Invoke("GetFirstMonday", {dt}).Text(), "2026-10-26");
  EXPECT_EQ(o.Invoke("CountWeek", {dt}).ToLong(), 2);
  EXPECT_EQ(o.Invoke("getprevmonday", {dt}).Text(), "2026-11-02");
  EXPECT_EQ(o.Invoke("GetPersonDay", {dt, id}), s.GetPersonDay(dt, id));
  EXPECT_EQ(o.Invoke("GetPersonDay2", {dt, id}), s.GetPersonDay2(dt, id));
  EXPECT_EQ(o.Invoke("DispWeek", {dt, id}), s.DispWeek(dt, id));
  EXPECT_EQ(o.Invoke("DispMonth", {dt, id}), s.DispMonth(dt, id));
  EXPECT_EQ(o.Invoke("DispMonthHeader"), s.DispMonthHeader());
  EXPECT_EQ(o.Invoke("DispMonthContent", {dt, id}), s.DispMonthContent(dt, id));
  EXPECT_EQ(o.Invoke("DispPersonWeek", {dt, id}), s.DispPersonWeek(dt, id));
  EXPECT_EQ(o.Invoke("DispPersonMonth", {dt, id}), s.DispPersonMonth(dt, id));
  EXPECT_EQ(o.Invoke("DispScript", {id}), s.DispScript(id));
  EXPECT_EQ(o.Invoke("GetName", {id}).Text(), "张三-经理");
  EXPECT_EQ(o.Invoke("DispLeaderWeek", {dt, cond}), s.DispLeaderWeek(dt, cond));
  EXPECT_EQ(o.Invoke("DispLeaderMonth", {dt, cond}), s.DispLeaderMonth(dt, cond));
  EXPECT_EQ(o.Invoke("DispLeaderWeekHeader", {dt}), s.DispLeaderWeekHeader(dt));
  EXPECT_EQ(o.Invoke("DispLeaderMonthHeader", {dt}), s.DispLeaderMonthHeader(dt));
  EXPECT_EQ(o.Invoke("DispLeaderWeekContent", {dt, cond}), s.DispLeaderWeekContent(dt, cond));
  EXPECT_EQ(o.Invoke("DispLeaderMonthContent", {dt, cond}), s.DispLeaderMonthContent(dt, cond));
  EXPECT_EQ(o.Invoke("GetMenu", {cond}), s.GetMenu(cond));
  SetClock([] { return std::chrono::system_clock::time_point{}; });  // one Timer for both calls
  EXPECT_EQ(o.Invoke("DispMonthSelect", {dt, id}), s.DispMonthSelect(dt, id));
  EXPECT_EQ(o.Invoke("DispWeekSelect", {dt, id}), s.DispWeekSelect(dt, id));
  EXPECT_EQ(o.Invoke("DispSwitch", {dt, id, which}), s.DispSwitch(dt, id, which));
  SetClock(nullptr);
  o.Invoke("SetDispStyle", {type});
  EXPECT_EQ(page->Writes().back(), "");
  o.Invoke("openDB");  // a second open replaces the connection
  EXPECT_EQ(o.Invoke("GetName", {id}).Text(), "张三-经理");
}

TEST_F(SchedulerTest, LateBoundArgumentsAndDispatchIds) {
  scheduler& s = Open();
  Object o = obj;
  try {
    o.Invoke("DispWeek", {Variant("2026-11-03")});  // pID left out
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 449);
  }
  EXPECT_THROW(o.Invoke("NoSuchMethod"), Error);

  const ClassInfo& info = s.Info();
  EXPECT_EQ(info.DispIdOf("strURL"), 0x40030000);
  EXPECT_EQ(info.DispIdOf("OnStartPage"), 0x60030001);
  EXPECT_EQ(info.DispIdOf("openDB"), 0x60030005);
  EXPECT_EQ(info.DispIdOf("GetMenu"), 0x6003001D);
  std::set<int32_t> ids;
  for (const MemberInfo& m : info.members) EXPECT_TRUE(ids.insert(m.dispid).second) << m.name;
  EXPECT_EQ(ids.size(), 30u);
  Args none;
  EXPECT_EQ(o.Invoke(0x40030000, none, InvokeKind::PropertyGet).ToString(), "/scheduler/personMonth.asp");

  Object byClsid = CreateObject("{219488BB-443E-45C6-8794-6DEC25A5921F}");
  EXPECT_TRUE(byClsid.As<scheduler>() != nullptr);
  EXPECT_EQ(FindClass("Corvane.Scheduler"), &SchedulerClass());
}

}  // namespace
}  // namespace corvane::scheduling::testing
