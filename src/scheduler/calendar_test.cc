#include <gtest/gtest.h>

#include <tuple>

#include "scheduler/scheduler_fixture.h"
#include "scheduler/scheduler_support.h"

namespace corvane::scheduling::testing {

// Weekdays of the 1sts: 2026-06 Monday, 2026-11 Sunday, 2026-01 Thursday. A Monday still counts in
// the week before it; the count rises on the Tuesday.
TEST(Calendar, FirstMondayWeekNumberAndPreviousMonday) {
  // clang-format off
  struct Case { Variant date; const char* first; int week; const char* prev; VarType prevType; } cases[] = {
      {Variant::Date(2026, 6, 1), "2026-06-01", 1, "2026-06-01", vtDate},  // a Monday 1st: itself, week 1
      {Variant("2026-11-01"), "2026-10-26", 1, "2026-10-26", vtDate},      // a Sunday: six days back
      {Variant::Date(2026, 11, 2), "2026-10-26", 1, "2026-11-02", vtDate},  // as the Sunday before
      {Variant::Date(2026, 11, 3, 8, 30), "2026-10-26", 2, "2026-11-02 08:30:00", vtDate},  // time kept
      {Variant("2026-01-03"), "2025-12-29", 1, "2025-12-29", vtDate},      // into the year before
      {Variant("2026-11-20"), "2026-10-26", 4, "2026-11-16", vtDate},      // a stepped text is a Date
      {Variant("2026/11/2"), "2026-10-26", 1, "2026/11/2", vtString},      // a Monday comes back as passed
  };
  // clang-format on
  Object s = CreateObject("corvane.scheduler");
  for (const Case& c : cases) {
    Variant first = s.Invoke("GetFirstMonday", {c.date}), week = s.Invoke("CountWeek", {c.date}),
            prev = s.Invoke("GetPrevMonday", {c.date});
    EXPECT_EQ(std::tuple(first.Type(), first.Text(), week.Type(), week.ToLong(), prev.Type(), prev.Text()),
              std::tuple(vtDate, c.first, vtInteger, c.week, c.prevType, c.prev))
        << DebugString(c.date);
  }
}

// 张三's plans at the midnight of November 4th: each newer item wraps the ones before it, right
// after its own opening tag. His own day shows every flag; anyone else's view the public ones only.
constexpr const char* kOwnDay =
    "<span class=Office style='width:100%;'> <span class=Beijing style='width:100%;'> "
    "<span class=Outside style='width:100%;'> <span class=Aboad style='width:100%;'> "
    "1.国外:东京&nbsp;</span>||"
    "2.外地:总部&nbsp;</span>||3.北京:海淀&nbsp;</span>||4.其他:总部&nbsp;</span>||";
constexpr const char* kPublicDay =
    "<span class=Beijing style='width:100%;'> <span class=Aboad style='width:100%;'> "
    "1.国外:东京&nbsp;</span>||"
    "2.北京:海淀&nbsp;</span>||";

// The owner is found by the whole-number parts (Int, not CInt); a Null id makes "differ" false.
TEST_F(SchedulerTest, DayCellsShowOwnPlansOfEveryFlagAndOthersPublicOnes) {
  const Object& s = Open();
  Variant day("2026-11-04"), empty("2026-11-20"), id(1);
  // The signed-in id, and the day's text (nullptr: the comparison raises 13).
  const std::pair<Variant, const char*> cases[] = {{Variant(1), kOwnDay},         {Variant("1"), kOwnDay},
                                                   {Variant(1.9), kOwnDay},       {Variant::Null(), kOwnDay},
                                                   {Variant(2), kPublicDay},      {Variant(0.99), kPublicDay},
                                                   {Variant("somebody"), nullptr}};
  for (auto [signedIn, expected] : cases) {
    session.Set("personID", signedIn);
    if (expected)
      EXPECT_EQ(s.Invoke("GetPersonDay", {day, id}).Text(), expected) << DebugString(signedIn);
    else
      EXPECT_EQ(ErrorNumber([&] { s.Invoke("GetPersonDay", {day, id}); }), 13);
  }
  // The mark does not read the session (no number now): public plans only, the last plan's class.
  EXPECT_EQ(s.Invoke("GetPersonDay2", {day, id}).Text(),
            "<span class=Beijing title='1.国外:东京2.北京:海淀'>&nbsp;&nbsp;</span>");
  EXPECT_EQ(s.Invoke("GetPersonDay2", {empty, id}).Text(), "<span class= title=''>&nbsp;&nbsp;</span>");
  // The location class by type id; numeric text counts as its number, Null as any other value.
  const std::pair<Variant, const char*> classes[] = {
      {Variant(2), "Beijing"},     {Variant("2"), "Beijing"}, {Variant(int16_t{3}), "Outside"},
      {Variant(4.0), "Aboad"},     {Variant(1), "Office"},    {Variant(5), "Office"},
      {Variant::Null(), "Office"}, {Variant(), "Office"}};
  for (const auto& [type, cls] : classes) EXPECT_EQ(LocationClass(type), cls) << DebugString(type);
}

}  // namespace corvane::scheduling::testing
