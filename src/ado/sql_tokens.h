// A lexical view of one SQL text, shared by the dialect adapters and the paging helpers.
//
// The tokenizer never fails and never drops a byte: the tokens cover the text end to end, so an
// adapter can copy every byte it does not mean to change. Quoted texts are single tokens:
//   'it''s'      a string (a doubled quote stays inside)
//   "a b" [a b] `a b`   quoted names ("" and `` escape their quote; [...] ends at the first ])
//   -- to the end of the line, /* ... */   comments
// An unterminated string, name or comment runs to the end of the text. Words are runs of letters,
// digits, '_', '$', '#', '@' and any byte of a multi-byte UTF-8 character (names may be Chinese);
// numbers are words too. Operators of two characters (<= >= <> != == || << >>) are one token, so a
// lone "=" is always an assignment or an equality, never part of a comparison.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace corvane::ado::detail {

enum class TokenKind {
  Blank,
  Comment,
  String,
  QuotedName,
  Word,
  Operator,
  OpenParen,
  CloseParen,
  Comma,
  Semicolon
};

struct Token {
  TokenKind kind;
  size_t begin;  // byte offsets into the text
  size_t end;
  int depth;  // parentheses open before this token (a ")" counts at its inner depth)

  std::string_view Text(std::string_view sql) const { return sql.substr(begin, end - begin); }
  bool IsSignificant() const { return kind != TokenKind::Blank && kind != TokenKind::Comment; }
};

std::vector<Token> Tokenize(std::string_view sql);

// True when `t` is a word equal to `keyword` (ASCII letters, any case).
bool IsKeyword(const Token& t, std::string_view sql, std::string_view keyword);

// The significant tokens of the first statement (up to its first top-level ";"), as indexes into
// `tokens`.
std::vector<size_t> FirstStatement(const std::vector<Token>& tokens);

// The first statement without what follows its last significant token: trailing blanks, comments and
// semicolons are cut, so more text can be appended safely (a trailing "-- comment" would swallow it).
std::string_view StatementBody(std::string_view sql);

// The text before the first statement's top-level ORDER BY, when it has one and no LIMIT (which would
// make the order matter); else the text itself. Counting rows never needs the order, and keeping it
// makes SQLite walk a sort index row by row.
std::string_view WithoutTopLevelOrderBy(std::string_view sql);

// True when the first statement has a LIMIT clause outside parentheses.
bool HasTopLevelLimit(std::string_view sql);

}  // namespace corvane::ado::detail
