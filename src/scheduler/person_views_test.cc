#include <gtest/gtest.h>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

// Each cell of a row of day cells, without its "</td>".
std::vector<std::string> Cells(const std::string& row) {
  std::vector<std::string> out;
  size_t from = 0;
  for (size_t at; (at = row.find("</td>", from)) != std::string::npos; from = at + 5)
    out.push_back(row.substr(from, at - from));
  EXPECT_EQ(from, row.size()) << "text after the last cell";
  return out;
}

class PersonViews : public SchedulerTest {
 protected:
  void SetUp() override {
    SchedulerTest::SetUp();
    db.Run({"insert into person values (1,'张三',1,1),(2,'李四',2,1)"});
    AddPlans(db, {
        {1, "2026-10-30", "2026-11-02", 3, 3, 1},                    // across two months
        {1, "2026-11-03 09:00:00", "2026-11-04 18:00:00", 2, 2, 1},
        {1, "2026-11-05", "2026-11-05", 4, 4, 0},                    // private
        {1, "2026-11-05 08:00:00", "2026-11-06 07:00:00", 5, 1, 1},  // ends before its start time
        {2, "2026-11-04", "2026-11-04", 2, 2, 1},
    });
  }
};

TEST_F(PersonViews, WeekCellsRunMondayToSundayWithPublicPlansOnly) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 4), id(1);
  EXPECT_EQ(s.DispPersonWeek(dt, id).Text(),
            "<td class='sch3' >外地:上海\r\n</td>"   // Mon 2nd: the plan from October
            "<td class='sch2' >北京:海淀\r\n</td>"
            "<td class='sch2' >北京:海淀\r\n</td>"
            "<td class='sch5' >其他:总部\r\n</td>"   // Thu 5th: the private plan is left out
            "<td class='sch' ></td>"                 // Fri 6th: 08:00 + 1 day is after 07:00
            "<td class='sch' ></td>"
            "<td class='sch' ></td>");
}

TEST_F(PersonViews, APlanAcrossTwoMonthsInAWeekOfDaysOneToSeven) {
  AddPlans(db, {{2, "2026-05-30", "2026-06-02", 3, 3, 1}});  // June 1st is a Monday
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 6, 3), id(2);
  std::vector<std::string> cells = Cells(s.DispPersonWeek(dt, id).Text());
  ASSERT_EQ(cells.size(), 7u);
  EXPECT_EQ(cells[0], "<td class='sch3' >外地:上海\r\n");
  EXPECT_EQ(cells[1], "<td class='sch3' >外地:上海\r\n");
  for (size_t i = 2; i < 7; ++i) EXPECT_EQ(cells[i], "<td class='sch' >");
  // Its May 30th and 31st went into the slots of days 30 and 31: June's month row shows it on the 30th.
  std::vector<std::string> month = Cells(s.DispPersonMonth(dt, id).Text());
  ASSERT_EQ(month.size(), 30u);
  EXPECT_EQ(month[0], "<td title='外地:上海\r\n' class='sch3' >&nbsp;");
  EXPECT_EQ(month[2], "<td title='' class='sch' >&nbsp;");
  EXPECT_EQ(month[29], "<td title='外地:上海\r\n' class='sch3' >&nbsp;");
}

TEST_F(PersonViews, MonthCellsOnePerDayWithPlansInTheTooltip) {
  scheduler& s = Open();
  struct { Variant date; size_t cells; } months[] = {
      {Variant::Date(2024, 2, 10), 29}, {Variant::Date(2026, 2, 27), 28},
      {Variant::Date(2026, 11, 30), 30}, {Variant("2026-12-01"), 31}, {Variant::Date(2027, 1, 31), 31}};
  Variant id(1);
  for (auto& m : months) EXPECT_EQ(Cells(s.DispPersonMonth(m.date, id).Text()).size(), m.cells);

  Variant nov = Variant::Date(2026, 11, 15);
  std::vector<std::string> cells = Cells(s.DispPersonMonth(nov, id).Text());
  EXPECT_EQ(cells[0], "<td title='外地:上海\r\n' class='sch3' >&nbsp;");
  EXPECT_EQ(cells[2], "<td title='北京:海淀\r\n' class='sch2' >&nbsp;");
  EXPECT_EQ(cells[4], "<td title='其他:总部\r\n' class='sch5' >&nbsp;");
  EXPECT_EQ(cells[5], "<td title='' class='sch' >&nbsp;");
  // The plan's October 30th lands in slot 30: November 30th shows it too.
  EXPECT_EQ(cells[29], "<td title='外地:上海\r\n' class='sch3' >&nbsp;");
}

