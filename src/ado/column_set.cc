#include "ado/driver.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

ColumnSet::ColumnSet(std::vector<std::string> columnNames) : names(std::move(columnNames)) {
  for (size_t i = 0; i < names.size(); ++i) byLowerName.try_emplace(LCase(names[i]), static_cast<int>(i));
}

}  // namespace corvane::ado::detail
