// The leader views: one row per person of the signed-in user's system that matches the page's
// condition, with that person's week or month cells; and the same staff as navigation-bar entries.
#include "corvane/dates.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

using scheduling::AsDate;
using scheduling::kCrLf;

// `strCond` is the page's raw SQL condition and must not be empty; a missing "systemID" or an empty
// condition leaves the query without an operand and the database rejects it.
std::string scheduler::StaffQuery(const Variant& strCond) const {
  return " select person.personID,person.personName,person.dutyID,personDuty.dutyName from "
         "person,personDuty where  person.DutyID=personDuty.DutyID and systemID=" +
         SessionValue("systemID").Text() + " and " + strCond.Text() + " order by person.dutyID ";
}

// The header, then the content rows appended to the same text (a month view of a large staff runs
// to hundreds of kilobytes: one buffer rather than three).
Variant scheduler::DispLeaderWeek(Variant& dtDate, Variant& strCond) {
  std::string out = DispLeaderWeekHeader(dtDate).Text();
  AppendLeaderRows(out, dtDate, strCond, &scheduler::DispPersonWeek);
  return Variant(std::move(out));
}

Variant scheduler::DispLeaderMonth(Variant& dtDate, Variant& strCond) {
  std::string out = DispLeaderMonthHeader(dtDate).Text();
  AppendLeaderRows(out, dtDate, strCond, &scheduler::DispPersonMonth);
  return Variant(std::move(out));
}

// The name column, then the seven days from the Monday on or before dtDate, each as "星期<name><br>"
// and the date (a Monday given as text shows as that text).
Variant scheduler::DispLeaderWeekHeader(const Variant& dtDate) {
  std::string out = "<table cellspadding=0 cellspacing=1 width=100% height=85%>" + kCrLf +
                    "<tr class='schh'>" + "<th height='23' nowrap>姓名</th>";
  Variant day = GetPrevMonday(dtDate);
  for (int i = 0; i < 7; ++i) {
    out +=
        "<th height='23' nowrap>星期" + scheduling::WeekdayName(AsDate(day)) + "<br>" + day.Text() + "</th>";
    day = scheduling::DateVariant(AddDays(AsDate(day), 1));
  }
  out += "</tr>" + kCrLf;
  return Variant(out);
}

Variant scheduler::DispLeaderMonthHeader(const Variant& dtDate) {
  double date = AsDate(dtDate);
  std::string out = "<table cellspadding=0 cellspacing=1 width=100% >" + kCrLf +
                    "<tr class='schh'><th nowrap>姓&nbsp;&nbsp;名</th>";
  for (double d = DateSerial(Year(date), Month(date), 1); Month(d) == Month(date); d = AddDays(d, 1))
    out += "<th height='23' nowrap>" + std::to_string(Day(d)) + "<br>" + scheduling::WeekdayName(d) + "</th>";
  out += "</tr>" + kCrLf;
  return Variant(out);
}

namespace {

// Staff columns are read by position: 0 the person's id, 1 the name.
constexpr int kPersonID = 0;
constexpr int kPersonName = 1;

}  // namespace

// One row per person: the name, then the person's day cells from `cells` (DispPersonWeek or
// DispPersonMonth), so the rows show public plans only.
void scheduler::AppendLeaderRows(std::string& out, Variant& dtDate, const Variant& strCond,
                                 Variant (scheduler::*cells)(Variant&, Variant&)) {
  auto rs = OpenRecordset(StaffQuery(strCond));
  while (!rs->Eof()) {
    Variant id = rs->Field(kPersonID);
    out += "<tr><td class=td2 nowrap>";
    out += rs->Field(kPersonName).Text();
    out += "</td>";
    Variant row = (this->*cells)(dtDate, id);
    out += row.StringPtr() ? *row.StringPtr() : row.Text();
    out += "</tr>";
    out += kCrLf;
    rs->MoveNext();
  }
  rs->Close();
}

Variant scheduler::DispLeaderWeekContent(Variant& dtDate, Variant& strCond) {
  std::string out;
  AppendLeaderRows(out, dtDate, strCond, &scheduler::DispPersonWeek);
  return Variant(std::move(out));
}

Variant scheduler::DispLeaderMonthContent(Variant& dtDate, Variant& strCond) {
  std::string out;
  AppendLeaderRows(out, dtDate, strCond, &scheduler::DispPersonMonth);
  return Variant(std::move(out));
}

// One "outlookbar.additem" line per person; the page's script defines the bar and the group `t`.
// Names go into the script unescaped.
Variant scheduler::GetMenu(Variant& strCond) {
  std::string sql = StaffQuery(strCond);
  WriteTrace("//" + sql);
  auto rs = OpenRecordset(sql);
  std::string out;
  while (!rs->Eof()) {
    out += "outlookbar.additem('" + rs->Field(kPersonName).Text() +
           "',t,'../scheduler/personMonth.asp?personID=" + rs->Field(kPersonID).Text() +
           "&rnd=" + SessionValue("rnd").Text() + "');" + kCrLf;
    rs->MoveNext();
  }
  rs->Close();
  return Variant(out);
}

}  // namespace corvane
