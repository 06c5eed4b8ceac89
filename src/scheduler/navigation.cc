// Period navigation (month and week selects), the tab strip between the month, week and summary
// pages, and the client script behind a click on a day.
#include <array>

#include "corvane/dates.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

using scheduling::AsDate;
using scheduling::kCrLf;

namespace {

// Seconds since midnight, only there to defeat caching.
std::string TimerText() { return Variant(Timer()).Text(); }

struct Arrow {
  int months;
  int days;
  std::string_view closing;
};

// The four arrows around the label: back far, back near, forward near, forward far.
constexpr std::array<Arrow, 4> kMonthArrows{{
    {-12, 0, "'>&nbsp;<img src='../Images/jian3.gif'  border='0' align='absmiddle'></a>"},
    {-1, 0, "'>&nbsp;<img src='../Images/jian1.gif'  border='0' align='absmiddle'>&nbsp;</a>"},
    {1, 0, "'>&nbsp;<img src='../Images/jian2.gif'  border='0' align='absmiddle'></a>"},
    {12, 0, "'>&nbsp;<img src='../Images/jian4.gif'  border='0' align='absmiddle'>&nbsp;</a>"},
}};
constexpr std::array<Arrow, 4> kWeekArrows{{
    {-1, 0, "'>&nbsp;<img src='../Images/jian3.gif'  border='0' align='absmiddle'></a> "},
    {0, -7, "'>&nbsp;<img src='../Images/jian1.gif'  border='0' align='absmiddle'>&nbsp;</a> "},
    {0, 7, "'>&nbsp;<img src='../Images/jian2.gif'  border='0' align='absmiddle'></a> "},
    {1, 0, "'>&nbsp;<img src='../Images/jian4.gif'  border='0' align='absmiddle'>&nbsp;</a> "},
}};

std::string PeriodSelect(const std::string& url, const Variant& pID, const Variant& rnd, double date,
                         const std::array<Arrow, 4>& arrows, const std::string& label) {
  auto link = [&](const Arrow& a) {
    double target = a.months ? AddMonths(date, a.months) : AddDays(date, a.days);
    return "<a href='" + url + "?personID=" + pID.Text() + "&dt=" + DateText(target) + "&t=" + TimerText() +
           "&rnd=" + rnd.Text() + std::string(a.closing);
  };
  return link(arrows[0]) + link(arrows[1]) + label + link(arrows[2]) + link(arrows[3]);
}

}  // namespace

Variant scheduler::DispMonthSelect(Variant& dtDate, Variant& pID) {
  double date = AsDate(dtDate);
  std::string label = std::to_string(Year(date)) + "年" + std::to_string(Month(date)) + "月";
  return Variant(PeriodSelect(strURL, pID, SessionValue("rnd"), date, kMonthArrows, label));
}

// The label numbers the week as CountWeek does (a Monday still counts in the week before it).
Variant scheduler::DispWeekSelect(Variant& dtDate, Variant& pID) {
  double date = AsDate(dtDate);
  std::string label = std::to_string(Year(date)) + "年" + std::to_string(Month(date)) + "月第" +
                      CountWeek(dtDate).Text() + "周";
  return Variant(PeriodSelect(strURL, pID, SessionValue("rnd"), date, kWeekArrows, label));
}

namespace {

constexpr std::string_view kImageSchh2 =
    "<th  class='schh'><img src='../Images/niuban.gif' width='22' height='22'></th>";
constexpr std::string_view kImageTd2 =
    "<th class='td2'><img src='../Images/niuban.gif' width='22' height='22'></th>";
constexpr std::string_view kImageTd2Wide =
    "<th  class='td2'><img src='../Images/niuban.gif' width='22' height='22'></th>";
constexpr std::string_view kImageSchh =
    "<th class='schh'><img src='../Images/niuban.gif' width='22' height='22'></th>";

// The cells of one tab strip: the active tab's label, its image cell, the link to the other page
// (page literal before the id, label literal after the link's parameters) and that tab's image cell.
// A month tab comes first on the month pages, a week tab first on the week pages.
struct Tabs {
  std::string_view which;
  bool monthActive;
  std::string_view active;     // the active tab's cell
  std::string_view linkStart;  // up to "personID="
};

constexpr std::array<Tabs, 6> kTabs{{
    {"m", true, "<tr><th nowrap class='schh'>&nbsp;月计划</th>",
     "<th class='td2' nowrap><a href='personWeek.asp?personID="},
    {"lm", true, "<tr><th nowrap class='schh'>&nbsp;月汇总</th>",
     "<th class='td2' nowrap><a href='leaderWeek.asp?personID="},
    {"lm2", true, "<tr><th nowrap class='schh'>&nbsp;月汇总</th>",
     "<th class='td2' nowrap><a href='leader2Week.asp?personID="},
    {"w", false, "<th class='schh' nowrap> &nbsp;周计划</th>",
     "<tr><th nowrap class='td2'><a href='personMonth.asp?personID="},
    {"lw", false, "<th class='schh' nowrap> &nbsp;周汇总</th>",
     "<tr><th nowrap class='td2'><a href='leaderMonth.asp?personID="},
    {"lw2", false, "<th class='schh' nowrap> &nbsp;周汇总</th>",
     "<tr><th nowrap class='td2'><a href='leader2Month.asp?personID="},
}};

}  // namespace

// The summary pages link with the plain "周计划"/"月计划" labels, and the "rnd" parameter goes out as
// "& rnd=" (arriving under a name with a leading blank): both as the site's pages expect them.
Variant scheduler::DispSwitch(Variant& dtDate, Variant& pID, Variant& strWhich) {
  const Tabs* tabs = nullptr;
  for (const Tabs& t : kTabs) {
    if (EqualsLiteral(strWhich, t.which)) {
      tabs = &t;
      break;
    }
  }
  if (!tabs) return Variant(std::string());

  const std::string crlf(kCrLf);
  std::string link = std::string(tabs->linkStart) + pID.Text() + "&dt=" + dtDate.Text() +
                     "&t=" + TimerText() + "& rnd=" + SessionValue("rnd").Text() +
                     (tabs->monthActive ? "'> &nbsp;周计划</a></th>" : "'>&nbsp;月计划</a></th>");
  std::string out = "<table width='100%' border='0' cellpadding='0' cellspacing='0'>" + crlf;
  if (tabs->monthActive) {
    out += std::string(tabs->active) + crlf + std::string(kImageSchh2) + crlf + link + crlf +
           std::string(kImageTd2) + crlf;
  } else {
    out += link + crlf + std::string(kImageTd2Wide) + crlf + std::string(tabs->active) + crlf +
           std::string(kImageSchh) + crlf;
  }
  out += "<th width='100%'>&nbsp;</th>" + crlf + "</tr>" + crlf + "</table>" + crlf;
  return Variant(out);
}

// manage(dt) opens the plan editor for the clicked day, on one's own calendar only; on anyone
// else's the function is empty.
Variant scheduler::DispScript(Variant& pID) {
  const std::string crlf(kCrLf);
  std::string out = "<script language='javascript'>" + crlf + " function manage(dt){" + crlf;
  if (scheduling::WholeNumbersEqual(pID, SessionValue("personID")))
    out += "     location.href='manage.asp?personID=" + pID.Text() +
           "&dt='+dt+'&rnd=" + SessionValue("rnd").Text() + "';";
  out += "}" + crlf + "</script>" + crlf;
  return Variant(out);
}

}  // namespace corvane
