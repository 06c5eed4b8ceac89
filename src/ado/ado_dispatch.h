// Member ids of the late-bound data-access objects, and argument helpers they share. Each class's
// default member has id 0: Connection's ConnectionString, Recordset's Fields (rs("name")) and Field's
// Value.
#pragma once

#include <cstdint>

#include "runtime/args.h"

namespace corvane::ado::detail {

enum : int32_t {
  kConnectionConnectionString = 0, kConnectionOpen, kConnectionClose, kConnectionExecute,
  kConnectionState,
};
enum : int32_t {
  kRecordsetFields = 0, kRecordsetOpen, kRecordsetClose, kRecordsetEOF, kRecordsetBOF,
  kRecordsetMoveNext, kRecordsetMoveFirst, kRecordsetPageSize, kRecordsetAbsolutePage,
  kRecordsetPageCount, kRecordsetRecordCount, kRecordsetState,
};
enum : int32_t { kFieldValue = 0, kFieldType, kFieldName };

enum : int32_t { kStateClosed = 0, kStateOpen = 1 };  // ObjectStateEnum

// An optional whole-number argument (cursor type, options): `fallback` when left out.
inline int32_t OptionalLong(const Args& args, size_t i, int32_t fallback = -1) {
  const Variant& v = OptionalArg(args, i);
  return v.IsMissing() || v.IsEmpty() ? fallback : v.ToLong();
}

// An optional text argument (user name, password): "" when left out.
inline std::string OptionalText(const Args& args, size_t i) {
  const Variant& v = OptionalArg(args, i);
  return v.IsMissing() ? std::string() : v.Text();
}

}  // namespace corvane::ado::detail
