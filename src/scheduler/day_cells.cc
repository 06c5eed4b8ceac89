// The text of one person's plans on one day, for a calendar cell.
#include "corvane/text.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

namespace {

// The plans that run at the moment `dt` (start at or before it, end at or after it). `dt` goes into
// the text as it is: a Date as the locale's date text, a text unchanged.
std::string DayQuery(const Variant& dt, const Variant& personID) {
  std::string day = dt.Text();
  return std::string(scheduling::kPlanQueryHead) + personID.Text() + " and planstartTime<='" + day +
         "' and planEndTime>='" + day + "' ";
}

constexpr std::string_view kPublicOnly = " and planFlagID=1";
constexpr std::string_view kByStart = " Order by planstartTime ";

}  // namespace

// Each new item wraps the items before it: its opening tag comes first, then everything so far, then
// its own number, names and closing tag. The week list depends on exactly this markup.
Variant scheduler::GetPersonDay(Variant& dt, Variant& personID) {
  std::string sql = DayQuery(dt, personID);
  if (scheduling::WholeNumbersDiffer(SessionValue("personID"), personID)) sql += kPublicOnly;
  sql += kByStart;

  auto rs = OpenRecordset(sql);
  std::string result;
  int item = 1;
  while (!rs->Eof()) {
    std::string cls = scheduling::LocationClass(rs->Field("Type1ID"));
    result = "<span class=" + cls + " style='width:100%;'> " + result + std::to_string(item) + "." +
             Trim(rs->Field("Type1").Text()) + ":" + Trim(rs->Field("Type2").Text()) + "&nbsp;</span>||";
    ++item;
    rs->MoveNext();
  }
  return Variant(result);
}

// Public plans only, whoever looks; the items run together without separators in the tooltip, and
// the mark takes the class of the last plan (none when there is no plan).
Variant scheduler::GetPersonDay2(Variant& dt, Variant& personID) {
  std::string sql = DayQuery(dt, personID) + std::string(kPublicOnly) + std::string(kByStart);

  auto rs = OpenRecordset(sql);
  std::string text;
  std::string cls;
  int item = 1;
  while (!rs->Eof()) {
    cls = scheduling::LocationClass(rs->Field("Type1ID"));
    text +=
        std::to_string(item) + "." + Trim(rs->Field("Type1").Text()) + ":" + Trim(rs->Field("Type2").Text());
    ++item;
    rs->MoveNext();
  }
  return Variant("<span class=" + cls + " title='" + text + "'>&nbsp;&nbsp;</span>");
}

}  // namespace corvane
