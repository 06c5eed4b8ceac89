#include <gtest/gtest.h>

#include <tuple>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {

// The week list is the owner's (every flag, a plan from its start time on); the range views show
// public plans only, by day of month: the October 30th of the plan across the month end is on
// November 30th of the grid, and the plan ending at 07:00 on the 6th does not mark the 6th.
TEST_F(SchedulerTest, WeekListMonthGridAndName) {
  const Object& s = Open();
  Variant wednesday = Variant::Date(2026, 11, 4), november = Variant::Date(2026, 11, 18), id(1);
  EXPECT_EQ(s.Invoke("DispWeek", {wednesday, id}).Text(), Expected("week_list.html"));
  EXPECT_EQ(s.Invoke("DispMonth", {november, id}).Text(), Expected("month_grid.html"));
  EXPECT_EQ(s.Invoke("GetName", {id}).Text(), "张三-经理");
  EXPECT_EQ(s.Invoke("GetName", {Variant(9)}).Text(), "未名");
}

// The grid runs from the Monday on or before the 1st (into the year before for January) through
// the week of the last day (into the next year for December); a February starting on Monday fills
// four rows. A person's month row and the leader header have a cell for each day of the month.
TEST_F(SchedulerTest, MonthShapes) {
  const Object& s = Open();
  struct Shape {
    Variant date;
    long days, rows, grey;
  } shapes[] = {{Variant("2027-02-14"), 28, 4, 0},
                {Variant("2024-02-29"), 29, 5, 6},
                {Variant("2026-01-20"), 31, 5, 4},
                {Variant("2026-12-31"), 31, 5, 4},
                {Variant::Date(2026, 3, 1), 31, 6, 11}};
  for (const Shape& m : shapes) {
    std::string grid = s.Invoke("DispMonthContent", {m.date, Variant(1)}).Text();
    EXPECT_EQ(std::tuple(Count(grid, " <tr height=40>"), Count(grid, "'sch0'"), Count(grid, "onclick"),
                         Count(s.Invoke("DispPersonMonth", {m.date, Variant(1)}).Text(), "<td "),
                         Count(s.Invoke("DispLeaderMonthHeader", {m.date}).Text(), "<th ")),
              std::tuple(m.rows, m.grey, m.days, m.days, m.days + 1))
        << DebugString(m.date);
  }
}

// The selects link to the strURL property, not the page's URL. Month steps clamp the day (January
// 31st + 1 month = February 29th); a Monday (November 30th) is still in week 5; the time is kept.
// The tab strip answers the six page kinds exactly as written, and nothing else.
TEST_F(SchedulerTest, PeriodSelectsAndTabStrips) {
  const Object& s = Open("/cal/p.asp");
  s.Put("strURL", Variant("other.asp"));
  Variant id(5);
  EXPECT_EQ(s.Invoke("DispMonthSelect", {Variant::Date(2024, 1, 31), id}).Text(),
            Expected("month_select.html"));
  Variant monday = Variant::Date(2026, 11, 30, 9, 15);
  EXPECT_EQ(s.Invoke("DispWeekSelect", {monday, id}).Text(), Expected("week_select.html"));
  const std::pair<Variant, const char*> cases[] = {{Variant("m"), "switch_m.html"},
                                                   {Variant("lm"), "switch_lm.html"},
                                                   {Variant("lm2"), "switch_lm2.html"},
                                                   {Variant("w"), "switch_w.html"},
                                                   {Variant("lw"), "switch_lw.html"},
                                                   {Variant("lw2"), "switch_lw2.html"},
                                                   {Variant("M"), nullptr},
                                                   {Variant(""), nullptr},
                                                   {Variant("w "), nullptr}};
  for (auto [which, golden] : cases)
    EXPECT_EQ(s.Invoke("DispSwitch", {Variant("2026-11-04"), id, which}).Text(),
              golden ? Expected(golden) : "")
        << DebugString(which);
}

// manage(dt) opens the editor on one's own calendar only; the ids compare as numbers.
TEST_F(SchedulerTest, ScriptAndStyleSheet) {
  const Object& s = Open();
  const std::string head = "<script language='javascript'>\r\n function manage(dt){\r\n";
  const std::string tail = "}\r\n</script>\r\n";
  const std::string own = head + "     location.href='manage.asp?personID=1&dt='+dt+'&rnd=77';" + tail;
  const std::pair<Variant, std::string> cases[] = {
      {Variant(1), own}, {Variant("1"), own}, {Variant(2), head + tail}, {Variant::Null(), head + tail}};
  for (auto [id, expected] : cases)
    EXPECT_EQ(s.Invoke("DispScript", {id}).Text(), expected) << DebugString(id);
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("DispScript", {Variant("me")}); }), 13);

  // Type 1 or none (Empty counts as empty text) writes the sheet, any other value empty text; text
  // that is no number cannot be compared with 1.
  for (Variant type : {Variant(1), Variant(2), Variant("1"), Variant(""), Variant::Null(), Variant()})
    s.Invoke("SetDispStyle", {type});
  const std::string sheet = Expected("style_sheet.html");
  EXPECT_EQ(page->Writes(), (std::vector<std::string>{sheet, "", sheet, sheet, "", sheet}));
  EXPECT_EQ(ErrorNumber([&] { s.Invoke("SetDispStyle", {Variant("abc")}); }), 13);
}

}  // namespace corvane::scheduling::testing
