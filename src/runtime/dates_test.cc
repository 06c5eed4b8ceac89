#include "corvane/dates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>

#include "corvane/error.h"

namespace corvane {
namespace {

TEST(DateSerials, KnownDays) {
  struct Case {
    int y, m, d;
    double serial;
  } cases[] = {
      {1899, 12, 30, 0},     {1899, 12, 31, 1},      {1900, 1, 1, 2},       {1900, 3, 1, 61},
      {1899, 12, 29, -1},    {1899, 1, 1, -363},     {1800, 1, 1, -36522},  {1970, 1, 1, 25569},
      {2000, 2, 29, 36585},  {2026, 11, 22, 46348},  {100, 1, 1, -657434},  {9999, 12, 31, 2958465},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateSerial(c.y, c.m, c.d), c.serial) << c.y << "-" << c.m << "-" << c.d;
    EXPECT_EQ(Year(c.serial), c.y);
    EXPECT_EQ(Month(c.serial), c.m);
    EXPECT_EQ(Day(c.serial), c.d);
  }
}

TEST(DateSerials, OutOfRangePartsCarry) {
  EXPECT_EQ(DateSerial(2025, 13, 1), DateSerial(2026, 1, 1));
  EXPECT_EQ(DateSerial(2026, 0, 1), DateSerial(2025, 12, 1));
  EXPECT_EQ(DateSerial(2026, -1, 15), DateSerial(2025, 11, 15));
  EXPECT_EQ(DateSerial(2026, 25, 1), DateSerial(2028, 1, 1));
  EXPECT_EQ(DateSerial(2026, 3, 0), DateSerial(2026, 2, 28));
  EXPECT_EQ(DateSerial(2024, 3, 0), DateSerial(2024, 2, 29));
  EXPECT_EQ(DateSerial(2026, 1, -1), DateSerial(2025, 12, 30));
  EXPECT_EQ(DateSerial(2026, 1, 32), DateSerial(2026, 2, 1));
  EXPECT_EQ(DateSerial(2026, 1, 366), DateSerial(2027, 1, 1));
}

TEST(DateSerials, LeapYears) {
  EXPECT_EQ(Day(DateSerial(1900, 2, 29)), 1);  // 1900 is not a leap year: March 1
  EXPECT_EQ(Day(DateSerial(2000, 2, 29)), 29);
  EXPECT_EQ(Day(DateSerial(2024, 2, 29)), 29);
  EXPECT_EQ(Day(DateSerial(2100, 2, 29)), 1);
  EXPECT_EQ(DateSerial(2000, 3, 1) - DateSerial(2000, 2, 28), 2);
  EXPECT_EQ(DateSerial(1900, 3, 1) - DateSerial(1900, 2, 28), 1);
}

TEST(DateSerials, NegativeSerialsCountTheTimeForward) {
  // -1.25: one day back (1899-12-29), then six hours into that day.
  EXPECT_EQ(DateText(-1.25), "1899-12-29 06:00:00");
  EXPECT_EQ(Hour(-1.75), 18);
  EXPECT_EQ(DateText(-0.5), "1899-12-30 12:00:00");
  EXPECT_EQ(DateOnly(-1.25), -1);
  EXPECT_EQ(DateTimeSerial(1899, 12, 29, 6, 0, 0), -1.25);
  EXPECT_EQ(DateTimeSerial(1899, 12, 30, 6, 0, 0), 0.25);
  // Crossing zero by whole days keeps the time of day.
  EXPECT_EQ(AddDays(0.25, -1), -1.25);
  EXPECT_EQ(AddDays(-1.25, 1), 0.25);
  EXPECT_EQ(AddDays(-1.25, 0.5), -1.75);
  EXPECT_EQ(AddDays(-1.75, 0.5), 0.25);
}

TEST(DateParts, TimeFields) {
  const double d = DateTimeSerial(2026, 11, 22, 13, 5, 9);
  EXPECT_EQ(Hour(d), 13);
  EXPECT_EQ(Minute(d), 5);
  EXPECT_EQ(Second(d), 9);
  EXPECT_EQ(DateOnly(d), DateSerial(2026, 11, 22));
  EXPECT_NEAR(TimeSerial(13, 5, 9), d - DateSerial(2026, 11, 22), 1e-9);
  EXPECT_EQ(TimeSerial(25, 0, 0), 25.0 / 24);
}

TEST(DateParts, FieldsRoundToTheNearestSecond) {
  const double day = DateSerial(2026, 1, 31);
  const double almostMidnight = day + (86399.6 / 86400);
  EXPECT_EQ(Day(almostMidnight), 1);
  EXPECT_EQ(Month(almostMidnight), 2);
  EXPECT_EQ(Hour(almostMidnight), 0);
  EXPECT_EQ(DateText(almostMidnight), "2026-02-01");
  EXPECT_EQ(DateOnly(almostMidnight), day + 1);
  EXPECT_EQ(Second(day + 1.4 / 86400), 1);
}

TEST(DateParts, WeekdayCountsFromSunday) {
  EXPECT_EQ(Weekday(0), 7);                           // 1899-12-30, a Saturday
  EXPECT_EQ(Weekday(1), 1);                           // Sunday
  EXPECT_EQ(Weekday(-1), 6);                          // Friday
  EXPECT_EQ(Weekday(-1.75), 6);                       // its time does not move the day
  EXPECT_EQ(Weekday(DateSerial(2026, 11, 22)), 1);    // Sunday
  EXPECT_EQ(Weekday(DateSerial(2026, 6, 1)), 2);      // Monday
  EXPECT_EQ(Weekday(DateSerial(2000, 1, 1) + 0.9), 7);
  EXPECT_EQ(Weekday(DateSerial(1800, 1, 1)), 4);      // Wednesday
}

TEST(DateMonths, AddMonthsClampsTheDay) {
  struct Case {
    double from;
    int months;
    double to;
  } cases[] = {
      {DateSerial(2026, 1, 31), 1, DateSerial(2026, 2, 28)},
      {DateSerial(2024, 1, 31), 1, DateSerial(2024, 2, 29)},
      {DateSerial(2024, 2, 29), 12, DateSerial(2025, 2, 28)},
      {DateSerial(2026, 3, 31), -1, DateSerial(2026, 2, 28)},
      {DateSerial(2026, 5, 31), 1, DateSerial(2026, 6, 30)},
      {DateSerial(2026, 1, 15), -1, DateSerial(2025, 12, 15)},
      {DateSerial(2026, 12, 31), 1, DateSerial(2027, 1, 31)},
      {DateSerial(2026, 1, 10), -25, DateSerial(2023, 12, 10)},
      {DateSerial(1900, 1, 31), 1, DateSerial(1900, 2, 28)},
      {DateSerial(1899, 11, 30), 1, DateSerial(1899, 12, 30)},
      {DateSerial(2026, 1, 31), 0, DateSerial(2026, 1, 31)},
  };
  for (const auto& c : cases) EXPECT_EQ(AddMonths(c.from, c.months), c.to) << DateText(c.from) << " " << c.months;
}

TEST(DateMonths, AddMonthsKeepsTheTime) {
  EXPECT_EQ(AddMonths(DateTimeSerial(2026, 1, 31, 8, 30, 0), 1), DateTimeSerial(2026, 2, 28, 8, 30, 0));
  EXPECT_EQ(AddMonths(DateTimeSerial(1899, 12, 29, 6, 0, 0), 1), DateTimeSerial(1900, 1, 29, 6, 0, 0));
  EXPECT_EQ(AddMonths(DateTimeSerial(1900, 1, 29, 6, 0, 0), -1), -1.25);
}

TEST(DateText, Forms) {
  EXPECT_EQ(DateText(DateSerial(2026, 11, 22)), "2026-11-22");
  EXPECT_EQ(DateText(DateTimeSerial(2026, 1, 2, 3, 4, 5)), "2026-01-02 03:04:05");
  EXPECT_EQ(DateText(DateTimeSerial(2026, 1, 2, 0, 0, 1)), "2026-01-02 00:00:01");
  EXPECT_EQ(DateText(0), "1899-12-30");
  EXPECT_EQ(DateText(DateSerial(100, 1, 1)), "0100-01-01");
  EXPECT_THROW(DateText(std::nan("")), Error);
}

TEST(DateText, ParseAcceptsTheListedForms) {
  struct Case {
    const char* text;
    double serial;
  } cases[] = {
      {"2026-11-22", DateSerial(2026, 11, 22)},
      {"2026-11-22 08:30:15", DateTimeSerial(2026, 11, 22, 8, 30, 15)},
      {"2026/1/5", DateSerial(2026, 1, 5)},
      {"2026/01/05", DateSerial(2026, 1, 5)},
      {"2026-1-5", DateSerial(2026, 1, 5)},
      {"2026/1/5 8:30", DateTimeSerial(2026, 1, 5, 8, 30, 0)},
      {"2026/1/5 8:30:59", DateTimeSerial(2026, 1, 5, 8, 30, 59)},
      {"2026-01-05 23:59", DateTimeSerial(2026, 1, 5, 23, 59, 0)},
      {"2024-02-29", DateSerial(2024, 2, 29)},
      {"2000-02-29", DateSerial(2000, 2, 29)},
      {"1899-12-29 06:00:00", -1.25},
      {"9999-12-31", DateSerial(9999, 12, 31)},
  };
  for (const auto& c : cases) {
    auto d = ParseDateText(c.text);
    ASSERT_TRUE(d.has_value()) << c.text;
    EXPECT_EQ(*d, c.serial) << c.text;
  }
}

TEST(DateText, ParseRejectsEverythingElse) {
  const char* bad[] = {
      "",           "2026",          "2026-11",          "26-11-22",          "02026-11-22",
      "2026-11-22 ", " 2026-11-22",  "2026-11/22",       "2026.11.22",        "2026-011-22",
      "2026-13-01", "2026-00-10",    "2026-02-30",       "2026-02-29",        "1900-02-29",
      "2026-04-31", "2026-01-00",    "2026-01-01 24:00", "2026-01-01 12:60",  "2026-01-01 12:00:60",
      "2026-01-01T12:00:00",         "2026-01-01 12",    "2026-01-01 12:5",   "2026-01-01 123:00",
      "2026-01-01  12:00",           "2026-01-01 12:00:5",                    "2026-01-01 12:00:00.000",
      "0099-12-31", "2026-1-1x",     "２０２６-01-01",
  };
  for (const char* text : bad) EXPECT_FALSE(ParseDateText(text).has_value()) << text;
}

TEST(DateText, RoundTrips) {
  for (double d : {DateSerial(2026, 11, 22), DateTimeSerial(2026, 11, 22, 23, 59, 59), DateSerial(2024, 2, 29),
                   DateTimeSerial(1899, 12, 29, 6, 0, 0), DateTimeSerial(1850, 7, 4, 12, 0, 1), 0.0,
                   DateSerial(9999, 12, 31)}) {
    auto back = ParseDateText(DateText(d));
    ASSERT_TRUE(back.has_value()) << DateText(d);
    EXPECT_EQ(DateText(*back), DateText(d));
    EXPECT_NEAR(*back, d, 1e-9);
  }
}

// Fixes the clock and the time zone for one test, restoring both afterwards.
class FixedClock : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* tz = std::getenv("TZ");
    hadTz_ = tz != nullptr;
    if (hadTz_) oldTz_ = tz;
    setenv("TZ", "CST-8", 1);  // UTC+8 all year, no zone files needed
    tzset();
  }
  void TearDown() override {
    SetClock(nullptr);
    if (hadTz_)
      setenv("TZ", oldTz_.c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  static void SetUtc(int64_t secondsSinceEpoch, int milliseconds = 0) {
    const auto tp = std::chrono::system_clock::time_point(std::chrono::seconds(secondsSinceEpoch)) +
                    std::chrono::milliseconds(milliseconds);
    SetClock([tp] { return tp; });
  }

 private:
  bool hadTz_ = false;
  std::string oldTz_;
};

TEST_F(FixedClock, NowIsLocalTimeInWholeSeconds) {
  SetUtc(1795305600, 750);  // 2026-11-22 00:00:00.750 UTC, 08:00:00.750 at UTC+8
  EXPECT_EQ(DateText(Now()), "2026-11-22 08:00:00");
  EXPECT_EQ(Now(), DateTimeSerial(2026, 11, 22, 8, 0, 0));
  SetUtc(1795305600 - 8 * 3600);  // local midnight
  EXPECT_EQ(Now(), DateSerial(2026, 11, 22));
  SetUtc(-2209161600);  // 1899-12-30 00:00 UTC: local 08:00 the same day
  EXPECT_EQ(Now(), 8.0 / 24);
  SetUtc(-2209161600 - 86400);  // a day earlier: a negative serial
  EXPECT_EQ(Now(), -1 - 8.0 / 24);
}

TEST_F(FixedClock, TimerIsSecondsSinceLocalMidnightWithFraction) {
  SetUtc(1795305600 + 3 * 3600 + 25, 500);  // 11:00:25.5 local
  EXPECT_FLOAT_EQ(Timer(), 11 * 3600 + 25.5f);
  SetUtc(1795305600 - 8 * 3600, 250);  // just after local midnight
  EXPECT_FLOAT_EQ(Timer(), 0.25f);
}

TEST_F(FixedClock, NullRestoresTheSystemClock) {
  SetUtc(0);
  EXPECT_EQ(Year(Now()), 1970);
  SetClock(nullptr);
  EXPECT_GE(Year(Now()), 2025);
}

}  // namespace
}  // namespace corvane
