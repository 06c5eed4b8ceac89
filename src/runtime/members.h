// How a class declares its late-bound members: one table of entries, each a name, a dispatch id and
// the call that reaches the C++ member. A class's table lives in its <class>_members.cc:
//
//   .members = {
//       Method<DNA>("OpenDNA", 0x60030006, [](DNA& o, Args& a) { o.OpenDNA(RefArg(a, 0), ...); }),
//       Property<&DNA::strAction>("strAction", 0x40030006),
//       Reader<Recordset>("EOF", 3, [](Recordset& o) { return Variant(o.Eof()); }),
//   }
//
// The calls are captureless lambdas: each becomes a plain function of the table entry. Arguments are
// read the way a scripting host passes them: RefArg for a by-reference parameter (the caller's own
// Variant), Arg for one by value, OptionalArg where the caller may leave it out.
#pragma once

#include <cstddef>
#include <string>
#include <type_traits>

#include "corvane/error.h"
#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane {

// Argument i, or Missing when the caller passed fewer (an optional argument left out).
inline const Variant& OptionalArg(const Args& args, size_t i) {
  static const Variant missing = Variant::Missing();
  return i < args.size() ? args[i] : missing;
}

// An optional whole-number argument (a mode, a count, options): `fallback` when the caller left it
// out or passed Empty.
inline int32_t OptionalLong(const Args& args, size_t i, int32_t fallback) {
  const Variant& v = OptionalArg(args, i);
  return v.IsMissing() || v.IsEmpty() ? fallback : v.ToLong();
}

// Argument i for a parameter taken by reference: the caller's own Variant. Raises 449 when absent.
inline Variant& RefArg(Args& args, size_t i) {
  if (i >= args.size() || args[i].IsMissing()) throw Error::ArgumentNotOptional();
  return args[i];
}

// Argument i for a parameter taken by value. Raises 449 when absent.
inline const Variant& Arg(const Args& args, size_t i) {
  if (i >= args.size() || args[i].IsMissing()) throw Error::ArgumentNotOptional();
  return args[i];
}

// The value a property write assigns: the last argument (an indexed property's index comes first).
// Raises 449 when there is none.
inline const Variant& PropertyValue(const Args& args) {
  if (args.empty() || args.back().IsMissing()) throw Error::ArgumentNotOptional();
  return args.back();
}

inline bool IsPropertyWrite(InvokeKind k) {
  return k == InvokeKind::PropertyPut || k == InvokeKind::PropertyPutRef;
}

namespace members {

// A member's result as a Variant: nothing (a Sub) is Empty.
template <class F, class... A>
Variant ResultOf(F f, A&&... a) {
  if constexpr (std::is_void_v<std::invoke_result_t<F, A...>>) {
    f(std::forward<A>(a)...);
    return {};
  } else {
    return Variant(f(std::forward<A>(a)...));
  }
}

// A data member converted as its interface type converts a written value.
inline void Assign(std::string& m, const Variant& v) { m = v.ToString(); }
inline void Assign(int16_t& m, const Variant& v) { m = v.ToInteger(); }
inline void Assign(int32_t& m, const Variant& v) { m = v.ToLong(); }
inline void Assign(Variant& m, const Variant& v) { m = v; }

template <class>
struct MemberOf;
template <class T, class M>
struct MemberOf<M T::*> {
  using Class = T;
  using Type = M;
};

template <class F>
constexpr void RequireCaptureless() {
  static_assert(std::is_empty_v<F> && std::is_default_constructible_v<F>,
                "a member's call is a lambda without captures");
}

}  // namespace members

// A method: f(T&, Args&), answering a call (or a read, as scripts call a method without arguments).
template <class T, class F>
MemberInfo Method(std::string_view name, int32_t dispid, F) {
  members::RequireCaptureless<F>();
  return {name, dispid, MemberInfo::kMethod, [](Dispatch& self, InvokeKind, Args& args) -> Variant {
            return members::ResultOf(F{}, static_cast<T&>(self), args);
          }};
}

// A property kept in a data member: read gives it, write converts the value to the member's type.
template <auto Field>
MemberInfo Property(std::string_view name, int32_t dispid) {
  using T = typename members::MemberOf<decltype(Field)>::Class;
  return {name, dispid, MemberInfo::kRead | MemberInfo::kWrite,
          [](Dispatch& self, InvokeKind kind, Args& args) -> Variant {
            auto& member = static_cast<T&>(self).*Field;
            if (!IsPropertyWrite(kind)) return Variant(member);
            members::Assign(member, PropertyValue(args));
            return {};
          }};
}

// A read-only property: get(T&).
template <class T, class Get>
MemberInfo Reader(std::string_view name, int32_t dispid, Get) {
  members::RequireCaptureless<Get>();
  return {name, dispid, MemberInfo::kRead, [](Dispatch& self, InvokeKind, Args&) -> Variant {
            return members::ResultOf(Get{}, static_cast<T&>(self));
          }};
}

// A write-only property: set(T&, value).
template <class T, class Set>
MemberInfo Writer(std::string_view name, int32_t dispid, Set) {
  members::RequireCaptureless<Set>();
  return {name, dispid, MemberInfo::kWrite, [](Dispatch& self, InvokeKind, Args& args) -> Variant {
            Set{}(static_cast<T&>(self), PropertyValue(args));
            return {};
          }};
}

// A property read with get(T&, Args&) and written with set(T&, Args&, value); the arguments are
// those of an indexed property (Session("key")).
template <class T, class Get, class Set>
MemberInfo ReadWrite(std::string_view name, int32_t dispid, Get, Set) {
  members::RequireCaptureless<Get>();
  members::RequireCaptureless<Set>();
  return {name, dispid, MemberInfo::kRead | MemberInfo::kWrite,
          [](Dispatch& self, InvokeKind kind, Args& args) -> Variant {
            T& obj = static_cast<T&>(self);
            if (!IsPropertyWrite(kind)) return members::ResultOf(Get{}, obj, args);
            Set{}(obj, args, PropertyValue(args));
            return {};
          }};
}

// Any other member: f(T&, InvokeKind, Args&) answering the kinds given.
template <class T, class F>
MemberInfo Custom(std::string_view name, int32_t dispid, int kinds, F) {
  members::RequireCaptureless<F>();
  return {name, dispid, kinds, [](Dispatch& self, InvokeKind kind, Args& args) -> Variant {
            return F{}(static_cast<T&>(self), kind, args);
          }};
}

// The class factory of a creatable class.
template <class T>
Object Create() {
  return Object(std::make_shared<T>());
}

}  // namespace corvane
