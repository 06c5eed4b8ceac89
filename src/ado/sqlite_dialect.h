// SQLite's side of the dialect: the adapter and the texts the recordset derives from an adapted
// statement for counting and paging.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::ado::detail {

// Rewrites one statement of SQL Server's dialect for SQLite: "select top N ..." (-> "... limit N"),
// "insert T(...)" (-> "insert into"), "delete T where" (-> "delete from"), and "alias=expr" items of
// a select list (-> "expr as alias"); everything else passes unchanged. Refuses an empty "in ()"
// list with SQL Server's error, as the database the components were written for does.
std::string AdaptForSqlite(std::string_view sql);

// "select count(*) from (<statement>)".
std::string SqliteCountQuery(std::string_view adapted);

// The statement's rows from the 0-based row `offset` on: " limit -1 offset N" appended, or, when the
// statement has a LIMIT of its own, "select * from (<statement>) limit -1 offset N".
std::string SqliteOffsetQuery(std::string_view adapted, int64_t offset);

}  // namespace corvane::ado::detail
