// The SQL Server forms the components write, rewritten for SQLite, PostgreSQL and MariaDB:
//
//   select [distinct|all] top N <rest>   ->  select [distinct|all] <rest> limit N   (also "top (N)")
//   insert T(...) / insert T values ...  ->  insert into T ...
//   delete T where ...                   ->  delete from T where ...
//   select ..., alias=expr, ... from     ->  select ..., expr as alias, ... from
//
// and, for the two servers, names in brackets, getdate(), "+" joining texts and the column types of
// "create table" (see sql_dialect.h). The work is done in two passes over the first statement: the
// first replaces single tokens (it never changes the statement's shape), the second moves clauses.
//
// Only the first statement of the text is looked at, and only these forms: everything else (a column
// named "top", "=" in a string or a where clause, "insert into", "delete from") keeps every byte. The
// alias form is recognised only among the top-level items of the select list: an item that starts
// with a name followed by a single "=" (never "<=", ">=", "==", "!=").
//
// One form is refused rather than rewritten: an empty "in ()" list, which SQL Server rejects.
#include "ado/sql_dialect.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

#include "ado/sql_tokens.h"
#include "corvane/error.h"

namespace corvane::ado {

namespace {

using detail::IsKeyword;
using detail::Token;
using detail::TokenKind;

// One change to the text: bytes [begin, end) become `text`.
struct Edit {
  size_t begin;
  size_t end;
  std::string text;
};

bool IsDigits(std::string_view s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A table or column name: a word that is not a number, or a quoted name.
bool IsName(const Token& t, std::string_view sql) {
  if (t.kind == TokenKind::QuotedName) return true;
  return t.kind == TokenKind::Word && !(sql[t.begin] >= '0' && sql[t.begin] <= '9');
}

// Keywords that end a select list when there is no FROM.
bool EndsSelectList(const Token& t, std::string_view sql) {
  for (std::string_view k : {"from", "where", "group", "having", "order", "union", "except", "intersect",
                             "limit", "window", "into"})
    if (IsKeyword(t, sql, k)) return true;
  return false;
}

class SelectRewriter {
 public:
  SelectRewriter(std::string_view sql, const std::vector<Token>& tokens, const std::vector<size_t>& statement)
      : sql_(sql), tokens_(tokens), st_(statement) {}

  void Collect(std::vector<Edit>& edits) {
    size_t i = 1;
    if (i < st_.size() && (Is(i, "distinct") || Is(i, "all"))) ++i;
    i = RewriteTop(i, edits);
    RewriteAliases(i, edits);
  }

 private:
  const Token& At(size_t i) const { return tokens_[st_[i]]; }
  bool Is(size_t i, std::string_view keyword) const {
    return i < st_.size() && IsKeyword(At(i), sql_, keyword);
  }
  bool IsNumber(size_t i) const {
    return i < st_.size() && At(i).kind == TokenKind::Word && IsDigits(At(i).Text(sql_));
  }
  bool IsKind(size_t i, TokenKind kind) const { return i < st_.size() && At(i).kind == kind; }

  // "top N" or "top (N)" at `i`: removed, and " limit N" added after the statement's last token.
  // Answers where the select list starts.
  size_t RewriteTop(size_t i, std::vector<Edit>& edits) {
    if (!Is(i, "top")) return i;
    size_t numberAt, listAt;
    if (IsNumber(i + 1)) {
      numberAt = i + 1;
      listAt = i + 2;
    } else if (IsKind(i + 1, TokenKind::OpenParen) && IsNumber(i + 2) &&
               IsKind(i + 3, TokenKind::CloseParen)) {
      numberAt = i + 2;
      listAt = i + 4;
    } else {
      return i;  // a column named top
    }
    size_t removeEnd = listAt < st_.size() ? At(listAt).begin : At(listAt - 1).end;
    edits.push_back({At(i).begin, removeEnd, ""});
    size_t last = At(st_.size() - 1).end;
    edits.push_back({last, last, " limit " + std::string(At(numberAt).Text(sql_))});
    return listAt;
  }

  // Items of the top-level select list from `i` on, split at top-level commas.
  void RewriteAliases(size_t i, std::vector<Edit>& edits) {
    size_t itemStart = i;
    for (; i <= st_.size(); ++i) {
      bool atEnd = i == st_.size() || (At(i).depth == 0 && EndsSelectList(At(i), sql_));
      if (atEnd || (At(i).depth == 0 && At(i).kind == TokenKind::Comma)) {
        RewriteItem(itemStart, i, edits);
        if (atEnd) return;
        itemStart = i + 1;
      }
    }
  }

  // Item [first, last): "alias = expr" becomes "expr as alias".
  void RewriteItem(size_t first, size_t last, std::vector<Edit>& edits) {
    if (last - first < 3 || !IsName(At(first), sql_)) return;
    const Token& eq = At(first + 1);
    if (eq.kind != TokenKind::Operator || eq.Text(sql_) != "=") return;
    size_t exprBegin = At(first + 2).begin, exprEnd = At(last - 1).end;
    std::string text(sql_.substr(exprBegin, exprEnd - exprBegin));
    text += " as ";
    text += At(first).Text(sql_);
    edits.push_back({At(first).begin, exprEnd, std::move(text)});
  }

  std::string_view sql_;
  const std::vector<Token>& tokens_;
  const std::vector<size_t>& st_;
};

std::string Apply(std::string_view sql, std::vector<Edit> edits) {
  std::stable_sort(edits.begin(), edits.end(),
                   [](const Edit& a, const Edit& b) { return a.begin < b.begin; });
  std::string out;
  out.reserve(sql.size() + 32);
  size_t at = 0;
  for (const Edit& e : edits) {
    out.append(sql.substr(at, e.begin - at));
    out += e.text;
    at = e.end;
  }
  out.append(sql.substr(at));
  return out;
}

// SQL Server refuses "x in ()" where SQLite would answer no rows; pages rely on the refusal (a person
// without rights must not get an empty menu silently), so it is refused here with SQL Server's words.
void RefuseEmptyInList(std::string_view sql, const std::vector<Token>& tokens,
                       const std::vector<size_t>& statement) {
  for (size_t i = 0; i + 2 < statement.size(); ++i) {
    if (IsKeyword(tokens[statement[i]], sql, "in") && tokens[statement[i + 1]].kind == TokenKind::OpenParen &&
        tokens[statement[i + 2]].kind == TokenKind::CloseParen)
      throw Error::Database("Incorrect syntax near ')'.");
  }
}

bool IsOperator(const Token& t, std::string_view sql, std::string_view op) {
  return t.kind == TokenKind::Operator && t.Text(sql) == op;
}

// "[a b]" as the server quotes a name: "a b" folded to lower case on PostgreSQL (where unquoted names
// fold too, so [personPlan] and personPlan stay one name), `a b` on MariaDB.
std::string QuoteBracketed(detail::Dialect dialect, std::string_view bracketed) {
  std::string_view name = bracketed.substr(1, bracketed.size() - (bracketed.back() == ']' ? 2 : 1));
  const char quote = dialect == detail::Dialect::PostgreSQL ? '"' : '`';
  std::string out(1, quote);
  for (char c : name) {
    if (dialect == detail::Dialect::PostgreSQL && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c == quote) out += quote;
    out += c;
  }
  out += quote;
  return out;
}

// A column type of "create table" in the server's words; empty when it keeps its own.
std::string_view ServerColumnType(detail::Dialect dialect, const Token& t, std::string_view sql) {
  const bool pg = dialect == detail::Dialect::PostgreSQL;
  const std::pair<std::string_view, std::string_view> types[] = {
      {"datetime", pg ? "timestamp(0)" : ""},
      {"smalldatetime", pg ? "timestamp(0)" : "datetime"},
      {"nvarchar", "varchar"},
      {"nchar", "char"},
      {"ntext", pg ? "text" : "longtext"},
      {"image", pg ? "bytea" : "longblob"},
      {"tinyint", pg ? "smallint" : ""}};
  for (const auto& [from, to] : types)
    if (IsKeyword(t, sql, from)) return to;
  return "";
}

// The first pass for the servers: tokens replaced one by one.
std::vector<Edit> ServerTokenEdits(detail::Dialect dialect, std::string_view sql,
                                   const std::vector<Token>& tokens, const std::vector<size_t>& st) {
  std::vector<Edit> edits;
  const bool pg = dialect == detail::Dialect::PostgreSQL;
  const bool createTable = st.size() > 2 && IsKeyword(tokens[st[0]], sql, "create") &&
                           (IsKeyword(tokens[st[1]], sql, "table") || IsKeyword(tokens[st[2]], sql, "table"));
  auto at = [&](size_t k) -> const Token* { return k < st.size() ? &tokens[st[k]] : nullptr; };
  for (size_t k = 0; k < st.size(); ++k) {
    const Token& t = tokens[st[k]];
    if (t.kind == TokenKind::QuotedName && sql[t.begin] == '[') {
      edits.push_back({t.begin, t.end, QuoteBracketed(dialect, t.Text(sql))});
    } else if (IsKeyword(t, sql, "getdate") && at(k + 2) && at(k + 1)->kind == TokenKind::OpenParen &&
               at(k + 2)->kind == TokenKind::CloseParen) {
      edits.push_back({t.begin, at(k + 2)->end, pg ? "localtimestamp(0)" : "now()"});
      k += 2;
    } else if (IsOperator(t, sql, "+") && ((k > 0 && at(k - 1)->kind == TokenKind::String) ||
                                           (at(k + 1) && at(k + 1)->kind == TokenKind::String))) {
      edits.push_back({t.begin, t.end, "||"});
    } else if (createTable && t.depth == 1 && k > 0 && IsName(*at(k - 1), sql) && t.kind == TokenKind::Word) {
      // A column's type: the word after the column's name.
      if (IsKeyword(t, sql, "integer") && at(k + 2) && IsKeyword(*at(k + 1), sql, "primary") &&
          IsKeyword(*at(k + 2), sql, "key")) {
        if (pg)
          edits.push_back({t.end, t.end, " generated by default as identity"});
        else
          edits.push_back({at(k + 2)->end, at(k + 2)->end, " auto_increment"});
      } else if (std::string_view type = ServerColumnType(dialect, t, sql); !type.empty()) {
        edits.push_back({t.begin, t.end, std::string(type)});
      }
    }
  }
  return edits;
}

// The second pass: the clauses SQL Server writes its own way.
std::string AdaptClauses(std::string_view sql) {
  std::vector<Token> tokens = detail::Tokenize(sql);
  std::vector<size_t> statement = detail::FirstStatement(tokens);
  if (statement.empty()) return std::string(sql);
  const Token& verb = tokens[statement[0]];
  std::vector<Edit> edits;
  bool hasTarget = statement.size() > 1 && IsName(tokens[statement[1]], sql);
  if (IsKeyword(verb, sql, "insert")) {
    // "insert or replace into" is SQLite's own form; "into" is there already.
    if (hasTarget && !IsKeyword(tokens[statement[1]], sql, "into") &&
        !IsKeyword(tokens[statement[1]], sql, "or"))
      edits.push_back({verb.end, verb.end, " into"});
  } else if (IsKeyword(verb, sql, "delete")) {
    if (hasTarget && !IsKeyword(tokens[statement[1]], sql, "from"))
      edits.push_back({verb.end, verb.end, " from"});
  } else if (IsKeyword(verb, sql, "select")) {
    SelectRewriter(sql, tokens, statement).Collect(edits);
  }
  if (edits.empty()) return std::string(sql);
  return Apply(sql, std::move(edits));
}

bool StartsWithSelect(std::string_view sql) {
  std::vector<Token> tokens = detail::Tokenize(sql);
  std::vector<size_t> statement = detail::FirstStatement(tokens);
  return !statement.empty() && IsKeyword(tokens[statement[0]], sql, "select");
}

bool HasTopLevelOrderBy(std::string_view sql) {
  return detail::WithoutTopLevelOrderBy(sql).size() != sql.size();
}

}  // namespace

namespace detail {

Dialect DialectOfProduct(std::string_view dbmsName) {
  std::string name(dbmsName);
  for (char& c : name)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  if (name.find("postgres") != std::string::npos) return Dialect::PostgreSQL;
  if (name.find("mariadb") != std::string::npos || name.find("mysql") != std::string::npos)
    return Dialect::MariaDB;
  if (name.find("sqlite") != std::string::npos) return Dialect::SQLite;
  return Dialect::SqlServer;
}

static std::string AdaptUncached(Dialect dialect, std::string_view sql) {
  std::vector<Token> tokens = Tokenize(sql);
  std::vector<size_t> statement = FirstStatement(tokens);
  if (statement.empty()) return std::string(sql);
  RefuseEmptyInList(sql, tokens, statement);
  if (dialect == Dialect::SQLite) return AdaptClauses(sql);
  std::vector<Edit> edits = ServerTokenEdits(dialect, sql, tokens, statement);
  if (edits.empty()) return AdaptClauses(sql);
  return AdaptClauses(Apply(sql, std::move(edits)));
}

namespace {

// Pages send the same few statements again and again (a list's query, a look-up per shown row with
// a handful of different codes), so each thread keeps the texts it made from them: `make(sql)`, kept
// by the text as given (no key is built for a lookup) in `memo`. A memo is dropped whole when it is
// full: simpler than an LRU and as good for a working set that fits. A text `make` refuses is not
// kept and is refused again next time.
struct TextHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};
using TextMemo = std::unordered_map<std::string, std::string, TextHash, std::equal_to<>>;

template <typename Make>
std::string Memoized(TextMemo& memo, std::string_view sql, Make make) {
  constexpr size_t kKept = 512, kLongestKept = 4096;
  if (sql.size() > kLongestKept) return make(sql);
  if (auto it = memo.find(sql); it != memo.end()) return it->second;
  std::string made = make(sql);
  if (memo.size() >= kKept) memo.clear();
  memo.emplace(std::string(sql), made);
  return made;
}

}  // namespace

std::string Adapt(Dialect dialect, std::string_view sql) {
  if (dialect == Dialect::SqlServer) return std::string(sql);
  thread_local TextMemo memos[4];  // one per dialect
  return Memoized(memos[static_cast<int>(dialect)], sql,
                  [dialect](std::string_view s) { return AdaptUncached(dialect, s); });
}

void RefuseStackedStatements(std::string_view sql) {
  std::vector<Token> tokens = Tokenize(sql);
  bool inStatement = false, ended = false;
  for (const Token& t : tokens) {
    if (t.kind == TokenKind::Semicolon && t.depth == 0) {
      ended = inStatement;
      continue;
    }
    if (!t.IsSignificant()) continue;
    if (ended)
      throw Error::Database(
          "The command text holds more than one statement; only one statement can be run per call.");
    inStatement = true;
  }
}

std::string CountQuery(Dialect dialect, std::string_view adapted) {
  thread_local TextMemo memos[4];  // one per dialect
  return Memoized(memos[static_cast<int>(dialect)], adapted, [dialect](std::string_view sql) {
    std::string out = "select count(*) from (";
    out += WithoutTopLevelOrderBy(StatementBody(sql));
    out += dialect == Dialect::SQLite ? ")" : ") as corvane_rows";
    return out;
  });
}

namespace {

// What OffsetQuery writes before its numbers: the statement, wrapped or given an order where the
// dialect needs it.
std::string OffsetHead(Dialect dialect, std::string_view adapted) {
  std::string_view body = StatementBody(adapted);
  if (dialect == Dialect::SqlServer) {
    // OFFSET needs an ORDER BY; a statement with TOP keeps its order inside a subquery.
    bool top = false;
    if (std::vector<Token> tokens = Tokenize(body); !tokens.empty()) {
      std::vector<size_t> st = FirstStatement(tokens);
      top = st.size() > 1 && IsKeyword(tokens[st[1]], body, "top");
    }
    std::string out = top ? "select * from (" + std::string(body) + ") as corvane_page" : std::string(body);
    if (top || !HasTopLevelOrderBy(body)) out += " order by (select null)";
    return out;
  }
  if (!HasTopLevelLimit(body)) return std::string(body);
  std::string out = "select * from (";
  out += body;
  out += dialect == Dialect::SQLite ? ")" : ") as corvane_page";
  return out;
}

}  // namespace

std::string OffsetQuery(Dialect dialect, std::string_view adapted, int64_t offset, int64_t rows) {
  // A list asks for the same statement at a few offsets: its head is made once per thread and text.
  thread_local TextMemo memos[4];  // one per dialect
  std::string out = Memoized(memos[static_cast<int>(dialect)], adapted,
                             [dialect](std::string_view sql) { return OffsetHead(dialect, sql); });
  if (dialect == Dialect::SqlServer) {
    out += " offset " + std::to_string(offset) + " rows";
    if (rows > 0) out += " fetch next " + std::to_string(rows) + " rows only";
    return out;
  }
  if (rows > 0)
    out += " limit " + std::to_string(rows);
  else if (dialect == Dialect::SQLite)
    out += " limit -1";
  else if (dialect == Dialect::MariaDB)
    out += " limit 18446744073709551615";
  out += " offset " + std::to_string(offset);
  return out;
}

bool IsSelect(std::string_view adapted) { return StartsWithSelect(adapted); }

}  // namespace detail

}  // namespace corvane::ado
