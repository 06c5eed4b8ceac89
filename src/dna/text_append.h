// Building the components' HTML and SQL a piece at a time without a temporary string per "+".
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

#include "corvane/variant.h"

namespace corvane::dna {

// Appends the pieces in order, growing the string at most once.
inline void Append(std::string& s, std::initializer_list<std::string_view> pieces) {
  size_t size = s.size();
  for (std::string_view piece : pieces) size += piece.size();
  if (size > s.capacity()) s.reserve(std::max(size, 2 * s.capacity()));
  for (std::string_view piece : pieces) s.append(piece);
}

// Appends the value's text as concatenation gives it, without a copy when the value is a string.
inline void AppendText(std::string& s, const Variant& v) {
  if (const std::string* text = v.StringPtr())
    s += *text;
  else
    s += v.Text();
}

}  // namespace corvane::dna
