// Reading one person's public plans for a range of days into the day slots.
#include "corvane/dates.h"
#include "scheduler/day_slots.h"
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

// Every plan that overlaps [S, E] marks each day from its start, stepping whole days while the step
// is still at or before its end: a plan ending earlier in the day than it started does not mark its
// last day. The range views show public plans only, to the owner as well.
void scheduler::ReadPlans(const Variant& pID, const Variant& S, const Variant& E,
                          scheduling::DaySlots& slots) {
  std::string sql = std::string(scheduling::kPlanQueryHead) + pID.Text() + " and planEndTime>='" + S.Text() +
                    "' and planStartTime<='" + E.Text() + "' " + " and planFlagID=1 order by planStartTime";
  WriteTrace(sql);

  auto rs = OpenRecordset(sql);
  while (!rs->Eof()) {
    Variant start = rs->Field("planStartTime");
    Variant end = rs->Field("planEndTime");
    if (!start.IsNull() && !end.IsNull()) {  // a Null time compares false: the plan marks no day
      Variant type1 = rs->Field("Type1");
      Variant type2 = rs->Field("Type2");
      Variant type1ID = rs->Field("Type1ID");
      double last = scheduling::AsDate(end);
      for (double day = scheduling::AsDate(start); day <= last; day = AddDays(day, 1))
        slots.AddPlan(Day(day), type1, type2, type1ID);
    }
    rs->MoveNext();
  }
}

}  // namespace corvane
