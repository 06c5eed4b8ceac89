#include "ado/recordset_impl.h"

#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

int64_t RecordsetImpl::Open(std::shared_ptr<Session> s, std::string_view text) {
  std::string sql = s->Adapt(text);
  std::unique_ptr<Cursor> c = s->Prepare(sql);
  if (c->ColumnCount() == 0) return RunChanging(*c);
  Reset();
  session = std::move(s);
  if (sql != text) source = std::string(text);
  adapted = std::move(sql);
  cursor = std::move(c);
  position = 0;
  try {
    eof = !cursor->Step();
  } catch (...) {
    Reset();
    throw;
  }
  // After the first step: a statement kept from before a change of the schema is prepared anew by it.
  columns = cursor->Columns();
  return -1;
}

void RecordsetImpl::Restart(int64_t offset) {
  // The old statement goes back to the cache first, so running the same text again reuses it.
  cursor.reset();
  eof = true;
  position = offset;
  cursor = session->PrepareFrom(adapted, offset);
  eof = !cursor->Step();
}

void RecordsetImpl::Step() {
  eof = !cursor->Step();
  ++position;
}

void RecordsetImpl::Reset() {
  cursor.reset();
  session.reset();
  source.clear();
  adapted.clear();
  columns.reset();
  eof = true;
  position = 0;
  count.reset();
}

void RecordsetImpl::RequireOpen() const {
  if (!session) throw Error::ObjectClosed();
}

void RecordsetImpl::RequireRecord() const {
  if (eof) throw Error::NoCurrentRecord();
}

int RecordsetImpl::ColumnOf(std::string_view name) const {
  const int column = columns->Find(name);
  if (column < 0) throw Error::ItemNotFound(std::string(name));
  return column;
}

int RecordsetImpl::ColumnOf(int index) const {
  if (index < 0 || index >= static_cast<int>(columns->names.size()))
    throw Error::ItemNotFound(std::to_string(index));
  return index;
}

int64_t RecordsetImpl::Count() {
  if (!count) count = session->Count(adapted);
  return *count;
}

}  // namespace corvane::ado::detail
