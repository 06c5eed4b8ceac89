// Recordset: the current row's fields, by name (any case) or by 0-based index.
#include <memory>

#include "ado/recordset_impl.h"
#include "corvane/ado.h"

namespace corvane::ado {

Variant Recordset::Field(std::string_view name) const {
  impl_->RequireOpen();
  return Field(impl_->ColumnOf(name));
}

Variant Recordset::Field(int index) const {
  impl_->RequireOpen();
  int column = impl_->ColumnOf(index);
  impl_->RequireRecord();
  return impl_->cursor->Value(column);
}

int Recordset::FieldType(std::string_view name) const {
  impl_->RequireOpen();
  return FieldType(impl_->ColumnOf(name));
}

int Recordset::FieldType(int index) const {
  impl_->RequireOpen();
  int column = impl_->ColumnOf(index);
  return impl_->cursor ? impl_->cursor->ColumnType(column) : adVarWChar;
}

std::string Recordset::FieldName(int index) const {
  impl_->RequireOpen();
  return impl_->columns->names[impl_->ColumnOf(index)];
}

std::shared_ptr<ado::Field> Recordset::FieldObject(const Variant& which) const {
  impl_->RequireOpen();
  int column = which.IsNumber() ? impl_->ColumnOf(which.ToLong()) : impl_->ColumnOf(which.ToString());
  std::string name = FieldName(column);
  int type = FieldType(column);
  if (Eof()) return ado::Field::WithoutRecord(std::move(name), type);
  return std::make_shared<ado::Field>(std::move(name), type, Field(column));
}

int Recordset::FieldCount() const {
  impl_->RequireOpen();
  return static_cast<int>(impl_->columns->names.size());
}

}  // namespace corvane::ado
