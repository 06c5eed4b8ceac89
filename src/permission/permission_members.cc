// corvane.Permission as scripts see it: identity, members, dispatch ids.
//
// The interface numbers its members in declaration order, one counter for all of them: three private
// variables take 0 to 2, the Session variable 3, the documented methods 4 to 14, and the page
// attachment, openDB and PrintDebug follow at 15 to 18.
#include "permission/permission.h"
#include "runtime/members.h"

namespace corvane {

const ClassInfo& PermissionClass() {
  static const ClassInfo info{
      .className = "Permission",
      .progID = "corvane.Permission",
      .clsid = "{cc80cf41-6eb7-401c-94ce-ea80508c1fab}",
      .iid = "{c102ad68-952f-4f2c-ad4a-104c630d343b}",
      .members =
          {
              // An object property: read, or replaced with Set; a plain assignment has nothing to assign.
              Custom<Permission>("Session", 0x40030003,
                                 MemberInfo::kRead | static_cast<int>(InvokeKind::PropertyPutRef),
                                 [](Permission& p, InvokeKind kind, Args& a) -> Variant {
                                   if (kind != InvokeKind::PropertyPutRef) return p.Session();
                                   p.SetSession(PropertyValue(a));
                                   return {};
                                 }),
              Method<Permission>("DispMenuItem", 0x60030004,
                                 [](Permission& p, Args&) { return p.DispMenuItem(); }),
              Method<Permission>("DispAccessMenuItem", 0x60030005,
                                 [](Permission& p, Args& a) {
                                   // A 16-bit parameter: the caller's value is converted as CInt converts it.
                                   int16_t groupID = RefArg(a, 0).ToInteger();
                                   return p.DispAccessMenuItem(groupID);
                                 }),
              Method<Permission>("DispGroup", 0x60030006, [](Permission& p, Args&) { return p.DispGroup(); }),
              Method<Permission>("AddGroup", 0x60030007,
                                 [](Permission& p, Args& a) { return p.AddGroup(RefArg(a, 0)); }),
              Method<Permission>("delGroup", 0x60030008,
                                 [](Permission& p, Args& a) { return p.delGroup(RefArg(a, 0)); }),
              Method<Permission>(
                  "SavePermission", 0x60030009,
                  [](Permission& p, Args& a) { return p.SavePermission(RefArg(a, 0), RefArg(a, 1)); }),
              Method<Permission>(
                  "SavePerson", 0x6003000a,
                  [](Permission& p, Args& a) { return p.SavePerson(RefArg(a, 0), RefArg(a, 1)); }),
              Method<Permission>("DispPerson", 0x6003000b,
                                 [](Permission& p, Args& a) { return p.DispPerson(RefArg(a, 0)); }),
              Method<Permission>("GetPersonAccess", 0x6003000c,
                                 [](Permission& p, Args&) { p.GetPersonAccess(); }),
              Method<Permission>("GetMenu1", 0x6003000d,
                                 [](Permission& p, Args& a) { return p.GetMenu1(RefArg(a, 0)); }),
              Method<Permission>("GetMenu23", 0x6003000e,
                                 [](Permission& p, Args& a) { return p.GetMenu23(Arg(a, 0)); }),
              Method<Permission>("OnStartPage", 0x6003000f,
                                 [](Permission& p, Args& a) { return p.OnStartPage(RefArg(a, 0)); }),
              Method<Permission>("OnEndPage", 0x60030010, [](Permission& p, Args&) { return p.OnEndPage(); }),
              Method<Permission>("openDB", 0x60030011,
                                 [](Permission& p, Args& a) { p.openDB(RefArg(a, 0)); }),
              Method<Permission>("PrintDebug", 0x60030012,
                                 [](Permission& p, Args& a) { p.PrintDebug(RefArg(a, 0)); }),
          },
      .create = Create<Permission>,
  };
  return info;
}

const ClassInfo& Permission::Info() const { return PermissionClass(); }

}  // namespace corvane
