// ADODB.Field: what Recordset.Fields(x) returns. Not creatable.
#include <memory>

#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado {

std::shared_ptr<Field> Field::WithoutRecord(std::string name, int type) {
  auto field = std::make_shared<Field>(std::move(name), type, Variant());
  field->hasRecord_ = false;
  return field;
}

Variant Field::Value() const {
  if (!hasRecord_) throw Error::NoCurrentRecord();
  return value_;
}

}  // namespace corvane::ado
