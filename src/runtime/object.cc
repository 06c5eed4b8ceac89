// Late binding: finding members by name or dispatch id and calling them through the class's table.
#include "corvane/object.h"

#include "corvane/error.h"
#include "corvane/text.h"
#include "corvane/variant.h"

namespace corvane {

int32_t ClassInfo::DispIdOf(std::string_view name) const {
  const MemberInfo* m = Member(name);
  return m ? m->dispid : -1;
}

const MemberInfo* ClassInfo::Member(int32_t dispid) const {
  for (const MemberInfo& m : members)
    if (m.dispid == dispid) return &m;
  return nullptr;
}

const MemberInfo* ClassInfo::Member(std::string_view name) const {
  for (const MemberInfo& m : members)
    if (EqualsNoCase(m.name, name)) return &m;
  return nullptr;
}

namespace {

Variant CallMember(Dispatch& self, const MemberInfo& m, InvokeKind kind, Args& args) {
  if (!m.call || !m.Answers(kind)) throw Error::NoSuchMember(std::string(m.name));
  return m.call(self, kind, args);
}

}  // namespace

std::vector<Variant> Dispatch::Elements() { throw Error::NotACollection(); }

Variant Dispatch::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  const MemberInfo* m = Info().Member(dispid);
  if (!m) throw Error::NoSuchMember(std::to_string(dispid));
  return CallMember(*this, *m, kind, args);
}

Variant Object::Call(std::string_view name, InvokeKind kind, Args& args) const {
  if (!p_) throw Error::ObjectNotSet();
  const MemberInfo* m = p_->Info().Member(name);
  if (!m) throw Error::NoSuchMember(std::string(name));
  return CallMember(*p_, *m, kind, args);
}

bool Object::Has(std::string_view name) const { return p_ && p_->Info().Member(name); }

Variant Object::Invoke(std::string_view name, Args& args) const {
  return Call(name, InvokeKind::Method, args);
}

Variant Object::Invoke(std::string_view name, Args&& args) const {
  Args local = std::move(args);
  return Call(name, InvokeKind::Method, local);
}

Variant Object::Invoke(std::string_view name) const {
  Args none;
  return Call(name, InvokeKind::Method, none);
}

Variant Object::Invoke(int32_t dispid, Args& args, InvokeKind kind) const {
  if (!p_) throw Error::ObjectNotSet();
  return p_->InvokeMember(dispid, kind, args);
}

Variant Object::Get(std::string_view name) const {
  Args none;
  return Call(name, InvokeKind::PropertyGet, none);
}

Variant Object::Get(std::string_view name, Args& args) const {
  return Call(name, InvokeKind::PropertyGet, args);
}

void Object::Put(std::string_view name, const Variant& value) const {
  Args args{value};
  Call(name, InvokeKind::PropertyPut, args);
}

void Object::PutRef(std::string_view name, const Variant& value) const {
  Args args{value};
  Call(name, InvokeKind::PropertyPutRef, args);
}

}  // namespace corvane
