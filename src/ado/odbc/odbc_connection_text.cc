#include "ado/odbc/odbc_connection_text.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "ado/connection_string.h"
#include "corvane/text.h"

namespace corvane::ado::detail {

namespace {

bool IsSqlServerProvider(const std::string& provider) {
  std::string p = LCase(provider);
  if (size_t dot = p.find('.'); dot != std::string::npos) p.resize(dot);  // "SQLOLEDB.1"
  return p == "sqloledb" || p.starts_with("sqlncli") || p == "msoledbsql";
}

// The first of `keys` the string sets.
std::optional<std::string> First(const ConnectionString& cs, std::initializer_list<std::string_view> keys) {
  for (std::string_view key : keys)
    if (std::optional<std::string> v = cs.Get(key)) return v;
  return std::nullopt;
}

OdbcTarget FreeTds(const ConnectionString& cs) {
  OdbcTarget target;
  target.text = "Driver={FreeTDS}";
  if (std::optional<std::string> source = First(cs, {"data source", "server", "address", "addr"})) {
    std::string host = *source, port;
    if (size_t comma = host.find(','); comma != std::string::npos) {
      port = host.substr(comma + 1);
      host.resize(comma);
    }
    target.text += ";Server=" + OdbcValue(host);
    if (!port.empty()) target.text += ";Port=" + OdbcValue(port);
  }
  if (std::optional<std::string> db = First(cs, {"initial catalog", "database"}))
    target.text += ";Database=" + OdbcValue(*db);
  if (std::optional<std::string> user = First(cs, {"user id", "uid", "user"}))
    target.text += ";Uid=" + OdbcValue(*user);
  if (std::optional<std::string> password = First(cs, {"password", "pwd"})) {
    target.text += ";Pwd=" + OdbcValue(*password);
    target.secret = *password;
  }
  target.text += ";TDS_Version=7.4;ClientCharset=UTF-8";
  return target;
}

}  // namespace

std::string OdbcValue(const std::string& value) {
  bool plain = value.find_first_of(";{}") == std::string::npos &&
               (value.empty() || (value.front() != ' ' && value.back() != ' '));
  if (plain) return value;
  std::string out = "{";
  for (char c : value) {
    out += c;
    if (c == '}') out += '}';
  }
  return out + "}";
}

std::optional<OdbcTarget> OdbcTargetOf(const ConnectionString& cs) {
  std::optional<std::string> provider = cs.Get("provider");
  if (provider && IsSqlServerProvider(*provider)) return FreeTds(cs);
  std::optional<std::string> driver = cs.Get("driver");
  if (!driver && !cs.Get("dsn")) return std::nullopt;
  OdbcTarget target;
  const auto& entries = cs.Entries();
  for (auto it = entries.begin(); it != entries.end(); ++it) {
    const std::string& key = it->first;
    const std::string& value = it->second;
    if (key == "provider") continue;  // MSDASQL, ADO's provider for ODBC
    // A key given again later is set by its last occurrence, as Get reads it.
    if (std::any_of(it + 1, entries.end(), [&](const auto& later) { return later.first == key; })) continue;
    if (!target.text.empty()) target.text += ';';
    target.text += key + "=" + OdbcValue(value);
    if (key == "pwd" || key == "password") target.secret = value;
  }
  std::string name = driver ? LCase(*driver) : "";
  if (name.find("postgres") != std::string::npos || name.find("psqlodbc") != std::string::npos) {
    for (std::string_view option : {"boolsaschar=0", "commlog=0", "debug=0"}) {
      std::string_view key = option.substr(0, option.find('='));
      if (!cs.Get(key)) target.text += ";" + std::string(option);
    }
  }
  return target;
}

}  // namespace corvane::ado::detail
