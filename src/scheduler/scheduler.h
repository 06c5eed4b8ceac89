// scheduler: the staff work-plan calendar.
//
// One object serves one page. The page creates "corvane.scheduler" (the host calls OnStartPage),
// optionally calls DebugMode, opens the database with Init(ConnStr) (or sets the string and calls
// openDB), then asks for views: each Disp*/Get* method returns its HTML as a Variant text for the page
// to write; only SetDispStyle writes to the response itself. OnEndPage stores "strURL" in the session,
// releases the host objects and closes the connection.
//
// Plans live in personPlan (joined with planAddrType and planAddr); staff in person and personDuty.
// The session values read are "personID" (the signed-in person), "systemID" (the staff group of the
// leader views) and "rnd" (carried along in every link).
//
// Arguments are Variants. Those the interface takes by reference are `Variant&`, the others
// `const Variant&`; no method changes its arguments. Nothing is trapped: a database, host or
// conversion error ends the call as a corvane::Error.
#pragma once

#include <memory>
#include <string>

#include "corvane/ado.h"
#include "corvane/object.h"
#include "corvane/variant.h"
#include "page_kit/page_kit.h"

namespace corvane {

namespace scheduling {
class DaySlots;
}

class scheduler : public Dispatch {
 public:
  const ClassInfo& Info() const override;

  // Page attachment, trace switch and connection (scheduler.cc).
  Variant OnStartPage(Variant& sc);
  Variant OnEndPage();
  void DebugMode();
  void Init(Variant& ConnStr);
  void openDB();
  // The page the period selects link to; starts as the page's own URL.
  std::string strURL;

  // Calendar arithmetic (calendar.cc). Weekdays count from Sunday = 1; "Monday" is weekday 2.
  // The Monday on or before the 1st of dtDate's month (a Date at midnight).
  Variant GetFirstMonday(const Variant& dtDate);
  // 1 plus the number of Mondays of dtDate's month that fall strictly before dtDate's day: a Monday
  // still belongs to the week before it.
  Variant CountWeek(const Variant& dtDate);
  // The Monday on or before dtDate, keeping its time of day; a Monday argument comes back exactly as
  // it was passed (a date text stays text).
  Variant GetPrevMonday(const Variant& dtDate);

  // Day cells (day_cells.cc).
  // The day's plans as nested "<span class=...>" items, each ending in "||"; others' private plans
  // are left out.
  Variant GetPersonDay(Variant& dt, Variant& personID);
  // One coloured "span" whose tooltip lists the day's public plans.
  Variant GetPersonDay2(Variant& dt, Variant& personID);

  // One person's views (person_views.cc).
  Variant DispWeek(Variant& dtDate, Variant& pID);
  Variant DispMonth(Variant& dtDate, Variant& pID);
  Variant DispMonthHeader();
  Variant DispMonthContent(Variant& dtDate, Variant& pID);
  Variant DispPersonWeek(Variant& dtDate, Variant& pID);
  Variant DispPersonMonth(Variant& dtDate, Variant& pID);
  Variant GetName(Variant& pID);

  // Navigation, tab strip, client script and style sheet (navigation.cc, style_sheet.cc).
  Variant DispMonthSelect(Variant& dtDate, Variant& pID);
  Variant DispWeekSelect(Variant& dtDate, Variant& pID);
  Variant DispSwitch(Variant& dtDate, Variant& pID, Variant& strWhich);
  Variant DispScript(Variant& pID);
  void SetDispStyle(Variant& nType);

  // Leader views over the staff of Session("systemID") that match strCond, and the staff menu
  // (leader_views.cc). The page closes the table after the content rows.
  Variant DispLeaderWeek(Variant& dtDate, Variant& strCond);
  Variant DispLeaderMonth(Variant& dtDate, Variant& strCond);
  Variant DispLeaderWeekHeader(const Variant& dtDate);
  Variant DispLeaderMonthHeader(const Variant& dtDate);
  Variant DispLeaderWeekContent(Variant& dtDate, Variant& strCond);
  Variant DispLeaderMonthContent(Variant& dtDate, Variant& strCond);
  Variant GetMenu(Variant& strCond);

 private:
  // Writes the hidden trace line when debug is on; nothing otherwise.
  void WriteTrace(const std::string& message);
  void CloseConnection();
  // Reads pID's public plans that touch [S, E] into the day slots (plan_reader.cc).
  void ReadPlans(const Variant& pID, const Variant& S, const Variant& E, scheduling::DaySlots& slots);
  // The staff query of the leader views and the menu, and the rows of the leader views.
  std::string StaffQuery(const Variant& strCond) const;
  void AppendLeaderRows(std::string& out, Variant& dtDate, const Variant& strCond,
                        Variant (scheduler::*cells)(Variant&, Variant&));
  Variant SessionValue(const char* key) const;
  std::shared_ptr<ado::Recordset> OpenRecordset(const std::string& sql);

  page_kit::PageObjects page_;
  bool bDebug = false;
  std::shared_ptr<ado::Connection> objConn;
  std::string strConn;
};

const ClassInfo& SchedulerClass();

}  // namespace corvane
