// scheduler as scripts see it: ProgID, class and interface ids, and the members with their dispatch
// ids. The ids follow the declaration order of the class module, one counter for all members: the
// public module variable strURL first (0x40030000), then the methods (0x60030000 + n).
#include "runtime/members.h"
#include "scheduler/scheduler.h"

namespace corvane {

namespace {

// Most members take two Variants by reference (a date, then a person or a condition).
template <Variant (scheduler::*F)(Variant&, Variant&)>
MemberInfo TwoByRef(std::string_view name, int32_t dispid) {
  return Method<scheduler>(name, dispid,
                           [](scheduler& s, Args& a) { return (s.*F)(RefArg(a, 0), RefArg(a, 1)); });
}

}  // namespace

const ClassInfo& SchedulerClass() {
  static const ClassInfo info{
      .className = "scheduler",
      .progID = "corvane.scheduler",
      .clsid = "{219488bb-443e-45c6-8794-6dec25a5921f}",
      .iid = "{a7eb1faf-f06d-4d97-8221-502b9b55c1c3}",
      .members =
          {
              Property<&scheduler::strURL>("strURL", 0x40030000),
              Method<scheduler>("OnStartPage", 0x60030001,
                                [](scheduler& s, Args& a) { return s.OnStartPage(RefArg(a, 0)); }),
              Method<scheduler>("OnEndPage", 0x60030002, [](scheduler& s, Args&) { return s.OnEndPage(); }),
              Method<scheduler>("DebugMode", 0x60030003, [](scheduler& s, Args&) { s.DebugMode(); }),
              Method<scheduler>("Init", 0x60030004, [](scheduler& s, Args& a) { s.Init(RefArg(a, 0)); }),
              Method<scheduler>("openDB", 0x60030005, [](scheduler& s, Args&) { s.openDB(); }),
              Method<scheduler>("GetFirstMonday", 0x60030006,
                                [](scheduler& s, Args& a) { return s.GetFirstMonday(Arg(a, 0)); }),
              Method<scheduler>("CountWeek", 0x60030007,
                                [](scheduler& s, Args& a) { return s.CountWeek(Arg(a, 0)); }),
              Method<scheduler>("GetPrevMonday", 0x60030008,
                                [](scheduler& s, Args& a) { return s.GetPrevMonday(Arg(a, 0)); }),
              TwoByRef<&scheduler::GetPersonDay>("GetPersonDay", 0x60030009),
              TwoByRef<&scheduler::GetPersonDay2>("GetPersonDay2", 0x6003000A),
              TwoByRef<&scheduler::DispWeek>("DispWeek", 0x6003000B),
              TwoByRef<&scheduler::DispMonth>("DispMonth", 0x6003000C),
              Method<scheduler>("DispMonthHeader", 0x6003000D,
                                [](scheduler& s, Args&) { return s.DispMonthHeader(); }),
              TwoByRef<&scheduler::DispMonthContent>("DispMonthContent", 0x6003000E),
              TwoByRef<&scheduler::DispPersonWeek>("DispPersonWeek", 0x6003000F),
              TwoByRef<&scheduler::DispPersonMonth>("DispPersonMonth", 0x60030010),
              TwoByRef<&scheduler::DispMonthSelect>("DispMonthSelect", 0x60030011),
              TwoByRef<&scheduler::DispWeekSelect>("DispWeekSelect", 0x60030012),
              Method<scheduler>("DispSwitch", 0x60030013,
                                [](scheduler& s, Args& a) {
                                  return s.DispSwitch(RefArg(a, 0), RefArg(a, 1), RefArg(a, 2));
                                }),
              Method<scheduler>("DispScript", 0x60030014,
                                [](scheduler& s, Args& a) { return s.DispScript(RefArg(a, 0)); }),
              Method<scheduler>("GetName", 0x60030015,
                                [](scheduler& s, Args& a) { return s.GetName(RefArg(a, 0)); }),
              Method<scheduler>("SetDispStyle", 0x60030016,
                                [](scheduler& s, Args& a) { s.SetDispStyle(RefArg(a, 0)); }),
              TwoByRef<&scheduler::DispLeaderWeek>("DispLeaderWeek", 0x60030017),
              TwoByRef<&scheduler::DispLeaderMonth>("DispLeaderMonth", 0x60030018),
              Method<scheduler>("DispLeaderWeekHeader", 0x60030019,
                                [](scheduler& s, Args& a) { return s.DispLeaderWeekHeader(Arg(a, 0)); }),
              Method<scheduler>("DispLeaderMonthHeader", 0x6003001A,
                                [](scheduler& s, Args& a) { return s.DispLeaderMonthHeader(Arg(a, 0)); }),
              TwoByRef<&scheduler::DispLeaderWeekContent>("DispLeaderWeekContent", 0x6003001B),
              TwoByRef<&scheduler::DispLeaderMonthContent>("DispLeaderMonthContent", 0x6003001C),
              Method<scheduler>("GetMenu", 0x6003001D,
                                [](scheduler& s, Args& a) { return s.GetMenu(RefArg(a, 0)); }),
          },
      .create = Create<scheduler>,
  };
  return info;
}

const ClassInfo& scheduler::Info() const { return SchedulerClass(); }

}  // namespace corvane
