// One person's week list, the day cells of a week or a month row, and the person's caption.
#include "corvane/dates.h"
#include "corvane/text.h"
#include "scheduler/day_slots.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

using scheduling::AsDate;
using scheduling::DateVariant;
using scheduling::kCrLf;

// Seven cells, Monday to Sunday, with the plans in the cell; the caller supplies the row tags.
Variant scheduler::DispPersonWeek(Variant& dtDate, Variant& pID) {
  double first = AsDate(GetPrevMonday(dtDate));
  double last = AddDays(first, 6);
  scheduling::DaySlots slots;
  ReadPlans(pID, DateVariant(first), DateVariant(last), slots);

  std::string out;
  for (int i = 0; i < 7; ++i) {
    int day = Day(AddDays(first, i));
    out += "<td class='" + slots.CellClass(day) + "' >" + slots.PlanText(day, kCrLf) + "</td>";
  }
  return Variant(out);
}

// One cell per day of the month; the plans show only as the cell's tooltip.
Variant scheduler::DispPersonMonth(Variant& dtDate, Variant& pID) {
  scheduling::MonthDays month = scheduling::MonthOf(AsDate(dtDate));
  scheduling::DaySlots slots;
  ReadPlans(pID, DateVariant(month.first), DateVariant(month.last), slots);

  std::string out;
  for (double d = month.first; d <= month.last; d = AddDays(d, 1)) {
    int day = Day(d);
    out += "<td title='" + slots.PlanText(day, kCrLf) + "' class='" + slots.CellClass(day) + "' >&nbsp;</td>";
  }
  return Variant(out);
}

// The week as a vertical list, one row per day from the Monday on or before dtDate. The day column's
// cell is left open and followed by an empty cell; pages are styled around this markup as it is.
// A Monday given as text is shown as that text for the first day.
Variant scheduler::DispWeek(Variant& dtDate, Variant& pID) {
  std::string out = "<table cellspadding=2 cellspacing=1 width=100% >" + kCrLf;
  Variant day = GetPrevMonday(dtDate);
  for (int i = 0; i < 7; ++i) {
    Variant plans = GetPersonDay(day, pID);
    std::string text = day.Text();
    out += "<tr><td class='schh' nowrap><br>星期" + scheduling::WeekdayName(AsDate(day)) + "<br>&nbsp;" +
           text + "&nbsp;<br><td></td><td width=100% class=td1 onclick=manage('" + text + "');>&nbsp;" +
           Replace(plans.Text(), "||", "<br>") + "</td></tr>";
    day = DateVariant(AddDays(AsDate(day), 1));
  }
  out += "</table>" + kCrLf;
  return Variant(out);
}

Variant scheduler::GetName(Variant& pID) {
  auto rs = OpenRecordset(
      "select personName,personDuty.dutyName from person,personDuty where person.dutyID = "
      "personDuty.dutyID AND personID=" +
      pID.Text());
  std::string name = "未名";
  if (!rs->Eof()) name = rs->Field("personName").Text() + "-" + rs->Field("dutyName").Text();
  rs->Close();
  return Variant(name);
}

}  // namespace corvane
