#include "script/script_object.h"

#include <array>
#include <utility>

#include "runtime/members.h"
#include "script/run_core.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

// Marks the class tables of script classes (compared by address).
constexpr std::string_view kScriptClassMark = "corvane.script.class";
// Members past this many are reachable from the interpreter only.
constexpr size_t kMaxHostMembers = 256;

template <size_t I>
Variant Trampoline(Dispatch& self, InvokeKind kind, Args& args) {
  return static_cast<ScriptObject&>(self).CallFromHost(static_cast<int>(I), kind, args);
}

template <size_t... I>
constexpr std::array<MemberInfo::Call, sizeof...(I)> MakeTrampolines(std::index_sequence<I...>) {
  return {&Trampoline<I>...};
}

constexpr auto kTrampolines = MakeTrampolines(std::make_index_sequence<kMaxHostMembers>());

int KindsOf(const ClassMember& m) {
  if (m.field >= 0) return MemberInfo::kRead | MemberInfo::kWrite;
  if (m.method) return MemberInfo::kMethod;
  int kinds = 0;
  if (m.get) kinds |= MemberInfo::kRead;
  if (m.let) kinds |= static_cast<int>(InvokeKind::PropertyPut);
  if (m.set) kinds |= static_cast<int>(InvokeKind::PropertyPutRef);
  return kinds;
}

RunCore* RunOf(const std::shared_ptr<RunLink>& link) {
  std::lock_guard lock(link->mutex);
  if (!link->run) throw Error(-2147418113, "The page that created the object has ended");
  return link->run;
}

}  // namespace

void BuildClassInfo(ClassDef& c) {
  c.info.className = c.name;
  c.info.iid = kScriptClassMark;
  c.info.members.clear();
  for (const auto& m : c.members) {
    if (!m->isPublic || static_cast<size_t>(m->index) >= kMaxHostMembers) continue;
    c.info.members.push_back({m->name, m->index + 1, KindsOf(*m), kTrampolines[m->index]});
  }
  if (const ClassMember* d = c.defaultMember; d && static_cast<size_t>(d->index) < kMaxHostMembers)
    c.info.members.push_back({"", 0, KindsOf(*d), kTrampolines[d->index]});
}

ScriptObject::ScriptObject(const ClassDef& cls, std::shared_ptr<const Unit> unit,
                           std::shared_ptr<RunLink> link)
    : cls_(cls), unit_(std::move(unit)), link_(std::move(link)), fields_(cls.fields.size()) {
  for (size_t i = 0; i < cls.fields.size(); ++i) {
    const FieldDecl& f = cls.fields[i];
    if (!f.isArray) continue;
    VariantArray a(f.bounds);
    a.fixed = !f.bounds.empty();
    fields_[i] = Variant::FromArray(std::move(a));
  }
}

ScriptObject* ScriptObject::From(Dispatch* d) {
  if (!d || d->Info().iid.data() != kScriptClassMark.data()) return nullptr;
  return static_cast<ScriptObject*>(d);
}

Variant ScriptObject::CallFromHost(int member, InvokeKind kind, Args& args) {
  RunCore* run = RunOf(link_);
  return run->InvokeMember(*this, *cls_.members[member], kind, args, false);
}

void ReleaseScriptObject(ScriptObject* object) {
  if (!object->terminated && object->cls().terminate) {
    std::shared_ptr<RunLink> link = object->link();
    std::lock_guard lock(link->mutex);
    if (link->run) {
      link->run->QueueTermination(object);
      return;
    }
  }
  delete object;
}

// ---- Err ------------------------------------------------------------------------------------------

const ClassInfo& ErrObject::Info() const {
  static const ClassInfo info{
      .className = "ErrObject",
      .members =
          {
              Property<&ErrObject::number>("Number", 0),
              Property<&ErrObject::description>("Description", 1),
              Property<&ErrObject::source>("Source", 2),
              Property<&ErrObject::helpFile>("HelpFile", 3),
              Property<&ErrObject::helpContext>("HelpContext", 4),
              Method<ErrObject>("Clear", 5, [](ErrObject& e, Args&) { e.Clear(); }),
              Method<ErrObject>("Raise", 6, [](ErrObject& e, Args& a) { e.Raise(a); }),
          },
  };
  return info;
}

void ErrObject::Raise(Args& args) {
  int32_t n = Arg(args, 0).ToLong();
  const Variant& src = OptionalArg(args, 1);
  const Variant& desc = OptionalArg(args, 2);
  std::string text = desc.IsMissing() ? std::string(ErrorDescription(n)) : desc.Text();
  throw Error(n, std::move(text), src.IsMissing() ? std::string() : src.Text());
}

// ---- GetRef ---------------------------------------------------------------------------------------

const ClassInfo& ProcRefObject::Info() const {
  static const ClassInfo info{
      .className = "Object",
      .members = {Method<ProcRefObject>("", 0, [](ProcRefObject& o, Args& a) { return o.Call(a); })},
  };
  return info;
}

Variant ProcRefObject::Call(Args& args) { return RunOf(link_)->CallWithValues(proc_, nullptr, args); }

}  // namespace corvane::script
