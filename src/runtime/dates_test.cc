// Date serials: DateSerial and its normalising, adding days and months, the calendar fields and date
// text of a serial (negative ones, rounding to the second), parsing, and the injectable clock.
#include "corvane/dates.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "test_support.h"

namespace corvane {

TEST(Dates, SerialsArithmeticFieldsTextAndParsing) {
  // Known days (more below), then parts out of range, which carry: 1900-02-29 is 1900-03-01 (61),
  // 2100-02-29 is 2100-03-01 (73110), 2024-03-00 is 2024-02-29 (45351), month 13 of 2025 is 2026-01
  // (46023), month 0 is the December before (45992), month -1 the November (45976), month 25 of 2026 is
  // 2028-01 (46753), day 0 the last day before (46081), day -1 the one before that (46021), day 32 of
  // January is 2026-02-01 (46054), day 366 of 2026 is 2027-01-01 (46388).
  // clang-format off
  const struct { int y, m, d; double serial; } days[] = {
      {1900, 1, 1, 2}, {1900, 3, 1, 61}, {1899, 1, 1, -363}, {1970, 1, 1, 25569}, {2000, 2, 29, 36585},
      {1900, 2, 29, 61}, {2100, 2, 29, 73110}, {2024, 3, 0, 45351}, {2025, 13, 1, 46023}, {2026, 0, 1, 45992},
      {2026, -1, 15, 45976}, {2026, 25, 1, 46753}, {2026, 3, 0, 46081}, {2026, 1, -1, 46021},
      {2026, 1, 32, 46054}, {2026, 1, 366, 46388},
  };
  // clang-format on
  for (const auto& c : days) EXPECT_EQ(DateSerial(c.y, c.m, c.d), c.serial) << c.serial;
  // Below zero the day counts back and its time forward: -1.25 is 1899-12-29 06:00, and adding days or
  // months keeps the time of day across zero.
  // clang-format off
  const struct { double got, want; } times[] = {
      {DateTimeSerial(1899, 12, 29, 6, 0, 0), -1.25}, {DateTimeSerial(1899, 12, 30, 6, 0, 0), 0.25},
      {TimeSerial(13, 5, 9), 47109 / 86400.0}, {TimeSerial(25, 0, 0), 25 / 24.0}, {AddDays(0.25, -1), -1.25},
      {AddDays(-1.25, 1), 0.25}, {AddDays(-1.25, 0.5), -1.75}, {AddDays(-1.75, 0.5), 0.25},
      {AddDays(46348.5, 1.25), 46349.75}, {AddMonths(-1.25, 1), 30.25}, {AddMonths(30.25, -1), -1.25},
  };
  // clang-format on
  for (const auto& c : times) EXPECT_EQ(c.got, c.want) << "case " << &c - times;
  // Adding months clamps the day to the month's length and keeps the time of day.
  // clang-format off
  const struct { int y, m, d, months, ty, tm, td; } months[] = {
      {2026, 1, 31, 1, 2026, 2, 28}, {2024, 1, 31, 1, 2024, 2, 29}, {2024, 2, 29, 12, 2025, 2, 28},
      {2026, 3, 31, -1, 2026, 2, 28}, {2026, 5, 31, 1, 2026, 6, 30}, {2026, 1, 15, -1, 2025, 12, 15},
      {2026, 12, 31, 1, 2027, 1, 31}, {2026, 1, 10, -25, 2023, 12, 10}, {1900, 1, 31, 1, 1900, 2, 28},
      {1899, 11, 30, 1, 1899, 12, 30}, {2026, 1, 31, 0, 2026, 1, 31},
  };
  // clang-format on
  for (const auto& c : months)
    EXPECT_EQ(AddMonths(DateTimeSerial(c.y, c.m, c.d, 8, 30, 0), c.months),
              DateTimeSerial(c.ty, c.tm, c.td, 8, 30, 0))
        << "case " << &c - months;
  // Weekdays count from Sunday = 1. 23:59:59.6 is the next day's midnight for every field.
  // clang-format off
  const struct { double s; std::string text; int weekday; } cases[] = {
      {0, "1899-12-30", 7}, {1, "1899-12-31", 1}, {-1, "1899-12-29", 6}, {-36522, "1800-01-01", 4},
      {-657434, "0100-01-01", 6}, {2958465, "9999-12-31", 6}, {46348, "2026-11-22", 1},
      {46174, "2026-06-01", 2}, {-1.25, "1899-12-29 06:00:00", 6}, {-1.75, "1899-12-29 18:00:00", 6},
      {-0.5, "1899-12-30 12:00:00", 7}, {36526.9, "2000-01-01 21:36:00", 7},
      {46024 + 1 / 86400.0, "2026-01-02 00:00:01", 6}, {46053 + 1.4 / 86400, "2026-01-31 00:00:01", 7},
      {46348 + 47109 / 86400.0, "2026-11-22 13:05:09", 1}, {46053 + 86399.6 / 86400, "2026-02-01", 1},
  };
  // clang-format on
  for (const auto& c : cases) {
    char fields[40];
    std::snprintf(fields, sizeof fields, "%04d-%02d-%02d %02d:%02d:%02d", Year(c.s), Month(c.s), Day(c.s),
                  Hour(c.s), Minute(c.s), Second(c.s));
    EXPECT_EQ(fields, c.text.size() == 10 ? c.text + " 00:00:00" : c.text) << c.s;
    EXPECT_EQ(DateText(c.s) + " " + std::to_string(Weekday(c.s)), c.text + " " + std::to_string(c.weekday));
    EXPECT_EQ(DateOnly(c.s), ParseDateText(c.text.substr(0, 10))) << c.s;
    EXPECT_EQ(DateText(ParseDateText(c.text).value()), c.text);
  }
  for (double s : {std::nan(""), HUGE_VAL}) EXPECT_EQ(testing::ErrorNumber([&] { DateText(s); }), 5);
  // Parsing accepts "yyyy-m-d" and "yyyy/m/d" with an optional " h:mm[:ss]", and nothing else.
  // clang-format off
  const struct { const char* text; double serial; } good[] = {
      {"2026-11-22 08:30:15", 46348 + 30615 / 86400.0}, {"2026/1/5", 46027}, {"2026/01/05", 46027},
      {"2026-1-5", 46027}, {"2026/1/5 8:30", 46027 + 30600 / 86400.0},
      {"2026/1/5 8:30:59", 46027 + 30659 / 86400.0}, {"2026-01-05 23:59", 46027 + 86340 / 86400.0},
      {"2024-02-29", 45351},
  };
  // clang-format on
  for (const auto& c : good) EXPECT_EQ(ParseDateText(c.text), c.serial) << c.text;
  // clang-format off
  const char* bad[] = {
      "", "2026", "2026-11", "26-11-22", "02026-11-22", "2026-11-22 ", " 2026-11-22", "2026-11/22",
      "2026.11.22", "2026-011-22", "2026-13-01", "2026-00-10", "2026-02-30", "2026-02-29", "1900-02-29",
      "2026-04-31", "2026-01-00", "2026-01-01 24:00", "2026-01-01 12:60", "2026-01-01 12:00:60",
      "2026-01-01T12:00:00", "2026-01-01 12", "2026-01-01 12:5", "2026-01-01 123:00", "2026-01-01  12:00",
      "2026-01-01 12:00:5", "2026-01-01 12:00:00.000", "0099-12-31", "2026-1-1x", "２０２６-01-01",
  };
  // clang-format on
  for (const char* text : bad) EXPECT_EQ(ParseDateText(text), std::nullopt) << text;
}

TEST(Dates, NowAndTimerReadTheInjectableClockInLocalTime) {
  const char* tz = std::getenv("TZ");
  const std::string oldTz = tz ? tz : "";
  setenv("TZ", "CST-8", 1);  // UTC+8 all year, no zone files needed
  tzset();
  // At 11:00:25.75 local time Now keeps whole seconds and Timer the fraction; then just after local
  // midnight; then 08:00 on 1899-12-30 and on the day before, a negative serial.
  // clang-format off
  const struct { int64_t utc; int ms; double now; float timer; } cases[] = {
      {1795305600 + 3 * 3600 + 25, 750, 46348 + 39625 / 86400.0, 39625.75f},
      {1795305600 - 8 * 3600, 250, 46348, 0.25f}, {-2209161600, 0, 8 / 24.0, 28800},
      {-2209161600 - 86400, 0, -1 - 8 / 24.0, 28800},
  };
  // clang-format on
  for (const auto& c : cases) {
    const auto at = std::chrono::sys_seconds(std::chrono::seconds(c.utc)) + std::chrono::milliseconds(c.ms);
    SetClock([at] { return at; });
    EXPECT_EQ(Now(), c.now) << c.utc;
    EXPECT_FLOAT_EQ(Timer(), c.timer) << c.utc;
  }
  SetClock(nullptr);
  EXPECT_GE(Year(Now()), 2025);
  tz ? setenv("TZ", oldTz.c_str(), 1) : unsetenv("TZ");
  tzset();
}

}  // namespace corvane
