// SQLite's side of the dialect: the adapter (declared in corvane/ado.h) and the texts the recordset
// derives from an adapted statement for counting and paging.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/ado.h"

namespace corvane::ado::detail {

// "select count(*) from (<statement>)".
std::string SqliteCountQuery(std::string_view adapted);

// The statement's rows from the 0-based row `offset` on: " limit -1 offset N" appended, or, when the
// statement has a LIMIT of its own, "select * from (<statement>) limit -1 offset N".
std::string SqliteOffsetQuery(std::string_view adapted, int64_t offset);

}  // namespace corvane::ado::detail
