// SystemInit as scripts see it: identity, members, dispatch ids. The five settings can only be set,
// count only read.
#include "runtime/members.h"
#include "upload/system_init.h"

namespace corvane {

const ClassInfo& SystemInitClass() {
  static const ClassInfo info{
      .className = "SystemInit",
      .progID = "corvane.SystemInit",
      .clsid = "{3f4f3461-be35-4ba8-b320-37e41db10371}",
      .iid = "{424a8184-ec49-4749-873c-02170ee6de50}",
      .members =
          {
              Writer<SystemInit>("OverWrite", 0x68030000,
                                 [](SystemInit& u, const Variant& v) { u.OverWrite(v.ToInteger()); }),
              Writer<SystemInit>("Path", 0x68030001,
                                 [](SystemInit& u, const Variant& v) { u.Path(v.ToString()); }),
              Writer<SystemInit>("MaxSize", 0x68030002,
                                 [](SystemInit& u, const Variant& v) { u.MaxSize(v.ToLong()); }),
              Reader<SystemInit>("count", 0x68030003, [](SystemInit& u) { return u.count(); }),
              Writer<SystemInit>("NewFileName", 0x68030004,
                                 [](SystemInit& u, const Variant& v) { u.NewFileName(v.ToString()); }),
              Writer<SystemInit>("UpToFile", 0x68030005,
                                 [](SystemInit& u, const Variant& v) { u.UpToFile(v.ToLong()); }),
              Method<SystemInit>("OnStartPage", 0x60030006,
                                 [](SystemInit& u, Args& a) { u.OnStartPage(RefArg(a, 0)); }),
              Method<SystemInit>("OnEndPage", 0x60030007, [](SystemInit& u, Args&) { u.OnEndPage(); }),
              Method<SystemInit>("Upload", 0x60030008,
                                 [](SystemInit& u, Args& a) {
                                   return u.Upload(OptionalArg(a, 0), OptionalArg(a, 1), OptionalArg(a, 2));
                                 }),
              Method<SystemInit>("FileName", 0x60030009,
                                 [](SystemInit& u, Args& a) { return u.FileName(RefArg(a, 0)); }),
              Method<SystemInit>("Size", 0x6003000a,
                                 [](SystemInit& u, Args& a) { return u.Size(RefArg(a, 0)); }),
              Method<SystemInit>("Form", 0x6003000b,
                                 [](SystemInit& u, Args& a) { return u.Form(RefArg(a, 0)); }),
          },
      .create = Create<SystemInit>,
  };
  return info;
}

const ClassInfo& SystemInit::Info() const { return SystemInitClass(); }

}  // namespace corvane
