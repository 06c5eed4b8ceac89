// The pattern engine behind RegExp: the language's pattern syntax rewritten for PCRE2, compiled once,
// and searched with limits so that no pattern can hold a worker for long.
//
// Positions here are byte offsets into UTF-8 text; RegExp turns them into UTF-16 units for pages.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace corvane::script::regexp {

// Rewrites a pattern in the language's syntax (JavaScript's, as the platform's engine reads it) into
// PCRE2's. Raises 5017 where the language refuses the pattern ("a**", "(?<x>)", "\" at the end).
std::string TranslatePattern(std::string_view pattern);

// The error a malformed pattern raises: 5017 "Syntax error in regular expression".
[[noreturn]] void ThrowSyntaxError();

struct Span {
  static constexpr size_t kUnset = static_cast<size_t>(-1);
  size_t begin = kUnset;
  size_t end = kUnset;
  bool Matched() const { return begin != kUnset; }
};

// A compiled pattern. Immutable; copies share the compiled code.
class Pattern {
 public:
  // Raises 5017 when the pattern does not compile.
  Pattern(std::string_view source, bool ignoreCase, bool multiLine);
  // The number of capturing groups.
  size_t Groups() const;

 private:
  friend class Matcher;
  struct Code;
  std::shared_ptr<const Code> code_;
};

// One search after another over texts with one Pattern; holds the spans of the last match.
class Matcher {
 public:
  explicit Matcher(const Pattern& pattern);
  ~Matcher();
  Matcher(const Matcher&) = delete;
  Matcher& operator=(const Matcher&) = delete;

  // Looks for the first match at or after byte `start` of `subject` (the text before `start` still
  // counts for "\b" and "^"). Raises 28 "Out of stack space" when the search passes the match limit.
  bool Find(std::string_view subject, size_t start);
  // Group i of the last match (0 is the whole match); unset for a group that took no part.
  Span Group(size_t i) const;
  size_t Groups() const;

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

}  // namespace corvane::script::regexp
