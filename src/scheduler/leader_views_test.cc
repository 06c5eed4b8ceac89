#include <gtest/gtest.h>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {

// System 1 but 赵六, by duty: 张三, then 李四, with public plans only; the menu the same staff. The
// condition and "systemID" go into the staff query as they are: empty, they leave it broken.
TEST_F(SchedulerTest, LeaderViewsAndStaffMenu) {
  const Object& s = Open();
  Variant wednesday = Variant::Date(2026, 11, 4), none("1=0"), empty("");
  EXPECT_EQ(s.Invoke("DispLeaderWeek", {wednesday, cond}).Text(), Expected("leader_week.html"));
  EXPECT_EQ(s.Invoke("DispLeaderMonth", {Variant("2026-11-20"), cond}).Text(), Expected("leader_month.html"));
  EXPECT_EQ(s.Invoke("GetMenu", {cond}).Text(),
            "outlookbar.additem('张三',t,'../scheduler/personMonth.asp?personID=1&rnd=77');\r\n"
            "outlookbar.additem('李四',t,'../scheduler/personMonth.asp?personID=2&rnd=77');\r\n");
  EXPECT_EQ(s.Invoke("DispLeaderWeekContent", {wednesday, none}).Text(), "");
  EXPECT_EQ(s.Invoke("DispLeaderMonth", {wednesday, none}), s.Invoke("DispLeaderMonthHeader", {wednesday}));
  EXPECT_EQ(s.Invoke("DispLeaderWeek", {wednesday, none}), s.Invoke("DispLeaderWeekHeader", {wednesday}));
  EXPECT_EQ(ErrorNumber([&] {
              s.Invoke("DispLeaderMonthContent", {wednesday, empty});
            }),
            Error::kDatabaseError);
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("GetMenu", {empty}); }), Error::kDatabaseError);
  session.Set("systemID", Variant());
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("DispLeaderWeek", {wednesday, cond}); }), Error::kDatabaseError);
}

}  // namespace corvane::scheduling::testing