TEST_F(PersonViews, PlanQueryIsTracedInDebugMode) {
  scheduler& s = Open();
  s.DebugMode();
  Variant dt = Variant::Date(2026, 11, 4), id(1);
  s.DispPersonWeek(dt, id);
  std::vector<std::string> writes = page->Writes();
  ASSERT_EQ(writes.size(), 2u);
  EXPECT_EQ(writes[1],
            "<span id=debugID style='display:none'>"
            "select planID,planStartTime,planEndTime,Type1ID=personPlan.planAddrTypeID,"
            "Type1=planAddrType.planAddrTypeName,Type2=planAddr.planAddrName,planAddrDetail,planTypeID,"
            "planContent,planAddition,planFlagID from personPlan,planAddrType,planAddr where "
            "personPlan.planAddrTypeID=planAddrType.planAddrTypeID and "
            "personPlan.planAddrID=planAddr.planAddrID and personID=1 and planEndTime>='2026-11-02' "
            "and planStartTime<='2026-11-08'  and planFlagID=1 order by planStartTime</span>");
  EXPECT_EQ(page->End().size(), 1u);  // the close's trace line comes after the response is let go
}

TEST_F(PersonViews, WeekListWholeOutput) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 4), id(1);
  auto row = [](const std::string& name, const std::string& date, const std::string& plans) {
    return "<tr><td class='schh' nowrap><br>星期" + name + "<br>&nbsp;" + date +
           "&nbsp;<br><td></td><td width=100% class=td1 onclick=manage('" + date + "');>&nbsp;" + plans +
           "</td></tr>";
  };
  EXPECT_EQ(s.DispWeek(dt, id).Text(),
            "<table cellspadding=2 cellspacing=1 width=100% >\r\n" +
                row("一", "2026-11-02", "<span class=Outside style='width:100%;'> 1.外地:上海&nbsp;</span><br>") +
                row("二", "2026-11-03", "") +  // the plan starts at 09:00, after this midnight
                row("三", "2026-11-04", "<span class=Beijing style='width:100%;'> 1.北京:海淀&nbsp;</span><br>") +
                row("四", "2026-11-05", "<span class=Aboad style='width:100%;'> 1.国外:东京&nbsp;</span><br>") +
                row("五", "2026-11-06", "<span class=Office style='width:100%;'> 1.其他:总部&nbsp;</span><br>") +
                row("六", "2026-11-07", "") + row("日", "2026-11-08", "") + "</table>\r\n");
}

TEST_F(PersonViews, WeekListOfAnotherPersonAndOfAMondayGivenAsText) {
  session.Set("personID", Variant(2));
  scheduler& s = Open();
  Variant id(1), monday("2026/11/5");  // not a Monday: stepped back to a Date
  std::string other = s.DispWeek(monday, id).Text();
  EXPECT_EQ(Count(other, "国外"), 0u);  // the private plan is someone else's now
  EXPECT_NE(other.find("manage('2026-11-02');"), std::string::npos);

  Variant text("2026/11/2");  // a Monday: shown and queried exactly as given
  std::string list = s.DispWeek(text, id).Text();
  EXPECT_NE(list.find("<br>星期一<br>&nbsp;2026/11/2&nbsp;<br><td></td><td width=100% class=td1 "
                      "onclick=manage('2026/11/2');>&nbsp;</td></tr>"),
            std::string::npos);
  EXPECT_NE(list.find("<br>星期二<br>&nbsp;2026-11-03&nbsp;"), std::string::npos);
}

TEST_F(PersonViews, NameAndDutyOrUnnamed) {
  scheduler& s = Open();
  Variant known(1), unknown(9);
  EXPECT_EQ(s.GetName(known).Text(), "张三-经理");
  EXPECT_EQ(s.GetName(unknown).Text(), "未名");
}

}  // namespace
}  // namespace corvane::scheduling::testing
