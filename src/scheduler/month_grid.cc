// One person's month grid: a header of weekday names, then rows of seven days from the Monday on or
// before the 1st through the week that holds the month's last day.
#include "corvane/dates.h"
#include "scheduler/day_slots.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

using scheduling::AsDate;
using scheduling::kCrLf;

Variant scheduler::DispMonth(Variant& dtDate, Variant& pID) {
  return Variant(DispMonthHeader().Text() + DispMonthContent(dtDate, pID).Text());
}

Variant scheduler::DispMonthHeader() {
  std::string out =
      "<table cellspadding=0 cellspacing=1 width=100% height=85%>" + kCrLf + "<tr class='schh'>";
  for (const char* name : {"星期一", "星期二", "星期三", "星期四", "星期五", "星期六", "星期日"})
    out += std::string("<th height='23' nowrap>") + name + "</th>";
  out += "</tr>" + kCrLf;
  return Variant(out);
}

// Days of the month before (the grid's leading days) and of the month after (the last row's
// trailing days) are grey "sch0" cells; the loop stops at the first Monday in the month after.
Variant scheduler::DispMonthContent(Variant& dtDate, Variant& pID) {
  double date = AsDate(dtDate);
  scheduling::MonthDays month = scheduling::MonthOf(date);
  scheduling::DaySlots slots;
  ReadPlans(pID, scheduling::DateVariant(month.first), scheduling::DateVariant(month.last), slots);

  double d = AsDate(GetFirstMonday(dtDate));
  int shown = Month(date);
  int before = Month(AddMonths(date, -1));
  std::string out;
  while (Month(d) == shown || Month(d) == before) {
    out += " <tr height=40>" + kCrLf;
    for (int i = 0; i < 7; ++i) {
      if (Month(d) != shown) {
        out += "<td class='sch0'>&nbsp;</td>";
      } else {
        int day = Day(d);
        out += "<td class='" + slots.CellClass(day) + "' valign='top' onclick=manage('" + DateText(d) +
               "');>" + std::to_string(day) + "<br><span style='font-size:12px;'>" +
               slots.PlanText(day, "<br>") + "</span></td>" + kCrLf;
      }
      d = AddDays(d, 1);
    }
    out += " </tr>" + kCrLf;
  }
  out += " </table>" + kCrLf;
  return Variant(out);
}

}  // namespace corvane
