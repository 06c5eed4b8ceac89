#include <gtest/gtest.h>

#include <map>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

// Staff of system 1: 张三 (经理), 李四 and 赵六 (职员); 王五 is in system 2.
class LeaderViews : public SchedulerTest {
 protected:
  void SetUp() override {
    SchedulerTest::SetUp();
    db.Run({"insert into person values (2,'李四',2,1),(1,'张三',1,1),(3,'王五',2,2),(4,'赵六',2,1)"});
    AddPlans(db, {
        {1, "2026-11-03", "2026-11-03", 2, 2, 1},
        {2, "2026-11-05", "2026-11-06", 3, 3, 1},
        {2, "2026-11-04", "2026-11-04", 4, 4, 0},  // private: leaders do not see it
        {3, "2026-11-03", "2026-11-03", 2, 2, 1},
    });
  }
  Variant cond{"person.personID<>4"};
};

const std::string kEmptyWeekCell = "<td class='sch' ></td>";
const std::string kEmptyMonthCell = "<td title='' class='sch' >&nbsp;</td>";

TEST_F(LeaderViews, WeekWholeOutput) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 4);
  std::string e = kEmptyWeekCell;
  EXPECT_EQ(s.DispLeaderWeek(dt, cond).Text(),
            "<table cellspadding=0 cellspacing=1 width=100% height=85%>\r\n"
            "<tr class='schh'><th height='23' nowrap>姓名</th>"
            "<th height='23' nowrap>星期一<br>2026-11-02</th><th height='23' nowrap>星期二<br>2026-11-03</th>"
            "<th height='23' nowrap>星期三<br>2026-11-04</th><th height='23' nowrap>星期四<br>2026-11-05</th>"
            "<th height='23' nowrap>星期五<br>2026-11-06</th><th height='23' nowrap>星期六<br>2026-11-07</th>"
            "<th height='23' nowrap>星期日<br>2026-11-08</th></tr>\r\n"
            "<tr><td class=td2 nowrap>张三</td>" + e + "<td class='sch2' >北京:海淀\r\n</td>" + e + e + e + e + e +
            "</tr>\r\n"
            "<tr><td class=td2 nowrap>李四</td>" + e + e + e + "<td class='sch3' >外地:上海\r\n</td>"
            "<td class='sch3' >外地:上海\r\n</td>" + e + e + "</tr>\r\n");
}

std::string MonthRow(const std::string& name, int days, const std::map<int, std::string>& cells) {
  std::string row = "<tr><td class=td2 nowrap>" + name + "</td>";
  for (int d = 1; d <= days; ++d) row += cells.count(d) ? cells.at(d) : kEmptyMonthCell;
  return row + "</tr>\r\n";
}

TEST_F(LeaderViews, MonthWholeOutput) {
  scheduler& s = Open();
  Variant dt("2026-11-20");
  const std::string shanghai = "<td title='外地:上海\r\n' class='sch3' >&nbsp;</td>";
  EXPECT_EQ(s.DispLeaderMonth(dt, cond).Text(),
            "<table cellspadding=0 cellspacing=1 width=100% >\r\n"
            "<tr class='schh'><th nowrap>姓&nbsp;&nbsp;名</th>"
            "<th height='23' nowrap>1<br>日</th><th height='23' nowrap>2<br>一</th><th height='23' nowrap>3<br>二</th>"
            "<th height='23' nowrap>4<br>三</th><th height='23' nowrap>5<br>四</th><th height='23' nowrap>6<br>五</th>"
            "<th height='23' nowrap>7<br>六</th><th height='23' nowrap>8<br>日</th><th height='23' nowrap>9<br>一</th>"
            "<th height='23' nowrap>10<br>二</th><th height='23' nowrap>11<br>三</th><th height='23' nowrap>12<br>四</th>"
            "<th height='23' nowrap>13<br>五</th><th height='23' nowrap>14<br>六</th><th height='23' nowrap>15<br>日</th>"
            "<th height='23' nowrap>16<br>一</th><th height='23' nowrap>17<br>二</th><th height='23' nowrap>18<br>三</th>"
            "<th height='23' nowrap>19<br>四</th><th height='23' nowrap>20<br>五</th><th height='23' nowrap>21<br>六</th>"
            "<th height='23' nowrap>22<br>日</th><th height='23' nowrap>23<br>一</th><th height='23' nowrap>24<br>二</th>"
            "<th height='23' nowrap>25<br>三</th><th height='23' nowrap>26<br>四</th><th height='23' nowrap>27<br>五</th>"
            "<th height='23' nowrap>28<br>六</th><th height='23' nowrap>29<br>日</th><th height='23' nowrap>30<br>一</th>"
            "</tr>\r\n" +
                MonthRow("张三", 30, {{3, "<td title='北京:海淀\r\n' class='sch2' >&nbsp;</td>"}}) +
                MonthRow("李四", 30, {{5, shanghai}, {6, shanghai}}));
}

