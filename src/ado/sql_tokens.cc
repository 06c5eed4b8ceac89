#include "ado/sql_tokens.h"

namespace corvane::ado::detail {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

bool IsWordChar(char c) {
  unsigned char u = static_cast<unsigned char>(c);
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
         c == '#' || c == '@' || u >= 0x80;
}

bool IsTwoCharOperator(char a, char b) {
  switch (a) {
    case '<': return b == '=' || b == '>' || b == '<';
    case '>': return b == '=' || b == '>';
    case '!': return b == '=';
    case '=': return b == '=';
    case '|': return b == '|';
    default: return false;
  }
}

// The end of a quoted text that starts at `i` with `open` and closes with `close`. When `close`
// doubles inside the text (a '' in a string) it does not end it.
size_t QuotedEnd(std::string_view s, size_t i, char close, bool doubledEscapes) {
  size_t j = i + 1;
  while (j < s.size()) {
    if (s[j] == close) {
      if (doubledEscapes && j + 1 < s.size() && s[j + 1] == close) {
        j += 2;
        continue;
      }
      return j + 1;
    }
    ++j;
  }
  return s.size();
}

}  // namespace

std::vector<Token> Tokenize(std::string_view s) {
  std::vector<Token> tokens;
  int depth = 0;
  size_t i = 0;
  while (i < s.size()) {
    char c = s[i];
    TokenKind kind;
    size_t end;
    if (IsBlank(c)) {
      end = i;
      while (end < s.size() && IsBlank(s[end])) ++end;
      kind = TokenKind::Blank;
    } else if (c == '-' && i + 1 < s.size() && s[i + 1] == '-') {
      end = s.find('\n', i);
      if (end == std::string_view::npos) end = s.size();
      kind = TokenKind::Comment;
    } else if (c == '/' && i + 1 < s.size() && s[i + 1] == '*') {
      end = s.find("*/", i + 2);
      end = end == std::string_view::npos ? s.size() : end + 2;
      kind = TokenKind::Comment;
    } else if (c == '\'') {
      end = QuotedEnd(s, i, '\'', true);
      kind = TokenKind::String;
    } else if (c == '"' || c == '`') {
      end = QuotedEnd(s, i, c, true);
      kind = TokenKind::QuotedName;
    } else if (c == '[') {
      end = QuotedEnd(s, i, ']', false);
      kind = TokenKind::QuotedName;
    } else if (IsWordChar(c)) {
      end = i;
      while (end < s.size() && IsWordChar(s[end])) ++end;
      kind = TokenKind::Word;
    } else if (c == '(') {
      tokens.push_back({TokenKind::OpenParen, i, i + 1, depth++});
      ++i;
      continue;
    } else if (c == ')') {
      if (depth > 0) --depth;
      tokens.push_back({TokenKind::CloseParen, i, i + 1, depth});
      ++i;
      continue;
    } else if (c == ',') {
      end = i + 1;
      kind = TokenKind::Comma;
    } else if (c == ';') {
      end = i + 1;
      kind = TokenKind::Semicolon;
    } else {
      end = (i + 1 < s.size() && IsTwoCharOperator(c, s[i + 1])) ? i + 2 : i + 1;
      kind = TokenKind::Operator;
    }
    tokens.push_back({kind, i, end, depth});
    i = end;
  }
  return tokens;
}

bool IsKeyword(const Token& t, std::string_view sql, std::string_view keyword) {
  if (t.kind != TokenKind::Word || t.end - t.begin != keyword.size()) return false;
  for (size_t k = 0; k < keyword.size(); ++k) {
    char a = sql[t.begin + k];
    if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
    char b = keyword[k];
    if (b >= 'A' && b <= 'Z') b = static_cast<char>(b - 'A' + 'a');
    if (a != b) return false;
  }
  return true;
}

std::vector<size_t> FirstStatement(const std::vector<Token>& tokens) {
  std::vector<size_t> significant;
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind == TokenKind::Semicolon) {
      if (significant.empty()) continue;  // leading ";" belong to no statement
      break;
    }
    if (tokens[i].IsSignificant()) significant.push_back(i);
  }
  return significant;
}

std::string_view StatementBody(std::string_view sql) {
  std::vector<Token> tokens = Tokenize(sql);
  std::vector<size_t> statement = FirstStatement(tokens);
  if (statement.empty()) return sql.substr(0, 0);
  return sql.substr(0, tokens[statement.back()].end);
}

bool HasTopLevelLimit(std::string_view sql) {
  std::vector<Token> tokens = Tokenize(sql);
  for (size_t i : FirstStatement(tokens))
    if (tokens[i].depth == 0 && IsKeyword(tokens[i], sql, "limit")) return true;
  return false;
}

std::string_view WithoutTopLevelOrderBy(std::string_view sql) {
  std::vector<Token> tokens = Tokenize(sql);
  std::vector<size_t> statement = FirstStatement(tokens);
  for (size_t k = 0; k + 1 < statement.size(); ++k) {
    const Token& t = tokens[statement[k]];
    if (t.depth == 0 && IsKeyword(t, sql, "limit")) return sql;
  }
  for (size_t k = 0; k + 1 < statement.size(); ++k) {
    const Token& t = tokens[statement[k]];
    if (t.depth == 0 && IsKeyword(t, sql, "order") && IsKeyword(tokens[statement[k + 1]], sql, "by"))
      return sql.substr(0, t.begin);
  }
  return sql;
}

}  // namespace corvane::ado::detail
