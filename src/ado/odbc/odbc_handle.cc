#include "ado/odbc/odbc_handle.h"

#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "unixODBC's SQLWCHAR is a UTF-16 code unit");

OdbcHandle::OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
  SQLRETURN rc = SQLAllocHandle(type, parent, &handle_);
  if (!SQL_SUCCEEDED(rc)) {
    handle_ = SQL_NULL_HANDLE;
    throw Error::Database("The ODBC driver manager could not allocate a handle.");
  }
}

OdbcHandle::~OdbcHandle() {
  if (handle_ != SQL_NULL_HANDLE) SQLFreeHandle(type_, handle_);
}

SQLHENV OdbcEnvironment() {
  static const SQLHENV env = [] {
    SQLHENV h = SQL_NULL_HENV;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &h)))
      throw Error::Database("The ODBC driver manager could not be started.");
    SQLSetEnvAttr(h, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    return h;
  }();
  return env;
}

std::u16string Wide(std::string_view utf8) { return ToUtf16(utf8); }

std::string Narrow(const SQLWCHAR* text, size_t units) {
  return FromUtf16(std::u16string_view(reinterpret_cast<const char16_t*>(text), units));
}

std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle) {
  SQLWCHAR state[6] = {};
  SQLINTEGER native = 0;
  SQLSMALLINT length = 0;
  SQLWCHAR message[2];
  SQLRETURN rc = SQLGetDiagRecW(type, handle, 1, state, &native, message, 2, &length);
  if (!SQL_SUCCEEDED(rc)) return "";
  return Narrow(state, 5);
}

std::string OdbcDiagnostics(SQLSMALLINT type, SQLHANDLE handle, std::string_view fallback,
                            std::string_view secret) {
  SQLWCHAR state[6] = {};
  SQLINTEGER native = 0;
  SQLSMALLINT length = 0;
  std::u16string message(1024, u'\0');
  SQLRETURN rc = SQLGetDiagRecW(type, handle, 1, state, &native, WidePtr(message),
                                static_cast<SQLSMALLINT>(message.size()), &length);
  if (!SQL_SUCCEEDED(rc)) return std::string(fallback);
  if (length >= static_cast<SQLSMALLINT>(message.size())) {
    message.assign(static_cast<size_t>(length) + 1, u'\0');
    SQLGetDiagRecW(type, handle, 1, state, &native, WidePtr(message),
                   static_cast<SQLSMALLINT>(message.size()), &length);
  }
  std::string text = Narrow(WidePtr(message), std::min<size_t>(length, message.size()));
  // psqlODBC adds its own line after the server's words.
  for (std::string_view tail : {";\nError while executing the query", "\nError while executing the query"})
    if (text.ends_with(tail)) text.resize(text.size() - tail.size());
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  if (!secret.empty())
    for (size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at + 3))
      text.replace(at, secret.size(), "***");
  return "SQLSTATE " + Narrow(state, 5) + ": " + text;
}

void Check(SQLRETURN rc, const OdbcHandle& handle, std::string_view what, std::string_view secret) {
  if (SQL_SUCCEEDED(rc)) return;
  throw Error::Database(OdbcDiagnostics(handle.type(), handle.get(), what, secret));
}

}  // namespace corvane::ado::detail
