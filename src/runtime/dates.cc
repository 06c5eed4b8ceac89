// Date serials: calendar arithmetic on day numbers, and the local clock.
//
// A serial's day part counts from 1899-12-30 and its fraction is the time of day. Below zero the two
// run in opposite directions (-1.25 is one day back, then 6 hours forward), so every function first
// maps the serial to a "linear" value, where plain arithmetic works, and maps results back:
//
//     serial -1.25  ->  day -1, time 0.25  ->  linear -0.75
//
// Calendar fields come from a linear value rounded to the nearest second, so Day, Hour and DateText
// always agree with one another (23:59:59.7 is the next day's midnight for all of them).
//
// The civil calendar conversions are Howard Hinnant's days_from_civil / civil_from_days (proleptic
// Gregorian, exact for every year, no time zone involved); the time zone enters only in Now and Timer.
#include "corvane/dates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <mutex>

#include "corvane/error.h"

namespace corvane {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kUnixEpochSerial = 25569;  // 1970-01-01 as a serial day
// Beyond this many days a serial is not a date (and seconds would overflow); the platform's own range
// is far smaller (years 100 to 9999), but dates read from elsewhere may stray past it harmlessly.
constexpr double kMaxSerial = 1e9;

int64_t FloorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

// Days from 1970-01-01 to y-m-d (proleptic Gregorian).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

struct Civil {
  int64_t year;
  unsigned month;
  unsigned day;
};

Civil CivilFromDays(int64_t z) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  return {static_cast<int64_t>(yoe) + era * 400 + (m <= 2), m, d};
}

bool IsLeapYear(int64_t y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }

unsigned DaysInMonth(int64_t y, unsigned m) {
  static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && IsLeapYear(y) ? 29 : kDays[m - 1];
}

// Serial day of y-m-d where month and day may be out of range: the month carries into the year, the
// day counts on from the first of the month.
int64_t SerialDay(int64_t year, int64_t month, int64_t day) {
  year += FloorDiv(month - 1, 12);
  month -= FloorDiv(month - 1, 12) * 12;
  return DaysFromCivil(year, static_cast<unsigned>(month), 1) + kUnixEpochSerial + (day - 1);
}

void CheckSerial(double serial) {
  if (!std::isfinite(serial) || std::fabs(serial) > kMaxSerial) throw Error::InvalidCall();
}

double ToLinear(double serial) {
  if (serial >= 0) return serial;
  const double day = std::ceil(serial);  // the day part, toward zero
  return day + (day - serial);
}

double FromLinear(double linear) {
  const double day = std::floor(linear);
  return day >= 0 ? linear : day - (linear - day);
}

// A serial split into its day and its second of that day, rounded to the nearest second.
struct Moment {
  int64_t day;     // serial day number
  int64_t second;  // 0 .. 86399
  Civil Date() const { return CivilFromDays(day - kUnixEpochSerial); }
};

Moment Split(double serial) {
  CheckSerial(serial);
  const auto total = static_cast<int64_t>(std::llround(ToLinear(serial) * kSecondsPerDay));
  const int64_t day = FloorDiv(total, kSecondsPerDay);
  return {day, total - day * kSecondsPerDay};
}

double Join(int64_t day, int64_t second) {
  const double time = static_cast<double>(second) / kSecondsPerDay;
  return day >= 0 ? static_cast<double>(day) + time : static_cast<double>(day) - time;
}

// Reads exactly `minDigits` to `maxDigits` decimal digits at text[pos].
bool ReadNumber(std::string_view text, size_t& pos, size_t minDigits, size_t maxDigits, int& value) {
  size_t n = 0;
  value = 0;
  while (pos < text.size() && n < maxDigits && text[pos] >= '0' && text[pos] <= '9') {
    value = value * 10 + (text[pos++] - '0');
    ++n;
  }
  return n >= minDigits;
}

bool ReadChar(std::string_view text, size_t& pos, char c) {
  if (pos >= text.size() || text[pos] != c) return false;
  ++pos;
  return true;
}

std::mutex clockMutex;
Clock clockOverride;

std::chrono::system_clock::time_point ReadClock() {
  Clock clock;
  {
    std::lock_guard<std::mutex> lock(clockMutex);
    clock = clockOverride;
  }
  return clock ? clock() : std::chrono::system_clock::now();
}

// The clock's local time: serial day, whole second of the day and the fraction of that second.
struct LocalNow {
  int64_t day;
  int64_t second;
  double subsecond;
};

LocalNow ReadLocalNow() {
  const auto now = ReadClock();
  const auto whole = std::chrono::floor<std::chrono::seconds>(now);
  const std::time_t t = std::chrono::system_clock::to_time_t(whole);
  std::tm tm{};
  localtime_r(&t, &tm);
  const int sec = tm.tm_sec > 59 ? 59 : tm.tm_sec;  // a leap second holds at :59
  return {SerialDay(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday), tm.tm_hour * 3600 + tm.tm_min * 60 + sec,
          std::chrono::duration<double>(now - whole).count()};
}

}  // namespace

double DateSerial(int year, int month, int day) { return static_cast<double>(SerialDay(year, month, day)); }

double TimeSerial(int hour, int minute, int second) {
  return static_cast<double>(int64_t{hour} * 3600 + int64_t{minute} * 60 + second) / kSecondsPerDay;
}

