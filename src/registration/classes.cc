// The registry of creatable classes. Adding a class is one line in the table below: its ClassInfo
// (ProgID, CLSID, IID, member table and factory) lives beside the class, in its <class>_members.cc.
// The five components make up the type library "corvane" 1.0, {103e74ae-b907-42b4-89b2-78fa5a63d531};
// the data-access classes are the platform's own.
#include <string>

#include "asp_http/asp_http.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "corvane/registry.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "permission/permission.h"
#include "scheduler/scheduler.h"
#include "script/regexp.h"
#include "scripting/scripting.h"
#include "upload/system_init.h"

namespace corvane {

const std::vector<const ClassInfo*>& RegisteredClasses() {
  static const std::vector<const ClassInfo*> classes = {
      &AspHttpClass(),
      &DNAClass(),
      &PermissionClass(),
      &ado::ConnectionClass(),
      &ado::RecordsetClass(),
      &SchedulerClass(),
      &SystemInitClass(),
      &scripting::DictionaryClass(),
      &scripting::FileSystemObjectClass(),
      &scripting::StreamClass(),
      &scripting::ArrayListClass(),
      &scripting::PasswordClass(),
      &scripting::SignInThrottleClass(),
      &script::RegExpClass(),
  };
  return classes;
}

namespace {

// "{ABC}" and "abc" name the same CLSID.
std::string_view StripBraces(std::string_view id) {
  if (id.size() >= 2 && id.front() == '{' && id.back() == '}') return id.substr(1, id.size() - 2);
  return id;
}

}  // namespace

const ClassInfo* FindClass(std::string_view name) {
  for (const ClassInfo* c : RegisteredClasses()) {
    if (EqualsNoCase(c->progID, name)) return c;
    if (!c->clsid.empty() && EqualsNoCase(StripBraces(c->clsid), StripBraces(name))) return c;
  }
  return nullptr;
}

Object CreateObject(std::string_view progIDOrClsid) {
  const ClassInfo* c = FindClass(progIDOrClsid);
  if (!c || !c->create) throw Error::CannotCreateObject(std::string(progIDOrClsid));
  return c->create();
}

}  // namespace corvane
