// ADODB.Field, late-bound: what Recordset.Fields(x) returns. Not creatable.
#include <memory>

#include "ado/ado_dispatch.h"
#include "ado/ado_errors.h"
#include "corvane/ado.h"

namespace corvane::ado {

using namespace detail;

namespace {

const ClassInfo& FieldClass() {
  static const ClassInfo info{
      .className = "Field",
      .iid = "{00000569-0000-0010-8000-00aa006d2ea4}",
      .members = {{"Value", kFieldValue}, {"Type", kFieldType}, {"Name", kFieldName}},
  };
  return info;
}

}  // namespace

std::shared_ptr<Field> Field::WithoutRecord(std::string name, int type) {
  auto field = std::make_shared<Field>(std::move(name), type, Variant());
  field->hasRecord_ = false;
  return field;
}

const ClassInfo& Field::Info() const { return FieldClass(); }

Variant Field::Value() const {
  if (!hasRecord_) throw Error::NoCurrentRecord();
  return value_;
}

Variant Field::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kFieldValue:
      if (IsPropertyWrite(kind)) throw RecordsetReadOnly();
      return Value();
    case kFieldType: return Variant(type_);
    case kFieldName: return Variant(name_);
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane::ado
