// ADO-style connection strings: "key=value;key=value", keys in any case, blanks around keys and values
// ignored, a value may be quoted with " or ' (a doubled quote inside stands for one) or, as ODBC
// writes it, put in braces ("Driver={PostgreSQL Unicode}", "Pwd={a;b}"; "}}" inside stands for "}").
// A text without any "=" is a bare file path.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::ado::detail {

class ConnectionString {
 public:
  static ConnectionString Parse(std::string_view text);

  // The value of `key` (any case); the last one wins when a key repeats.
  std::optional<std::string> Get(std::string_view key) const;
  // The whole text when it has no "=": a bare path; empty otherwise.
  const std::string& BarePath() const { return barePath_; }
  // Every setting in the order written, keys lower-cased.
  const std::vector<std::pair<std::string, std::string>>& Entries() const { return entries_; }

 private:
  std::vector<std::pair<std::string, std::string>> entries_;  // keys lower-cased
  std::string barePath_;
};

}  // namespace corvane::ado::detail