double DateTimeSerial(int year, int month, int day, int hour, int minute, int second) {
  const int64_t seconds =
      SerialDay(year, month, day) * kSecondsPerDay + int64_t{hour} * 3600 + int64_t{minute} * 60 + second;
  const int64_t d = FloorDiv(seconds, kSecondsPerDay);
  return Join(d, seconds - d * kSecondsPerDay);
}

double AddDays(double date, double days) {
  CheckSerial(date);
  return FromLinear(ToLinear(date) + days);
}

double AddMonths(double date, int months) {
  const Moment m = Split(date);
  const Civil c = m.Date();
  const int64_t target = c.year * 12 + (c.month - 1) + months;
  const int64_t year = FloorDiv(target, 12);
  const auto month = static_cast<unsigned>(target - year * 12 + 1);
  const unsigned day = std::min(c.day, DaysInMonth(year, month));
  return Join(DaysFromCivil(year, month, day) + kUnixEpochSerial, m.second);
}

int Year(double date) { return static_cast<int>(Split(date).Date().year); }
int Month(double date) { return static_cast<int>(Split(date).Date().month); }
int Day(double date) { return static_cast<int>(Split(date).Date().day); }
int Hour(double date) { return static_cast<int>(Split(date).second / 3600); }
int Minute(double date) { return static_cast<int>(Split(date).second / 60 % 60); }
int Second(double date) { return static_cast<int>(Split(date).second % 60); }

int Weekday(double date) {
  // Serial day 0, 1899-12-30, was a Saturday (7).
  const int64_t day = Split(date).day;
  return static_cast<int>(day + 6 - FloorDiv(day + 6, 7) * 7) + 1;
}

double DateOnly(double date) { return Join(Split(date).day, 0); }

std::string DateText(double date) {
  const Moment m = Split(date);
  const Civil c = m.Date();
  char buf[64];
  // Lists show a date in every row: the digits are written by hand, not through snprintf.
  auto digits = [](char* at, unsigned value, int width) {
    for (int i = width - 1; i >= 0; --i, value /= 10) at[i] = static_cast<char>('0' + value % 10);
  };
  if (c.year >= 0 && c.year <= 9999) {
    char* p = buf;
    digits(p, static_cast<unsigned>(c.year), 4);
    p[4] = '-';
    digits(p + 5, c.month, 2);
    p[7] = '-';
    digits(p + 8, c.day, 2);
    if (m.second == 0) return std::string(buf, 10);
    p[10] = ' ';
    digits(p + 11, static_cast<unsigned>(m.second / 3600), 2);
    p[13] = ':';
    digits(p + 14, static_cast<unsigned>(m.second / 60 % 60), 2);
    p[16] = ':';
    digits(p + 17, static_cast<unsigned>(m.second % 60), 2);
    return std::string(buf, 19);
  }
  int n = std::snprintf(buf, sizeof buf, "%04lld-%02u-%02u", static_cast<long long>(c.year), c.month, c.day);
  if (m.second != 0)
    n += std::snprintf(buf + n, sizeof buf - n, " %02d:%02d:%02d", static_cast<int>(m.second / 3600),
                       static_cast<int>(m.second / 60 % 60), static_cast<int>(m.second % 60));
  return std::string(buf, static_cast<size_t>(n));
}

// Accepts "yyyy-m-d" and "yyyy/m/d" (month and day with one or two digits, the same separator twice),
// optionally followed by one blank and "h:mm" or "h:mm:ss" (hour with one or two digits). Nothing
// else: no other blanks, no other separators, no two-digit years, no out-of-range fields.
std::optional<double> ParseDateText(std::string_view text) {
  size_t pos = 0;
  int year, month, day, hour = 0, minute = 0, second = 0;
  if (!ReadNumber(text, pos, 4, 4, year) || pos >= text.size()) return std::nullopt;
  const char sep = text[pos];
  if (sep != '-' && sep != '/') return std::nullopt;
  ++pos;
  if (!ReadNumber(text, pos, 1, 2, month) || !ReadChar(text, pos, sep) || !ReadNumber(text, pos, 1, 2, day))
    return std::nullopt;
  if (pos < text.size()) {
    if (!ReadChar(text, pos, ' ') || !ReadNumber(text, pos, 1, 2, hour) || !ReadChar(text, pos, ':') ||
        !ReadNumber(text, pos, 2, 2, minute))
      return std::nullopt;
    if (pos < text.size() && (!ReadChar(text, pos, ':') || !ReadNumber(text, pos, 2, 2, second)))
      return std::nullopt;
    if (pos != text.size()) return std::nullopt;
  }
  if (year < 100 || month < 1 || month > 12 || day < 1 ||
      static_cast<unsigned>(day) > DaysInMonth(year, month))
    return std::nullopt;
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return DateTimeSerial(year, month, day, hour, minute, second);
}

void SetClock(Clock clock) {
  std::lock_guard<std::mutex> lock(clockMutex);
  clockOverride = std::move(clock);
}

double Now() {
  const LocalNow now = ReadLocalNow();
  return Join(now.day, now.second);
}

float Timer() {
  const LocalNow now = ReadLocalNow();
  return static_cast<float>(static_cast<double>(now.second) + now.subsecond);
}

}  // namespace corvane
