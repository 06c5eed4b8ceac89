// corvane.Permission's identity, its members' dispatch ids, and late-bound dispatch.
//
// The interface numbers its members in declaration order, one counter for all of them: three private
// variables take 0 to 2, the Session variable 3, the documented methods 4 to 14, and the page
// attachment, openDB and PrintDebug follow at 15 to 18.
#include <memory>
#include <string>

#include "corvane/error.h"
#include "permission/permission.h"
#include "runtime/args.h"

namespace corvane {

namespace {

enum PermissionDispId : int32_t {
  kSession = 0x40030003,
  kDispMenuItem = 0x60030004,
  kDispAccessMenuItem = 0x60030005,
  kDispGroup = 0x60030006,
  kAddGroup = 0x60030007,
  kdelGroup = 0x60030008,
  kSavePermission = 0x60030009,
  kSavePerson = 0x6003000a,
  kDispPerson = 0x6003000b,
  kGetPersonAccess = 0x6003000c,
  kGetMenu1 = 0x6003000d,
  kGetMenu23 = 0x6003000e,
  kOnStartPage = 0x6003000f,
  kOnEndPage = 0x60030010,
  kopenDB = 0x60030011,
  kPrintDebug = 0x60030012,
};

}  // namespace

const ClassInfo& PermissionClass() {
  static const ClassInfo info{
      .className = "Permission",
      .progID = "corvane.Permission",
      .clsid = "{cc80cf41-6eb7-401c-94ce-ea80508c1fab}",
      .iid = "{c102ad68-952f-4f2c-ad4a-104c630d343b}",
      .members =
          {
              {"Session", kSession},
              {"DispMenuItem", kDispMenuItem},
              {"DispAccessMenuItem", kDispAccessMenuItem},
              {"DispGroup", kDispGroup},
              {"AddGroup", kAddGroup},
              {"delGroup", kdelGroup},
              {"SavePermission", kSavePermission},
              {"SavePerson", kSavePerson},
              {"DispPerson", kDispPerson},
              {"GetPersonAccess", kGetPersonAccess},
              {"GetMenu1", kGetMenu1},
              {"GetMenu23", kGetMenu23},
              {"OnStartPage", kOnStartPage},
              {"OnEndPage", kOnEndPage},
              {"openDB", kopenDB},
              {"PrintDebug", kPrintDebug},
          },
      .create = [] { return Object(std::make_shared<Permission>()); },
  };
  return info;
}

const ClassInfo& Permission::Info() const { return PermissionClass(); }

Variant Permission::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kSession:
      if (kind == InvokeKind::PropertyPutRef) {
        if (args.empty()) throw Error::ArgumentNotOptional();
        SetSession(args.back());
        return {};
      }
      // An object property is replaced with Set only; a plain assignment has nothing to assign.
      if (kind == InvokeKind::PropertyPut) throw Error::NoSuchMember("Session");
      return Session();
    case kDispMenuItem: return DispMenuItem();
    case kDispAccessMenuItem: {
      // A 16-bit parameter: the caller's value is converted as CInt converts it.
      int16_t groupID = RefArg(args, 0).ToInteger();
      return DispAccessMenuItem(groupID);
    }
    case kDispGroup: return DispGroup();
    case kAddGroup: return AddGroup(RefArg(args, 0));
    case kdelGroup: return delGroup(RefArg(args, 0));
    case kSavePermission: return SavePermission(RefArg(args, 0), RefArg(args, 1));
    case kSavePerson: return SavePerson(RefArg(args, 0), RefArg(args, 1));
    case kDispPerson: return DispPerson(RefArg(args, 0));
    case kGetPersonAccess: GetPersonAccess(); return {};
    case kGetMenu1: return GetMenu1(RefArg(args, 0));
    case kGetMenu23: return GetMenu23(Arg(args, 0));
    case kOnStartPage: return OnStartPage(RefArg(args, 0));
    case kOnEndPage: return OnEndPage();
    case kopenDB: openDB(RefArg(args, 0)); return {};
    case kPrintDebug: PrintDebug(RefArg(args, 0)); return {};
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane
