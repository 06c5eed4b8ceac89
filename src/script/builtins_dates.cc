// The date functions: Date Time Now Timer Year Month Day Hour Minute Second Weekday WeekdayName
// MonthName DateAdd DateDiff DatePart DateSerial DateValue TimeSerial TimeValue FormatDateTime.
//
// The calendar is the runtime's (dates.h): serial days from 1899-12-30, months added with the day
// clamped, fields read to the nearest second. What the page sees of the locale is a Chinese
// (zh-CN) server's:
// - MonthName gives 一月 ... 十二月, abbreviated 1月 ... 12月; WeekdayName 星期日 ... 星期六,
//   abbreviated 周日 ... 周六.
// - The system's first day of the week (vbUseSystemDayOfWeek, 0) is Monday; the first week of the
//   year (vbUseSystem, 0) is the one holding January 1. Omitted, the first day is Sunday, as the
//   language defines it.
// - FormatDateTime: vbGeneralDate (0) is CStr's text, "yyyy-mm-dd[ hh:mm:ss]"; vbLongDate (1)
//   "yyyy年m月d日"; vbShortDate (2) "yyyy-mm-dd"; vbLongTime (3) "hh:mm:ss"; vbShortTime (4) "hh:mm"
//   (24-hour, zero-padded).
// - DateSerial reads a year from 0 to 29 as 2000-2029 and from 30 to 99 as 1930-1999, as the
//   platform does; the runtime's DateSerial (for C++ callers) takes years as given.
// Null in gives Null out for the field functions and DateAdd/DateDiff/DatePart; a result outside
// the years 100 to 9999 raises 5.
#include <cmath>
#include <cstdio>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/text.h"
#include "script/builtins_support.h"