TEST_F(LeaderViews, HeadersMatchTheRowsCellForCell) {
  scheduler& s = Open();
  Variant leapFebruary = Variant::Date(2024, 2, 1);
  EXPECT_EQ(Count(s.DispLeaderMonthHeader(leapFebruary).Text(), "<th "), 30u);
  EXPECT_EQ(Count(s.DispLeaderMonthContent(leapFebruary, cond).Text(), "<td "), 2 * 30u);
  Variant mondayText("2026/11/2");  // a Monday given as text is shown as that text
  EXPECT_NE(s.DispLeaderWeekHeader(mondayText).Text().find(
                "星期一<br>2026/11/2</th><th height='23' nowrap>星期二<br>2026-11-03</th>"),
            std::string::npos);
}

TEST_F(LeaderViews, NoMatchingStaffLeavesTheHeaderOnly) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 4), none("1=0");
  EXPECT_EQ(s.DispLeaderWeekContent(dt, none).Text(), "");
  EXPECT_EQ(s.DispLeaderMonth(dt, none).Text(), s.DispLeaderMonthHeader(dt).Text());
  EXPECT_EQ(s.GetMenu(none).Text(), "");
}

TEST_F(LeaderViews, MenuLinesPerPersonInDutyOrder) {
  scheduler& s = Open();
  EXPECT_EQ(s.GetMenu(cond).Text(),
            "outlookbar.additem('张三',t,'../scheduler/personMonth.asp?personID=1&rnd=77');\r\n"
            "outlookbar.additem('李四',t,'../scheduler/personMonth.asp?personID=2&rnd=77');\r\n");
  session.Set("systemID", Variant(2));
  EXPECT_EQ(s.GetMenu(cond).Text(),
            "outlookbar.additem('王五',t,'../scheduler/personMonth.asp?personID=3&rnd=77');\r\n");
}

TEST_F(LeaderViews, MenuTracesTheStaffQuery) {
  scheduler& s = Open();
  s.DebugMode();
  s.GetMenu(cond);
  EXPECT_EQ(page->Writes().back(),
            "<span id=debugID style='display:none'>// select person.personID,person.personName,"
            "person.dutyID,personDuty.dutyName from person,personDuty where  person.DutyID=personDuty.DutyID "
            "and systemID=1 and person.personID<>4 order by person.dutyID </span>");
  EXPECT_EQ(page->End().size(), 1u);
}

TEST_F(LeaderViews, AnEmptyConditionOrNoSystemFailsAtTheDatabase) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 4), empty("");
  for (auto call : {&scheduler::DispLeaderWeek, &scheduler::DispLeaderMonth, &scheduler::DispLeaderWeekContent,
                    &scheduler::DispLeaderMonthContent}) {
    try {
      (s.*call)(dt, empty);
      ADD_FAILURE();
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), Error::kDatabaseError);
    }
  }
  EXPECT_THROW(s.GetMenu(empty), Error);
  session.Set("systemID", Variant());  // as if nobody signed in
  try {
    s.DispLeaderWeek(dt, cond);
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), Error::kDatabaseError);
  }
}

}  // namespace
}  // namespace corvane::scheduling::testing
