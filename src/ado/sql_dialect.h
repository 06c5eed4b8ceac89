// The components write SQL Server's dialect. One adapter rewrites it for each database we run on,
// and derives the texts the recordset needs for counting and paging.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::ado::detail {

enum class Dialect { SQLite, PostgreSQL, MariaDB, SqlServer };

// The dialect of the product a driver reports (ODBC's SQL_DBMS_NAME): "PostgreSQL", "MariaDB" or
// "MySQL", "Microsoft SQL Server"; an unknown product is taken as SQL Server (passed through).
Dialect DialectOfProduct(std::string_view dbmsName);

// Rewrites one statement of SQL Server's dialect; SQL Server itself gets it untouched. For SQLite,
// PostgreSQL and MariaDB:
//   "select [distinct] top N ..." -> "... limit N"       "insert T(...)" -> "insert into T(...)"
//   "delete T where"  -> "delete from T where"             "alias=expr" in a select list -> "expr as alias"
// and for the two servers also
//   [name]    -> "name" in lower case (PostgreSQL), `name` (MariaDB)
//   getdate() -> localtimestamp(0) (PostgreSQL), now() (MariaDB)
//   'text' + x, x + 'text' -> ||  (a "+" beside a string literal joins texts; MariaDB's sessions
//                                   run with PIPES_AS_CONCAT)
//   in "create table": INTEGER PRIMARY KEY numbers its rows as on SQLite (an identity column on
//   PostgreSQL, auto_increment on MariaDB); DATETIME and SMALLDATETIME are timestamp(0) on
//   PostgreSQL, NVARCHAR/NCHAR/NTEXT are varchar/char/text, IMAGE is bytea.
// Only the first statement is looked at; everything else keeps every byte. An empty "in ()" list is
// refused with SQL Server's error, as the database the components were written for does.
std::string Adapt(Dialect dialect, std::string_view sql);

// Raises Error::Database when anything but blanks, semicolons and comments follows the first
// statement: one call runs one statement on every backend.
void RefuseStackedStatements(std::string_view sql);

// "select count(*) from (<statement without its order>)", the subquery named where the database
// needs it.
std::string CountQuery(Dialect dialect, std::string_view adapted);

// The statement's rows from the 0-based row `offset` on, at most `rows` of them (0: all). A statement
// with a LIMIT of its own is wrapped in a subquery first.
std::string OffsetQuery(Dialect dialect, std::string_view adapted, int64_t offset, int64_t rows = 0);

// True when the first statement is a select (its rows can be read in windows of LIMIT/OFFSET).
bool IsSelect(std::string_view adapted);

// SQLite's adapter: Adapt(Dialect::SQLite, sql).
inline std::string AdaptForSqlite(std::string_view sql) { return Adapt(Dialect::SQLite, sql); }

}  // namespace corvane::ado::detail
