#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "scheduler/scheduler.h"

namespace corvane {
namespace {

Variant D(int y, int m, int d, int hh = 0, int mm = 0) { return Variant::Date(y, m, d, hh, mm); }

struct MondayCase {
  Variant date;
  std::string firstMonday;
};

TEST(GetFirstMonday, MondayOnOrBeforeTheFirstOfTheMonth) {
  const MondayCase cases[] = {
      {D(2026, 6, 17), "2026-06-01"},         // the 1st is a Monday
      {D(2026, 6, 1), "2026-06-01"},
      {D(2026, 11, 20), "2026-10-26"},        // the 1st is a Sunday: six days back
      {D(2024, 2, 29), "2024-01-29"},         // leap February
      {D(2026, 2, 10), "2026-01-26"},
      {D(2027, 2, 28), "2027-02-01"},
      {D(2026, 1, 15), "2025-12-29"},         // January: back into December
      {D(2026, 6, 17, 8, 30), "2026-06-01"},  // no time of day
      {Variant("2026-11-20"), "2026-10-26"},  // date text
  };
  scheduler s;
  for (const auto& c : cases) {
    Variant r = s.GetFirstMonday(c.date);
    EXPECT_EQ(r.Type(), vtDate) << DebugString(c.date);
    EXPECT_EQ(r.Text(), c.firstMonday) << DebugString(c.date);
  }
}

struct WeekCase {
  Variant date;
  int week;
};

TEST(CountWeek, AMondayStillBelongsToTheWeekBeforeIt) {
  const WeekCase cases[] = {
      {D(2026, 6, 1), 1},   // the 1st is a Monday and is week 1
      {D(2026, 6, 2), 2},   // ... the 2nd to the 8th are week 2
      {D(2026, 6, 8), 2},
      {D(2026, 6, 9), 3},
      {D(2026, 6, 30), 6},
      {D(2026, 11, 1), 1},  // the 1st is a Sunday
      {D(2026, 11, 2), 1},  // Monday: the count of the Sunday before
      {D(2026, 11, 3), 2},  // Tuesday: one more
      {D(2026, 11, 30), 5},
      {D(2024, 2, 29), 5},
      {D(2027, 2, 28), 5},
      {D(2026, 1, 1), 1},
      {D(2026, 11, 3, 23, 59), 2},
      {Variant("2026-11-10"), 3},
  };
  scheduler s;
  for (const auto& c : cases) {
    Variant r = s.CountWeek(c.date);
    EXPECT_EQ(r.Type(), vtInteger) << DebugString(c.date);
    EXPECT_EQ(r.ToLong(), c.week) << DebugString(c.date);
  }
}

TEST(GetPrevMonday, StepsBackToMondayKeepingTheTime) {
  scheduler s;
  EXPECT_EQ(s.GetPrevMonday(D(2026, 11, 8)), Variant::FromDate(D(2026, 11, 2).ToDate()));  // Sunday
  EXPECT_EQ(s.GetPrevMonday(D(2026, 11, 7)).Text(), "2026-11-02");
  EXPECT_EQ(s.GetPrevMonday(D(2026, 11, 3, 8, 30)).Text(), "2026-11-02 08:30:00");
  EXPECT_EQ(s.GetPrevMonday(D(2026, 3, 1)).Text(), "2026-02-23");  // across a month
  EXPECT_EQ(s.GetPrevMonday(D(2026, 1, 3)).Text(), "2025-12-29");  // across a year
  Variant tuesdayText("2026-11-03");
  EXPECT_EQ(s.GetPrevMonday(tuesdayText).Type(), vtDate);  // a stepped value is a Date
}

TEST(GetPrevMonday, AMondayComesBackExactlyAsPassed) {
  scheduler s;
  const Variant mondays[] = {Variant("2026-11-02"), Variant("2026/11/2"), D(2026, 11, 2),
                             D(2026, 11, 2, 17, 45)};
  for (const Variant& m : mondays) EXPECT_EQ(s.GetPrevMonday(m), m) << DebugString(m);
}

TEST(CalendarRules, NonDatesRaiseTypeMismatch) {
  scheduler s;
  for (const Variant& bad : {Variant("next week"), Variant("")}) {
    for (auto call : {&scheduler::GetFirstMonday, &scheduler::CountWeek, &scheduler::GetPrevMonday}) {
      try {
        (s.*call)(bad);
        ADD_FAILURE() << DebugString(bad);
      } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 13);
      }
    }
  }
}

}  // namespace
}  // namespace corvane
