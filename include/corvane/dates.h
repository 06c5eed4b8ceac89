// Dates as the platform keeps them: a Double counting days from 1899-12-30, the time of day as the
// fraction (0.5 is noon). Negative values count back, with the fraction still running forward in
// time (-1.25 is 1899-12-29 06:00), as the original did.
//
// Choices a reader should know:
// - Weekdays count from Sunday: Sunday = 1, Monday = 2, ... Saturday = 7.
// - AddMonths(Jan 31, 1) is the last day of February (29th in a leap year), not March 2 or 3: the day
//   of month is clamped to the target month's length, and the time of day is kept. Adding 12 months to
//   Feb 29 gives Feb 28 of the next year.
// - DateSerial normalises out-of-range parts as the original does: month 13 is January of the next
//   year, day 0 is the last day of the month before.
// - The locale's date text is "yyyy-mm-dd", with " hh:mm:ss" (24-hour, zero-padded) appended when the
//   time is not midnight; such texts sort and compare as dates in every database we use. Parsing
//   accepts that form and "yyyy/m/d[ h:mm[:ss]]" (also with "-"), nothing else.
// - Calendar fields (Year ... Second, Weekday, DateOnly, DateText) round the time to the nearest
//   second first, so they always agree: 23:59:59.7 is the next day's midnight for all of them.
// - Years are taken as given (DateSerial(26, 1, 1) is the year 26); a non-finite serial raises 5.
// - Timer is seconds since midnight of the clock's local time; the clock can be fixed by tests.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

double DateSerial(int year, int month, int day);
double TimeSerial(int hour, int minute, int second);
// A date and a time of day in one serial. Use it rather than DateSerial + TimeSerial, which adds the
// time the wrong way for days before 1899-12-30 (their fraction counts forward from a negative day).
double DateTimeSerial(int year, int month, int day, int hour, int minute, int second);
double AddDays(double date, double days);
double AddMonths(double date, int months);
int Year(double date);
int Month(double date);
int Day(double date);
int Hour(double date);
int Minute(double date);
int Second(double date);
int Weekday(double date);      // Sunday = 1
double DateOnly(double date);  // the same day at midnight

std::string DateText(double date);
std::optional<double> ParseDateText(std::string_view text);

// The clock: Now() and Timer() read it. Tests may fix it.
using Clock = std::function<std::chrono::system_clock::time_point()>;
void SetClock(Clock clock);  // nullptr restores the system clock
double Now();                // local date and time as a Date serial
float Timer();               // seconds since local midnight

}  // namespace corvane
