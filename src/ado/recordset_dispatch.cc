// ADODB.Recordset, late-bound.
#include <memory>

#include "ado/ado_dispatch.h"
#include "ado/ado_errors.h"
#include "ado/recordset_impl.h"
#include "corvane/ado.h"

namespace corvane::ado {

using namespace detail;

const ClassInfo& RecordsetClass() {
  static const ClassInfo info{
      .className = "Recordset",
      .progID = "ADODB.Recordset",
      .clsid = "{00000535-0000-0010-8000-00aa006d2ea4}",
      .iid = "{00000556-0000-0010-8000-00aa006d2ea4}",
      .members = {{"Fields", kRecordsetFields}, {"Open", kRecordsetOpen}, {"Close", kRecordsetClose},
                  {"EOF", kRecordsetEOF}, {"BOF", kRecordsetBOF}, {"MoveNext", kRecordsetMoveNext},
                  {"MoveFirst", kRecordsetMoveFirst}, {"PageSize", kRecordsetPageSize},
                  {"AbsolutePage", kRecordsetAbsolutePage}, {"PageCount", kRecordsetPageCount},
                  {"RecordCount", kRecordsetRecordCount}, {"State", kRecordsetState}},
      .create = [] { return Object(std::make_shared<Recordset>()); },
  };
  return info;
}

const ClassInfo& Recordset::Info() const { return RecordsetClass(); }

namespace {

// Fields(name or index): a Field object of the current row (at EOF one whose Value raises 3021).
Variant FieldObject(const Recordset& rs, const Variant& which) {
  RecordsetImpl& impl = *rs.impl();
  impl.RequireOpen();
  int column = which.IsNumber() ? impl.ColumnOf(which.ToLong()) : impl.ColumnOf(which.ToString());
  std::string name = rs.FieldName(column);
  int type = rs.FieldType(column);
  if (rs.Eof()) return Variant(Object(Field::WithoutRecord(std::move(name), type)));
  return Variant(Object(std::make_shared<Field>(std::move(name), type, rs.Field(column))));
}

}  // namespace

Variant Recordset::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kRecordsetFields:
      if (IsPropertyWrite(kind)) throw RecordsetReadOnly();
      return FieldObject(*this, Arg(args, 0));
    case kRecordsetOpen:
      Open(Arg(args, 0).Text(), OptionalArg(args, 1), OptionalLong(args, 2), OptionalLong(args, 3),
           OptionalLong(args, 4));
      return {};
    case kRecordsetClose: Close(); return {};
    case kRecordsetEOF: return Variant(Eof());
    case kRecordsetBOF: return Variant(Bof());
    case kRecordsetMoveNext: MoveNext(); return {};
    case kRecordsetMoveFirst: MoveFirst(); return {};
    case kRecordsetPageSize:
      if (IsPropertyWrite(kind)) {
        SetPageSize(Arg(args, 0).ToLong());
        return {};
      }
      return Variant(PageSize());
    case kRecordsetAbsolutePage:
      if (IsPropertyWrite(kind)) {
        SetAbsolutePage(Arg(args, 0).ToLong());
        return {};
      }
      return Variant(AbsolutePage());
    case kRecordsetPageCount: return Variant(PageCount());
    case kRecordsetRecordCount: return Variant(RecordCount());
    case kRecordsetState: return Variant(IsOpen() ? kStateOpen : kStateClosed);
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane::ado
