// Tokens of the language and of the page text around it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::script {

// A position in the page's files (file: index into the compiled page's files).
struct Pos {
  uint16_t file = 0;
  int32_t line = 0;
  int32_t column = 0;
};

enum class Tok : uint8_t {
  End,         // end of the text
  Newline,     // a line end, or "%>" closing a block of code
  Colon,       // ':' between statements on one line
  Html,        // page text to write as it is (text)
  Output,      // "<%=": the expression that follows is written
  Directive,   // "<%@ ... %>" (text: what is between)
  Identifier,  // text: the name as written
  Keyword,     // kw
  Integer,     // number: a literal that fits an Integer
  Long,        // number: a literal that fits a Long
  Double,      // number
  String,      // text: the value
  Date,        // number: the serial
  LParen,
  RParen,
  Comma,
  Dot,
  Eq,
  Ne,
  Lt,
  Gt,
  Le,
  Ge,
  Plus,
  Minus,
  Star,
  Slash,
  Backslash,
  Caret,
  Amp,
};

// The reserved words. Words that are special only in one place (Get, Let, Property, Default,
// Preserve, Step, Explicit, Error, Resume, GoTo) are identifiers that the parser recognises there.
enum class Kw : uint8_t {
  None,
  And,
  ByRef,
  ByVal,
  Call,
  Case,
  Class,
  Const,
  Dim,
  Do,
  Each,
  Else,
  ElseIf,
  Empty,
  End,
  Eqv,
  Erase,
  Exit,
  False,
  For,
  Function,
  If,
  Imp,
  In,
  Is,
  Loop,
  Me,
  Mod,
  New,
  Next,
  Not,
  Nothing,
  Null,
  On,
  Option,
  Or,
  Private,
  Public,
  ReDim,
  Select,
  Set,
  Sub,
  Then,
  To,
  True,
  Until,
  Wend,
  While,
  With,
  Xor,
};

struct Token {
  Tok kind = Tok::End;
  Kw kw = Kw::None;
  bool spaceBefore = false;  // blank before it (a '.' after a blank starts a With member)
  size_t offset = 0;         // in the expanded text
  Pos pos;                   // in the original files (filled after splitting, see PlaceTokens)
  double number = 0;
  std::string text;

  bool Is(Kw k) const { return kind == Tok::Keyword && kw == k; }
  bool IsWord() const { return kind == Tok::Identifier || kind == Tok::Keyword; }
};

}  // namespace corvane::script
