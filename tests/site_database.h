// The site's SQLite database as the tests read it behind the running server: read-only, waiting out
// a writer for up to 5 seconds.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvane::testing {

// The rows of a query, each as its values joined by "|" (NULL for a null); none when the database
// cannot be read.
inline std::vector<std::string> Rows(const std::filesystem::path& database, const std::string& sql) {
  std::vector<std::string> out;
  sqlite3* db = nullptr;
  sqlite3_stmt* rows = nullptr;
  if (sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
      sqlite3_busy_timeout(db, 5000) == SQLITE_OK &&
      sqlite3_prepare_v2(db, sql.c_str(), -1, &rows, nullptr) == SQLITE_OK) {
    while (sqlite3_step(rows) == SQLITE_ROW) {
      std::string row;
      for (int i = 0; i < sqlite3_column_count(rows); ++i) {
        const unsigned char* v = sqlite3_column_text(rows, i);
        row += (i ? "|" : "") + std::string(v ? reinterpret_cast<const char*>(v) : "NULL");
      }
      out.push_back(std::move(row));
    }
  }
  sqlite3_finalize(rows);
  sqlite3_close(db);
  return out;
}

// The first row of a query ("" when there is none): the value of a one-column query.
inline std::string Value(const std::filesystem::path& database, const std::string& sql) {
  std::vector<std::string> rows = Rows(database, sql);
  return rows.empty() ? "" : rows.front();
}

}  // namespace corvane::testing
