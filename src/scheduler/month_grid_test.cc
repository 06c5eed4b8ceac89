#include <gtest/gtest.h>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

class MonthGrid : public SchedulerTest {
 protected:
  void SetUp() override {
    SchedulerTest::SetUp();
    AddPlans(db, {
        {1, "2026-10-30", "2026-11-02", 3, 3, 1},
        {1, "2026-11-03 09:00:00", "2026-11-04 18:00:00", 2, 2, 1},
        {1, "2026-11-04", "2026-11-04", 4, 4, 1},
        {1, "2026-11-20", "2026-11-20", 3, 3, 0},  // private: not in the grid, even for its owner
    });
  }
};

std::string DayCell(const std::string& date, int day, const std::string& cls, const std::string& plans) {
  return "<td class='" + cls + "' valign='top' onclick=manage('" + date + "');>" + std::to_string(day) +
         "<br><span style='font-size:12px;'>" + plans + "</span></td>";
}

const std::string kGrey = "<td class='sch0'>&nbsp;</td>";

TEST_F(MonthGrid, NovemberStartingOnSundayWholeOutput) {
  scheduler& s = Open();
  Variant dt = Variant::Date(2026, 11, 18), id(1);
  std::vector<std::string> lines = {
      "<table cellspadding=0 cellspacing=1 width=100% height=85%>",
      "<tr class='schh'><th height='23' nowrap>星期一</th><th height='23' nowrap>星期二</th>"
      "<th height='23' nowrap>星期三</th><th height='23' nowrap>星期四</th><th height='23' nowrap>星期五</th>"
      "<th height='23' nowrap>星期六</th><th height='23' nowrap>星期日</th></tr>",
      " <tr height=40>",
      kGrey + kGrey + kGrey + kGrey + kGrey + kGrey + DayCell("2026-11-01", 1, "sch3", "外地:上海<br>"),
      " </tr>",
      " <tr height=40>",
      DayCell("2026-11-02", 2, "sch3", "外地:上海<br>"),
      DayCell("2026-11-03", 3, "sch2", "北京:海淀<br>"),
      DayCell("2026-11-04", 4, "sch4", "北京:海淀<br>国外:东京<br>"),  // the last plan gives the colour
  };
  for (int day = 5; day <= 29; ++day) {
    char date[16];
    std::snprintf(date, sizeof date, "2026-11-%02d", day);
    lines.push_back(DayCell(date, day, "sch", ""));
    if (day % 7 == 1) {  // Sundays close a row
      lines.push_back(" </tr>");
      lines.push_back(" <tr height=40>");
    }
  }
  // Slot 30 still holds the October 30th of the plan that began last month.
  lines.push_back(DayCell("2026-11-30", 30, "sch3", "外地:上海<br>"));
  lines.push_back(kGrey + kGrey + kGrey + kGrey + kGrey + kGrey + " </tr>");
  lines.push_back(" </table>");
  EXPECT_EQ(s.DispMonth(dt, id).Text(), CrLfLines(lines));
  EXPECT_EQ(s.DispMonthHeader().Text() + s.DispMonthContent(dt, id).Text(), CrLfLines(lines));
}

struct GridShape {
  Variant date;
  size_t rows, grey, days;
};

TEST_F(MonthGrid, StartsOnTheMondayOnOrBeforeTheFirstAndEndsWithTheLastDaysWeek) {
  scheduler& s = Open();
  GridShape shapes[] = {
      {Variant::Date(2026, 6, 10), 5, 5, 30},   // the 1st is a Monday: no leading grey day
      {Variant::Date(2027, 2, 14), 4, 0, 28},   // Monday 1st to Sunday 28th: four rows, all days
      {Variant::Date(2024, 2, 29), 5, 6, 29},   // leap February
      {Variant::Date(2026, 2, 1), 5, 7, 28},    // common February starting on Sunday
      {Variant::Date(2026, 1, 20), 5, 4, 31},   // starts in December of the year before
      {Variant::Date(2026, 12, 31), 5, 4, 31},  // ends in January of the next year
      {Variant::Date(2026, 3, 1), 6, 11, 31},
  };
  Variant id(1);
  for (GridShape g : shapes) {
    std::string grid = s.DispMonthContent(g.date, id).Text();
    EXPECT_EQ(Count(grid, " <tr height=40>\r\n"), g.rows) << DebugString(g.date);
    EXPECT_EQ(Count(grid, "<td class='sch0'>&nbsp;</td>"), g.grey) << DebugString(g.date);
    EXPECT_EQ(Count(grid, "' valign='top' onclick=manage('"), g.days) << DebugString(g.date);
    EXPECT_EQ(Count(grid, "<td "), g.rows * 7) << DebugString(g.date);
  }
}

}  // namespace
}  // namespace corvane::scheduling::testing
