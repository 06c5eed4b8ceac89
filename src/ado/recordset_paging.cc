// Recordset: pages. Positioning on a page runs the statement again from the page's first row (the
// session's offset query), so the rows of earlier pages are never produced; RecordCount and PageCount
// come from one count of the query.
#include <algorithm>

#include "ado/recordset_impl.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado {

namespace {
constexpr int32_t kPositionEof = -3;  // adPosEOF
}

void Recordset::SetPageSize(int32_t n) {
  if (n < 1) throw Error::ArgumentsOutOfRange();
  impl_->pageSize = n;
}

int32_t Recordset::PageSize() const { return impl_->pageSize; }

void Recordset::SetAbsolutePage(int32_t page) {
  impl_->RequireOpen();
  if (page < 1) throw Error::ArgumentsOutOfRange();
  int64_t offset = static_cast<int64_t>(page - 1) * impl_->pageSize;
  impl_->Restart(offset);
}

int32_t Recordset::AbsolutePage() const {
  impl_->RequireOpen();
  if (impl_->eof) return kPositionEof;
  return static_cast<int32_t>(impl_->position / impl_->pageSize + 1);
}

int32_t Recordset::PageCount() const {
  impl_->RequireOpen();
  int64_t count = impl_->Count();
  return static_cast<int32_t>(std::min<int64_t>((count + impl_->pageSize - 1) / impl_->pageSize, INT32_MAX));
}

int32_t Recordset::RecordCount() const {
  impl_->RequireOpen();
  return static_cast<int32_t>(std::min<int64_t>(impl_->Count(), INT32_MAX));
}

}  // namespace corvane::ado
