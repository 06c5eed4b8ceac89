// The SQL Server forms the components write, rewritten for SQLite:
//
//   select [distinct|all] top N <rest>   ->  select [distinct|all] <rest> limit N   (also "top (N)")
//   insert T(...) / insert T values ...  ->  insert into T ...
//   delete T where ...                   ->  delete from T where ...
//   select ..., alias=expr, ... from     ->  select ..., expr as alias, ... from
//
// Only the first statement of the text is looked at, and only these forms: everything else (a column
// named "top", "=" in a string or a where clause, "insert into", "delete from") keeps every byte. The
// alias form is recognised only among the top-level items of the select list: an item that starts
// with a name followed by a single "=" (never "<=", ">=", "==", "!=").
//
// One form is refused rather than rewritten: an empty "in ()" list, which SQL Server rejects.
#include "ado/sqlite_dialect.h"

#include <algorithm>

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

}  // namespace

std::string detail::AdaptForSqlite(std::string_view sql) {
  std::vector<Token> tokens = detail::Tokenize(sql);
  std::vector<size_t> statement = detail::FirstStatement(tokens);
  if (statement.empty()) return std::string(sql);
  RefuseEmptyInList(sql, tokens, statement);
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

namespace detail {

std::string SqliteCountQuery(std::string_view adapted) {
  std::string out = "select count(*) from (";
  out += WithoutTopLevelOrderBy(StatementBody(adapted));
  out += ")";
  return out;
}

std::string SqliteOffsetQuery(std::string_view adapted, int64_t offset) {
  std::string_view body = StatementBody(adapted);
  std::string out;
  if (HasTopLevelLimit(body)) {
    out = "select * from (";
    out += body;
    out += ")";
  } else {
    out = body;
  }
  out += " limit -1 offset " + std::to_string(offset);
  return out;
}

}  // namespace detail

}  // namespace corvane::ado
