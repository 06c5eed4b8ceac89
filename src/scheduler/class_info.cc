// The scheduler's class identity, member dispatch ids and late-bound dispatch.
//
// Dispatch ids follow the declaration order of the class module, one counter for all members: the
// public module variable strURL first (0x40030000), then the methods (0x60030000 + n).
#include <memory>

#include "corvane/error.h"
#include "runtime/args.h"
#include "scheduler/scheduler.h"

namespace corvane {

namespace {

enum : int32_t {
  kStrURL = 0x40030000,
  kOnStartPage = 0x60030001,
  kOnEndPage,
  kDebugMode,
  kInit,
  kOpenDB,
  kGetFirstMonday,
  kCountWeek,
  kGetPrevMonday,
  kGetPersonDay,
  kGetPersonDay2,
  kDispWeek,
  kDispMonth,
  kDispMonthHeader,
  kDispMonthContent,
  kDispPersonWeek,
  kDispPersonMonth,
  kDispMonthSelect,
  kDispWeekSelect,
  kDispSwitch,
  kDispScript,
  kGetName,
  kSetDispStyle,
  kDispLeaderWeek,
  kDispLeaderMonth,
  kDispLeaderWeekHeader,
  kDispLeaderMonthHeader,
  kDispLeaderWeekContent,
  kDispLeaderMonthContent,
  kGetMenu,
};

}  // namespace

const ClassInfo& SchedulerClass() {
  static const ClassInfo info{
      .className = "scheduler",
      .progID = "corvane.scheduler",
      .clsid = "{219488bb-443e-45c6-8794-6dec25a5921f}",
      .iid = "{a7eb1faf-f06d-4d97-8221-502b9b55c1c3}",
      .members =
          {
              {"strURL", kStrURL},
              {"OnStartPage", kOnStartPage},
              {"OnEndPage", kOnEndPage},
              {"DebugMode", kDebugMode},
              {"Init", kInit},
              {"openDB", kOpenDB},
              {"GetFirstMonday", kGetFirstMonday},
              {"CountWeek", kCountWeek},
              {"GetPrevMonday", kGetPrevMonday},
              {"GetPersonDay", kGetPersonDay},
              {"GetPersonDay2", kGetPersonDay2},
              {"DispWeek", kDispWeek},
              {"DispMonth", kDispMonth},
              {"DispMonthHeader", kDispMonthHeader},
              {"DispMonthContent", kDispMonthContent},
              {"DispPersonWeek", kDispPersonWeek},
              {"DispPersonMonth", kDispPersonMonth},
              {"DispMonthSelect", kDispMonthSelect},
              {"DispWeekSelect", kDispWeekSelect},
              {"DispSwitch", kDispSwitch},
              {"DispScript", kDispScript},
              {"GetName", kGetName},
              {"SetDispStyle", kSetDispStyle},
              {"DispLeaderWeek", kDispLeaderWeek},
              {"DispLeaderMonth", kDispLeaderMonth},
              {"DispLeaderWeekHeader", kDispLeaderWeekHeader},
              {"DispLeaderMonthHeader", kDispLeaderMonthHeader},
              {"DispLeaderWeekContent", kDispLeaderWeekContent},
              {"DispLeaderMonthContent", kDispLeaderMonthContent},
              {"GetMenu", kGetMenu},
          },
      .create = [] { return Object(std::make_shared<scheduler>()); },
  };
  return info;
}

const ClassInfo& scheduler::Info() const { return SchedulerClass(); }

Variant scheduler::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kStrURL:
      if (IsPropertyWrite(kind)) {
        if (args.empty()) throw Error::ArgumentNotOptional();
        strURL = args.back().ToString();
        return {};
      }
      return Variant(strURL);
    case kOnStartPage: return OnStartPage(RefArg(args, 0));
    case kOnEndPage: return OnEndPage();
    case kDebugMode: DebugMode(); return {};
    case kInit: Init(RefArg(args, 0)); return {};
    case kOpenDB: openDB(); return {};
    case kGetFirstMonday: return GetFirstMonday(Arg(args, 0));
    case kCountWeek: return CountWeek(Arg(args, 0));
    case kGetPrevMonday: return GetPrevMonday(Arg(args, 0));
    case kGetPersonDay: return GetPersonDay(RefArg(args, 0), RefArg(args, 1));
    case kGetPersonDay2: return GetPersonDay2(RefArg(args, 0), RefArg(args, 1));
    case kDispWeek: return DispWeek(RefArg(args, 0), RefArg(args, 1));
    case kDispMonth: return DispMonth(RefArg(args, 0), RefArg(args, 1));
    case kDispMonthHeader: return DispMonthHeader();
    case kDispMonthContent: return DispMonthContent(RefArg(args, 0), RefArg(args, 1));
    case kDispPersonWeek: return DispPersonWeek(RefArg(args, 0), RefArg(args, 1));
    case kDispPersonMonth: return DispPersonMonth(RefArg(args, 0), RefArg(args, 1));
    case kDispMonthSelect: return DispMonthSelect(RefArg(args, 0), RefArg(args, 1));
    case kDispWeekSelect: return DispWeekSelect(RefArg(args, 0), RefArg(args, 1));
    case kDispSwitch: return DispSwitch(RefArg(args, 0), RefArg(args, 1), RefArg(args, 2));
    case kDispScript: return DispScript(RefArg(args, 0));
    case kGetName: return GetName(RefArg(args, 0));
    case kSetDispStyle: SetDispStyle(RefArg(args, 0)); return {};
    case kDispLeaderWeek: return DispLeaderWeek(RefArg(args, 0), RefArg(args, 1));
    case kDispLeaderMonth: return DispLeaderMonth(RefArg(args, 0), RefArg(args, 1));
    case kDispLeaderWeekHeader: return DispLeaderWeekHeader(Arg(args, 0));
    case kDispLeaderMonthHeader: return DispLeaderMonthHeader(Arg(args, 0));
    case kDispLeaderWeekContent: return DispLeaderWeekContent(RefArg(args, 0), RefArg(args, 1));
    case kDispLeaderMonthContent: return DispLeaderMonthContent(RefArg(args, 0), RefArg(args, 1));
    case kGetMenu: return GetMenu(RefArg(args, 0));
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane
