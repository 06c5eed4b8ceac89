#include "ado/odbc/odbc_cursor.h"

#include <algorithm>

#include "ado/odbc/odbc_session.h"
#include "ado/odbc/odbc_values.h"
#include "ado/sql_tokens.h"
#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

std::string NameAsWritten(std::string_view sql, const std::string& name) {
  for (const Token& t : Tokenize(sql)) {
    if (t.kind != TokenKind::Word) continue;
    std::string_view word = t.Text(sql);
    if (word != name && EqualsNoCase(word, name)) return std::string(word);
  }
  return name;
}

OdbcCursor::OdbcCursor(std::shared_ptr<OdbcSession> session, std::string body, int64_t offset, bool windowed)
    : session_(std::move(session)), body_(std::move(body)), windowed_(windowed), windowStart_(offset) {
  Execute();
  Describe();
}

OdbcCursor::~OdbcCursor() = default;

void OdbcCursor::Fail(const OdbcHandle& handle, std::string_view what) {
  const std::string state = OdbcState(handle.type(), handle.get());
  std::string message = OdbcDiagnostics(handle.type(), handle.get(), what, session_->connection().secret());
  if (state.starts_with("08") || state == "57P01" || state.empty()) session_->MarkBroken();
  stmt_.reset();
  throw Error::Database(message);
}

void OdbcCursor::Execute() {
  stmt_ = std::make_unique<OdbcHandle>(SQL_HANDLE_STMT, session_->connection().dbc());
  // The text is the database's own SQL: no ODBC escape clauses to translate.
  SQLSetStmtAttrW(stmt_->get(), SQL_ATTR_NOSCAN, reinterpret_cast<SQLPOINTER>(SQL_NOSCAN_ON), 0);
  std::string text =
      windowed_ ? OffsetQuery(session_->connection().dialect(), body_, windowStart_, windowRows_) : body_;
  std::u16string wide = Wide(text);
  SQLRETURN rc = SQLExecDirectW(stmt_->get(), WidePtr(wide), static_cast<SQLINTEGER>(wide.size()));
  // SQL_NO_DATA: a searched update or delete that matched no row.
  if (rc != SQL_NO_DATA && !SQL_SUCCEEDED(rc)) Fail(*stmt_, "The statement failed.");
  rowsInWindow_ = 0;
}

void OdbcCursor::Describe() {
  SQLSMALLINT n = 0;
  if (!SQL_SUCCEEDED(SQLNumResultCols(stmt_->get(), &n))) Fail(*stmt_, "The result could not be read.");
  const bool foldsNames = session_->connection().dialect() == Dialect::PostgreSQL;
  std::vector<std::string> names;
  for (SQLUSMALLINT i = 1; i <= n; ++i) {
    SQLWCHAR name[256] = {};
    SQLSMALLINT nameLength = 0, sqlType = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    if (!SQL_SUCCEEDED(
            SQLDescribeColW(stmt_->get(), i, name, 256, &nameLength, &sqlType, &size, &digits, &nullable)))
      Fail(*stmt_, "The result could not be read.");
    std::string text = Narrow(name, std::min<size_t>(nameLength, 255));
    names.push_back(foldsNames ? NameAsWritten(body_, text) : text);
    sqlTypes_.push_back(sqlType);
    types_.push_back(TypeCodeOfSqlType(sqlType));
  }
  row_.assign(names.size(), Variant());
  columns_ = std::make_shared<const ColumnSet>(std::move(names));
}

bool OdbcCursor::Step() {
  while (stmt_) {
    SQLRETURN rc = SQLFetch(stmt_->get());
    if (SQL_SUCCEEDED(rc)) {
      ++rowsInWindow_;
      for (size_t i = 0; i < row_.size(); ++i)
        row_[i] = ReadColumn(*stmt_, static_cast<SQLUSMALLINT>(i + 1), sqlTypes_[i], types_[i],
                             session_->connection().secret());
      return true;
    }
    if (rc != SQL_NO_DATA) Fail(*stmt_, "The next row could not be read.");
    if (!windowed_ || rowsInWindow_ < windowRows_) {
      stmt_.reset();
      break;
    }
    windowStart_ += windowRows_;
    windowRows_ = std::min(windowRows_ * 4, kMaxWindow);
    Execute();
  }
  std::fill(row_.begin(), row_.end(), Variant());
  return false;
}

int64_t OdbcCursor::Run() {
  if (!stmt_ || !columns_->names.empty()) {
    stmt_.reset();
    return 0;
  }
  SQLLEN changed = 0;
  if (!SQL_SUCCEEDED(SQLRowCount(stmt_->get(), &changed))) changed = 0;
  stmt_.reset();
  return changed < 0 ? 0 : changed;
}

}  // namespace corvane::ado::detail