namespace corvane::script::builtins {
namespace {

constexpr std::string_view kMonthNames[] = {"一月", "二月", "三月", "四月", "五月",   "六月",
                                            "七月", "八月", "九月", "十月", "十一月", "十二月"};
constexpr std::string_view kMonthShortNames[] = {"1月", "2月", "3月", "4月",  "5月",  "6月",
                                                 "7月", "8月", "9月", "10月", "11月", "12月"};
constexpr std::string_view kDayNames[] = {"星期日", "星期一", "星期二", "星期三",
                                          "星期四", "星期五", "星期六"};
constexpr std::string_view kDayShortNames[] = {"周日", "周一", "周二", "周三", "周四", "周五", "周六"};

constexpr int kSystemFirstDay = 2;   // Monday
constexpr int kSystemFirstWeek = 1;  // vbFirstJan1

// The first day of the week argument (Sunday = 1): 0 is the system's, omitted is Sunday.
int FirstDayArg(const Args& args, size_t i) {
  const int32_t first = LongArg(args, i, 1);
  if (first < 0 || first > 7) throw Error::InvalidCall();
  return first == 0 ? kSystemFirstDay : first;
}

int FirstWeekArg(const Args& args, size_t i) {
  const int32_t first = LongArg(args, i, 1);
  if (first < 0 || first > 3) throw Error::InvalidCall();
  return first == 0 ? kSystemFirstWeek : first;
}

// The day of the week counted from `first` (1 to 7).
int WeekdayFrom(double date, int first) { return (Weekday(date) - first + 7) % 7 + 1; }

enum class Interval { Year, Quarter, Month, DayOfYear, Day, Weekday, Week, Hour, Minute, Second };

Interval IntervalArg(const Args& args, size_t i) {
  static constexpr std::pair<std::string_view, Interval> kIntervals[] = {
      {"yyyy", Interval::Year}, {"q", Interval::Quarter}, {"m", Interval::Month}, {"y", Interval::DayOfYear},
      {"d", Interval::Day},     {"w", Interval::Weekday}, {"ww", Interval::Week}, {"h", Interval::Hour},
      {"n", Interval::Minute},  {"s", Interval::Second},
  };
  const std::string name = TextArg(args, i);
  for (const auto& [text, interval] : kIntervals)
    if (EqualsNoCase(name, text)) return interval;
  throw Error::InvalidCall();
}

// The serial day number of a date (its midnight) and the second of that day.
int64_t DayOf(double date) { return static_cast<int64_t>(DateOnly(date)); }
int64_t SecondOfDay(double date) { return Hour(date) * 3600 + Minute(date) * 60 + Second(date); }

Variant Today(BuiltinContext&, Args&) { return Variant::FromDate(DateOnly(corvane::Now())); }
Variant TimeNow(BuiltinContext&, Args&) {
  const double now = corvane::Now();
  return Variant::FromDate(now - DateOnly(now));
}
Variant NowBuiltin(BuiltinContext&, Args&) { return Variant::FromDate(corvane::Now()); }
Variant TimerBuiltin(BuiltinContext&, Args&) { return Variant(corvane::Timer()); }

template <int (*F)(double)>
Variant Field(BuiltinContext&, Args& a) {
  if (a[0].IsNull()) return Variant::Null();
  return Variant(static_cast<int16_t>(F(DateArg(a, 0))));
}

Variant WeekdayBuiltin(BuiltinContext&, Args& a) {
  const int first = FirstDayArg(a, 1);
  if (a[0].IsNull()) return Variant::Null();
  return Variant(static_cast<int16_t>(WeekdayFrom(DateArg(a, 0), first)));
}

Variant WeekdayName(BuiltinContext&, Args& a) {
  const int32_t day = a[0].ToLong();
  const bool abbreviate = Given(a, 1) && a[1].ToBool();
  const int first = FirstDayArg(a, 2);
  if (day < 1 || day > 7) throw Error::InvalidCall();
  const int sundayBased = (day - 1 + first - 1) % 7;  // 0 is Sunday
  return Variant((abbreviate ? kDayShortNames : kDayNames)[sundayBased]);
}

Variant MonthName(BuiltinContext&, Args& a) {
  const int32_t month = a[0].ToLong();
  const bool abbreviate = Given(a, 1) && a[1].ToBool();
  if (month < 1 || month > 12) throw Error::InvalidCall();
  return Variant((abbreviate ? kMonthShortNames : kMonthNames)[month - 1]);
}

// DateAdd(interval, number, date)
Variant DateAdd(BuiltinContext&, Args& a) {
  const Interval interval = IntervalArg(a, 0);
  const int64_t n = a[1].ToLong();
  if (a[2].IsNull()) return Variant::Null();
  const double date = DateArg(a, 2);
  auto months = [&](int64_t count) {
    if (count > 120000 || count < -120000) throw Error::InvalidCall();
    return AddMonths(date, static_cast<int>(count));
  };
  switch (interval) {
    case Interval::Year: return CheckedDate(months(n * 12));
    case Interval::Quarter: return CheckedDate(months(n * 3));
    case Interval::Month: return CheckedDate(months(n));
    case Interval::DayOfYear:
    case Interval::Day:
    case Interval::Weekday: return CheckedDate(AddDays(date, static_cast<double>(n)));
    case Interval::Week: return CheckedDate(AddDays(date, static_cast<double>(n) * 7));
    case Interval::Hour: return CheckedDate(AddDays(date, static_cast<double>(n) / 24));
    case Interval::Minute: return CheckedDate(AddDays(date, static_cast<double>(n) / 1440));
    case Interval::Second: return CheckedDate(AddDays(date, static_cast<double>(n) / 86400));
  }
  throw Error::InvalidCall();
}

// The serial day on which the week holding `day` starts.
int64_t WeekStart(int64_t day, int first) { return day - (WeekdayFrom(static_cast<double>(day), first) - 1); }

// DateDiff counts the boundaries crossed from date1 to date2: years, midnights, hours...; "w" counts
// whole weeks, "ww" the first days of the week passed.
Variant DateDiff(BuiltinContext&, Args& a) {
  const Interval interval = IntervalArg(a, 0);
  const int first = FirstDayArg(a, 3);
  FirstWeekArg(a, 4);
  if (a[1].IsNull() || a[2].IsNull()) return Variant::Null();
  const double d1 = DateArg(a, 1), d2 = DateArg(a, 2);
  int64_t r = 0;
  switch (interval) {
    case Interval::Year: r = Year(d2) - Year(d1); break;
    case Interval::Quarter:
      r = (int64_t{Year(d2)} * 4 + (Month(d2) - 1) / 3) - (int64_t{Year(d1)} * 4 + (Month(d1) - 1) / 3);
      break;
    case Interval::Month:
      r = (int64_t{Year(d2)} * 12 + Month(d2)) - (int64_t{Year(d1)} * 12 + Month(d1));
      break;
    case Interval::DayOfYear:
    case Interval::Day: r = DayOf(d2) - DayOf(d1); break;
    case Interval::Weekday: r = (DayOf(d2) - DayOf(d1)) / 7; break;
    case Interval::Week: r = (WeekStart(DayOf(d2), first) - WeekStart(DayOf(d1), first)) / 7; break;
    case Interval::Hour: r = (DayOf(d2) * 24 + Hour(d2)) - (DayOf(d1) * 24 + Hour(d1)); break;
    case Interval::Minute:
      r = (DayOf(d2) * 1440 + SecondOfDay(d2) / 60) - (DayOf(d1) * 1440 + SecondOfDay(d1) / 60);
      break;
    case Interval::Second:
      r = (DayOf(d2) * 86400 + SecondOfDay(d2)) - (DayOf(d1) * 86400 + SecondOfDay(d1));
      break;
  }
  if (r < INT32_MIN || r > INT32_MAX) throw Error::Overflow();
  return Variant(static_cast<int32_t>(r));
}

// The week of the year: week 1 holds January 1 (vbFirstJan1), or is the first with four days of the
// new year (vbFirstFourDays), or the first whole week (vbFirstFullWeek); days before week 1 belong
// to the last week of the year before.
int WeekOfYear(int64_t day, int first, int firstWeek, int year) {
  const auto jan1 = static_cast<int64_t>(DateSerial(year, 1, 1));
  int64_t week1 = WeekStart(jan1, first);
  if ((firstWeek == 2 && jan1 - week1 > 3) || (firstWeek == 3 && jan1 != week1)) week1 += 7;
  if (day < week1) return WeekOfYear(day, first, firstWeek, year - 1);
  return static_cast<int>((day - week1) / 7 + 1);
}

Variant DatePart(BuiltinContext&, Args& a) {
  const Interval interval = IntervalArg(a, 0);
  const int first = FirstDayArg(a, 2);
  const int firstWeek = FirstWeekArg(a, 3);
  if (a[1].IsNull()) return Variant::Null();
  const double d = DateArg(a, 1);
  int r = 0;
  switch (interval) {
    case Interval::Year: r = Year(d); break;
    case Interval::Quarter: r = (Month(d) - 1) / 3 + 1; break;
    case Interval::Month: r = Month(d); break;
    case Interval::DayOfYear:
      r = static_cast<int>(DayOf(d) - static_cast<int64_t>(DateSerial(Year(d), 1, 1)) + 1);
      break;
    case Interval::Day: r = Day(d); break;
    case Interval::Weekday: r = WeekdayFrom(d, first); break;
    case Interval::Week: r = WeekOfYear(DayOf(d), first, firstWeek, Year(d)); break;
    case Interval::Hour: r = Hour(d); break;
    case Interval::Minute: r = Minute(d); break;
    case Interval::Second: r = Second(d); break;
  }
  return Variant(static_cast<int16_t>(r));
}

Variant DateSerialBuiltin(BuiltinContext&, Args& a) {
  int year = a[0].ToInteger();
  const int month = a[1].ToInteger(), day = a[2].ToInteger();
  if (year >= 0 && year < 30)
    year += 2000;
  else if (year >= 30 && year < 100)
    year += 1900;
  return CheckedDate(DateSerial(year, month, day));
}

Variant TimeSerialBuiltin(BuiltinContext&, Args& a) {
  return CheckedDate(TimeSerial(a[0].ToInteger(), a[1].ToInteger(), a[2].ToInteger()));
}

Variant DateValue(BuiltinContext&, Args& a) { return Variant::FromDate(DateOnly(DateArg(a, 0))); }

Variant TimeValue(BuiltinContext&, Args& a) {
  const double d = DateArg(a, 0);
  return Variant::FromDate(TimeSerial(Hour(d), Minute(d), Second(d)));
}

std::string TimeText(double d, bool seconds) {
  char buf[16];
  if (seconds)
    std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", Hour(d), Minute(d), Second(d));
  else
    std::snprintf(buf, sizeof buf, "%02d:%02d", Hour(d), Minute(d));
  return buf;
}

Variant FormatDateTime(BuiltinContext&, Args& a) {
  const double d = DateArg(a, 0);
  switch (LongArg(a, 1, 0)) {
    case 0: return Variant(DateText(d));
    case 1: {
      char buf[48];
      std::snprintf(buf, sizeof buf, "%04d年%d月%d日", Year(d), Month(d), Day(d));
      return Variant(std::string(buf));
    }
    case 2: return Variant(DateText(DateOnly(d)));
    case 3: return Variant(TimeText(d, true));
    case 4: return Variant(TimeText(d, false));
    default: throw Error::InvalidCall();
  }
}

constexpr Builtin kBuiltins[] = {
    {"Date", 0, 0, Today},
    {"DateAdd", 3, 3, DateAdd},
    {"DateDiff", 3, 5, DateDiff},
    {"DatePart", 2, 4, DatePart},
    {"DateSerial", 3, 3, DateSerialBuiltin},
    {"DateValue", 1, 1, DateValue},
    {"Day", 1, 1, Field<Day>},
    {"FormatDateTime", 1, 2, FormatDateTime},
    {"Hour", 1, 1, Field<Hour>},
    {"Minute", 1, 1, Field<Minute>},
    {"Month", 1, 1, Field<Month>},
    {"MonthName", 1, 2, MonthName},
    {"Now", 0, 0, NowBuiltin},
    {"Second", 1, 1, Field<Second>},
    {"Time", 0, 0, TimeNow},
    {"Timer", 0, 0, TimerBuiltin},
    {"TimeSerial", 3, 3, TimeSerialBuiltin},
    {"TimeValue", 1, 1, TimeValue},
    {"Weekday", 1, 2, WeekdayBuiltin},
    {"WeekdayName", 1, 3, WeekdayName},
    {"Year", 1, 1, Field<Year>},
};

}  // namespace

std::span<const Builtin> DateBuiltins() { return kBuiltins; }

}  // namespace corvane::script::builtins
