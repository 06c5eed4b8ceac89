// The staff calendar pages the scheduler links to: a person's week and month, the leaders' week and
// month over all staff (leader*) and over the managers (leader2*), and manage.asp, where a person
// edits their own plans.
#include "corvane/dates.h"
#include "pages.h"
#include "table_page.h"

namespace corvane::site {

namespace {

enum class View { PersonWeek, PersonMonth, LeaderWeek, LeaderMonth, Leader2Week, Leader2Month };

// The date the page shows: "dt" of the request, else today.
Variant ShownDate(PageContext& p) {
  std::string dt = Param(p, "dt");
  if (auto parsed = ParseDateText(dt)) return Variant::FromDate(DateOnly(*parsed));
  return Variant::FromDate(DateOnly(Now()));
}

// The person the page is about: "personID" of the request, else the signed-in person.
Variant ShownPerson(PageContext& p) {
  std::string id = Param(p, "personID");
  bool digits = !id.empty() && id.size() < 9;
  for (char c : id) digits = digits && c >= '0' && c <= '9';
  return digits ? Variant(std::stol(id)) : Variant(PersonID(p));
}

void CalendarPage(PageContext& p, View view) {
  if (!RequireSignIn(p)) return;
  const Variant dt = ShownDate(p);
  const Variant pID = ShownPerson(p);
  const bool week = view == View::PersonWeek || view == View::LeaderWeek || view == View::Leader2Week;
  const char* which = view == View::PersonWeek    ? "w"
                      : view == View::PersonMonth ? "m"
                      : view == View::LeaderWeek  ? "lw"
                      : view == View::LeaderMonth ? "lm"
                      : view == View::Leader2Week ? "lw2"
                                                  : "lm2";

  Object sch = p.Server.CreateObject("corvane.scheduler");
  if (DebugOn(p)) Call(sch, "DebugMode");
  Call(sch, "Init", {Variant(ConnStr(p))});
  WriteHead(p, "日程安排", "<link rel=\"stylesheet\" href=\"/include/style.css\" type=\"text/css\">\r\n",
            "class=calendar");
  Call(sch, "SetDispStyle", {Variant(1)});
  p.Response.Write(Call(sch, "DispSwitch", {dt, pID, Variant(which)}));

  std::string caption;
  if (view == View::PersonWeek || view == View::PersonMonth)
    caption = Call(sch, "GetName", {pID}).Text();
  else
    caption = view == View::LeaderWeek || view == View::LeaderMonth ? "全体人员" : "各级经理";
  p.Response.Write("<div class=calhead><span class=who>" + Html(caption) + "</span> <span class=select>");
  p.Response.Write(Call(sch, week ? "DispWeekSelect" : "DispMonthSelect", {dt, pID}));
  p.Response.Write("</span></div>\r\n");

  switch (view) {
    case View::PersonWeek: p.Response.Write(Call(sch, "DispWeek", {dt, pID})); break;
    case View::PersonMonth: p.Response.Write(Call(sch, "DispMonth", {dt, pID})); break;
    default: {
      // Leaders see everyone (leader*) or the managers only (leader2*); the tables end here.
      Variant cond(view == View::LeaderWeek || view == View::LeaderMonth ? "1=1" : "person.dutyID<=3");
      p.Response.Write(Call(sch, week ? "DispLeaderWeek" : "DispLeaderMonth", {dt, cond}));
      p.Response.Write("</table>\r\n");
    }
  }
  p.Response.Write(Call(sch, "DispScript", {pID}));
  p.Response.Write(
      "<p class=legend><span class=Office>本部</span> <span class=Beijing>北京</span> "
      "<span class=Outside>外地</span> <span class=Aboad>国外</span></p>");
  WriteFoot(p);
}

// The signed-in person's plans on DNA; a click on a day of one's own calendar comes here with that
// day, which becomes the default of empty date fields.
void Manage(PageContext& p) {
  if (!RequireSignIn(p)) return;
  if (auto dt = ParseDateText(Param(p, "dt"))) p.Session.Set("sc_curdate", Variant(DateText(DateOnly(*dt))));
  std::string me = std::to_string(PersonID(p));
  std::string dt = p.Session.Get("sc_curdate").Text();
  TablePage(
      p,
      {.title = "安排日程",
       .sql = "select planID,planStartTime,planEndTime,planAddrTypeID,planAddrID,planTypeID,planContent,"
              "planFlagID,personID from personPlan where personID=" +
              me + " order by planStartTime DESC,planID",
       .captions = "编号,开始日期,结束日期,地点类别,地点,类别,内容,公开,人员",
       .codeSql = "planID;planStartTime;planEndTime;select planAddrTypeName,planAddrTypeID from planAddrType;"
                  "select planAddrName,planAddrID from planAddr;select planTypeName,planTypeID from planType;"
                  "planContent;select planFlagName,planFlagID from planFlag;"
                  "select personName,personID from person",
       .above = "<p class=links><a href='personWeek.asp?personID=" + me + "&dt=" + dt +
                "'>周计划</a> <a href='personMonth.asp?personID=" + me + "&dt=" + dt +
                "'>月计划</a></p>\r\n"});
}

}  // namespace

void RegisterCalendarPages(server::PageRegistry& pages) {
  pages.Add("/scheduler/personWeek.asp", [](PageContext& p) { CalendarPage(p, View::PersonWeek); });
  pages.Add("/scheduler/personMonth.asp", [](PageContext& p) { CalendarPage(p, View::PersonMonth); });
  pages.Add("/scheduler/leaderWeek.asp", [](PageContext& p) { CalendarPage(p, View::LeaderWeek); });
  pages.Add("/scheduler/leaderMonth.asp", [](PageContext& p) { CalendarPage(p, View::LeaderMonth); });
  pages.Add("/scheduler/leader2Week.asp", [](PageContext& p) { CalendarPage(p, View::Leader2Week); });
  pages.Add("/scheduler/leader2Month.asp", [](PageContext& p) { CalendarPage(p, View::Leader2Month); });
  pages.Add("/scheduler/manage.asp", Manage);
}

}  // namespace corvane::site
