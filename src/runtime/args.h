// Helpers for InvokeMember implementations: reading arguments the way a scripting host passes them.
#pragma once

#include <cstddef>

#include "corvane/error.h"
#include "corvane/object.h"
#include "corvane/variant.h"

namespace corvane {

// Argument i, or Missing when the caller passed fewer (an optional argument left out).
inline const Variant& OptionalArg(const Args& args, size_t i) {
  static const Variant missing = Variant::Missing();
  return i < args.size() ? args[i] : missing;
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

inline bool IsPropertyRead(InvokeKind k) { return k == InvokeKind::PropertyGet || k == InvokeKind::Method; }
inline bool IsPropertyWrite(InvokeKind k) {
  return k == InvokeKind::PropertyPut || k == InvokeKind::PropertyPutRef;
}

}  // namespace corvane
