// Splits a page (or plain code) into tokens. In a page, the text outside <% %> and outside
// <script runat="server"> blocks becomes Html tokens, "<%=" an Output token, "<%@ ... %>" a
// Directive token, and the "%>" that closes a block a Newline.
#pragma once

#include <stdexcept>
#include <string_view>
#include <vector>

#include "script/token.h"

namespace corvane::script {

// A lexical error at an offset of the text (the parser turns it into a ScriptError).
struct LexError {
  int32_t number;
  size_t offset;
};

// Raises LexError.
std::vector<Token> Tokenize(std::string_view text, bool page);

// The keyword that a word is, case-blind; Kw::None for other words.
Kw KeywordOf(std::string_view word);

}  // namespace corvane::script
