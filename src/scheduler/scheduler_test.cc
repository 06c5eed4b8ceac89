#include <gtest/gtest.h>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {

// With debug on, the page end closes the connection after the response is let go: the close's trace
// line raises 91 inside OnEndPage, and the page's end answers it instead of raising. "strURL" is
// stored before that, and the objects created after it are still ended: the later one stores the
// strURL that the page gave it.
TEST_F(SchedulerTest, PageEndStoresTheUrlClosesAndAnswersTheDebugTraceError) {
  const Object& s = Open("/a.asp");
  s.Invoke("DebugMode");
  s.Invoke("openDB");
  s.Invoke("DispPersonWeek", {Variant::Date(2026, 11, 4), Variant(1)});
  s.Invoke("GetMenu", {cond});
  std::string errors;
  for (const host::EndPageError& e : page->End())
    errors += e.className + " " + std::to_string(e.error.Number()) + ";";
  EXPECT_EQ(errors, "scheduler 91;");
  EXPECT_EQ(session.Get("strURL").ToString(), "/a.asp");
  EXPECT_EQ(page->Output(), Expected("debug_page.html"));  // the open's trace, the queries; no close
  EXPECT_NE(ErrorNumber([&] { s.Invoke("GetName", {Variant(1)}); }), 0);  // closed all the same

  Open("/b.asp").Invoke("DebugMode");
  Object later = page->Server().CreateObject("corvane.scheduler");
  later.Invoke("Init", {Variant(db.connectionString)});
  later.Put("strURL", Variant("later.asp"));
  EXPECT_EQ(page->End().size(), 1u);  // the later one closes without debug: no error of its own
  EXPECT_EQ(session.Get("strURL").ToString(), "later.asp");
  EXPECT_EQ(ErrorNumber([] { scheduler().DebugMode(); }), 91);  // no page: no response to trace to
}

// The dispatch ids follow the class module's order: the property strURL, then the methods.
TEST_F(SchedulerTest, LateBoundMembers) {
  const std::vector<std::string> names = Split(
      "strURL,OnStartPage,OnEndPage,DebugMode,Init,openDB,GetFirstMonday,CountWeek,GetPrevMonday,"
      "GetPersonDay,"
      "GetPersonDay2,DispWeek,DispMonth,DispMonthHeader,DispMonthContent,DispPersonWeek,DispPersonMonth,"
      "DispMonthSelect,DispWeekSelect,DispSwitch,DispScript,GetName,SetDispStyle,DispLeaderWeek,"
      "DispLeaderMonth,"
      "DispLeaderWeekHeader,DispLeaderMonthHeader,DispLeaderWeekContent,DispLeaderMonthContent,GetMenu",
      ",");
  const ClassInfo& info = SchedulerClass();
  ASSERT_EQ(info.members.size(), names.size());
  for (int i = 0; i < int(names.size()); ++i)
    EXPECT_EQ(info.DispIdOf(names[i]), i ? 0x60030000 + i : 0x40030000) << names[i];
  EXPECT_EQ(ErrorNumber([&] { Open().Invoke("DispWeek", {Variant("2026-11-04")}); }), 449);  // pID left out
}

}  // namespace corvane::scheduling::testing
