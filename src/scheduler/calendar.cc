// The three date rules under every week and month view. Weekdays count from Sunday = 1, so Monday is
// weekday 2; stepping is by whole days and keeps the time of day.
#include "corvane/dates.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

namespace {
constexpr int kMonday = 2;
}

Variant scheduler::GetFirstMonday(const Variant& dtDate) {
  double d = scheduling::AsDate(dtDate);
  double day = DateSerial(Year(d), Month(d), 1);
  while (Weekday(day) != kMonday) day = AddDays(day, -1);
  return scheduling::DateVariant(day);
}

// Counts the Mondays before dtDate's day, not on it: a Monday closes the week before it, and the
// count rises on the Tuesday. The week links and labels rely on this numbering.
Variant scheduler::CountWeek(const Variant& dtDate) {
  double d = scheduling::AsDate(dtDate);
  int16_t count = 1;
  double cursor = DateSerial(Year(d), Month(d), 1);
  while (Month(cursor) == Month(d) && Day(cursor) < Day(d)) {
    if (Weekday(cursor) == kMonday) ++count;
    cursor = AddDays(cursor, 1);
  }
  return Variant(count);
}

// A Monday argument is handed back untouched, text and all; only a stepped value becomes a Date.
Variant scheduler::GetPrevMonday(const Variant& dtDate) {
  Variant day = dtDate;
  while (Weekday(scheduling::AsDate(day)) != kMonday)
    day = scheduling::DateVariant(AddDays(scheduling::AsDate(day), -1));
  return day;
}

}  // namespace corvane
