// Late binding: finding members by name or dispatch id and calling them.
#include "corvane/object.h"

#include "corvane/error.h"
#include "corvane/text.h"
#include "corvane/variant.h"

namespace corvane {

int32_t ClassInfo::DispIdOf(std::string_view name) const {
  for (const MemberInfo& m : members)
    if (EqualsNoCase(m.name, name)) return m.dispid;
  return -1;
}

const MemberInfo* ClassInfo::Member(int32_t dispid) const {
  for (const MemberInfo& m : members)
    if (m.dispid == dispid) return &m;
  return nullptr;
}

int32_t Object::IdOf(std::string_view name) const {
  if (!p_) throw Error::ObjectNotSet();
  int32_t id = p_->Info().DispIdOf(name);
  if (id == -1) throw Error::NoSuchMember(std::string(name));
  return id;
}

bool Object::Has(std::string_view name) const { return p_ && p_->Info().DispIdOf(name) != -1; }

Variant Object::Invoke(std::string_view name, Args& args) const {
  int32_t id = IdOf(name);  // raises 91 on Nothing before p_ is used
  return p_->InvokeMember(id, InvokeKind::Method, args);
}

Variant Object::Invoke(std::string_view name, Args&& args) const {
  Args local = std::move(args);
  return Invoke(name, local);
}

Variant Object::Invoke(int32_t dispid, Args& args, InvokeKind kind) const {
  if (!p_) throw Error::ObjectNotSet();
  if (!p_->Info().Member(dispid)) throw Error::NoSuchMember(std::to_string(dispid));
  return p_->InvokeMember(dispid, kind, args);
}

Variant Object::Get(std::string_view name) const {
  Args none;
  return Get(name, none);
}

Variant Object::Get(std::string_view name, Args& args) const {
  int32_t id = IdOf(name);
  return p_->InvokeMember(id, InvokeKind::PropertyGet, args);
}

void Object::Put(std::string_view name, const Variant& value) const {
  int32_t id = IdOf(name);
  Args args{value};
  p_->InvokeMember(id, InvokeKind::PropertyPut, args);
}

void Object::PutRef(std::string_view name, const Variant& value) const {
  int32_t id = IdOf(name);
  Args args{value};
  p_->InvokeMember(id, InvokeKind::PropertyPutRef, args);
}

}  // namespace corvane
