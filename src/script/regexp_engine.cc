// Compiling and searching with PCRE2 (8-bit code units, UTF mode).
//
// The options give PCRE2 the language's reading of a pattern:
// - "$" without MultiLine matches at the very end only, not before a final newline (DOLLAR_ENDONLY);
// - the one line end is "\n": "." matches anything else ("\r" too), and with MultiLine "^" and "$"
//   match after and before a "\n", as the platform's engine documents it;
// - a back reference to a group that has not matched matches the empty text (MATCH_UNSET_BACKREF);
// - "[]" matches nothing, "[^]" any character (ALLOW_EMPTY_CLASS);
// - text that is not valid UTF-8 is searched as it is: a stray byte matches nothing but does not
//   stop the search (MATCH_INVALID_UTF).
// Each search runs under a match limit and a heap limit, so that a pattern that backtracks without
// end ("(a+)+$" on a long run of "a") fails with 28 "Out of stack space" instead of holding the
// worker. Patterns are compiled with the JIT where the system allows it; a search that outgrows the
// JIT's stack runs again on the interpreter, whose heap is limited instead.
#include "script/regexp_engine.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

#include "corvane/error.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace corvane::script::regexp {

namespace {

constexpr uint32_t kMatchLimit = 5'000'000;
constexpr uint32_t kHeapLimitKiB = 16 * 1024;

[[noreturn]] void ThrowLimit() { throw Error(28, "Out of stack space"); }

}  // namespace

struct Pattern::Code {
  pcre2_code* code = nullptr;
  Code() = default;
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;
  ~Code() { pcre2_code_free(code); }
};

Pattern::Pattern(std::string_view source, bool ignoreCase, bool multiLine) {
  // Compiled patterns are kept by their text and options: pages make a new RegExp for each use, and
  // a JIT compile costs tens of microseconds. A compiled pattern is read-only, so threads share it;
  // the cache starts again when full. Long patterns are compiled each time, so that the cache stays
  // small.
  static std::mutex cacheMutex;
  static std::unordered_map<std::string, std::shared_ptr<const Code>> cache;
  constexpr size_t kCacheSize = 512, kLongPattern = 1024;
  std::string key = std::string(source) + '\0' + (ignoreCase ? 'i' : '-') + (multiLine ? 'm' : '-');
  const bool cached = source.size() <= kLongPattern;
  if (cached) {
    std::lock_guard lock(cacheMutex);
    if (auto it = cache.find(key); it != cache.end()) {
      code_ = it->second;
      return;
    }
  }
  const std::string translated = TranslatePattern(source);
  uint32_t options = PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_DOLLAR_ENDONLY | PCRE2_ALLOW_EMPTY_CLASS |
                     PCRE2_MATCH_UNSET_BACKREF | PCRE2_NEVER_BACKSLASH_C | PCRE2_NEVER_UCP;
  if (ignoreCase) options |= PCRE2_CASELESS;
  if (multiLine) options |= PCRE2_MULTILINE;
  pcre2_compile_context* context = pcre2_compile_context_create(nullptr);
  pcre2_set_newline(context, PCRE2_NEWLINE_LF);
  int error = 0;
  PCRE2_SIZE offset = 0;
  auto code = std::make_shared<Code>();
  code->code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(translated.data()), translated.size(), options,
                             &error, &offset, context);
  pcre2_compile_context_free(context);
  if (!code->code) ThrowSyntaxError();
  pcre2_jit_compile(code->code, PCRE2_JIT_COMPLETE);  // where it fails, the interpreter runs it
  code_ = std::move(code);
  if (!cached) return;
  std::lock_guard lock(cacheMutex);
  if (cache.size() >= kCacheSize) cache.clear();
  cache.emplace(std::move(key), code_);
}

size_t Pattern::Groups() const {
  uint32_t n = 0;
  pcre2_pattern_info(code_->code, PCRE2_INFO_CAPTURECOUNT, &n);
  return n;
}

struct Matcher::Data {
  std::shared_ptr<const Pattern::Code> code;
  pcre2_match_data* match = nullptr;
  pcre2_match_context* context = nullptr;
  ~Data() {
    pcre2_match_data_free(match);
    pcre2_match_context_free(context);
  }
};

Matcher::Matcher(const Pattern& pattern) : data_(std::make_unique<Data>()) {
  data_->code = pattern.code_;
  data_->match = pcre2_match_data_create_from_pattern(data_->code->code, nullptr);
  data_->context = pcre2_match_context_create(nullptr);
  if (!data_->match || !data_->context) ThrowLimit();
  pcre2_set_match_limit(data_->context, kMatchLimit);
  pcre2_set_heap_limit(data_->context, kHeapLimitKiB);
}

Matcher::~Matcher() = default;

bool Matcher::Find(std::string_view subject, size_t start) {
  auto run = [&](uint32_t options) {
    return pcre2_match(data_->code->code, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(), start,
                       options, data_->match, data_->context);
  };
  int rc = run(0);
  if (rc == PCRE2_ERROR_JIT_STACKLIMIT) rc = run(PCRE2_NO_JIT);
  if (rc >= 0) return true;
  switch (rc) {
    case PCRE2_ERROR_NOMATCH: return false;
    case PCRE2_ERROR_MATCHLIMIT:
    case PCRE2_ERROR_DEPTHLIMIT:
    case PCRE2_ERROR_HEAPLIMIT:
    case PCRE2_ERROR_JIT_STACKLIMIT:
    case PCRE2_ERROR_NOMEMORY: ThrowLimit();
    default: throw Error::InvalidCall();
  }
}

Span Matcher::Group(size_t i) const {
  if (i >= Groups()) return {};
  const PCRE2_SIZE* v = pcre2_get_ovector_pointer(data_->match);
  if (v[2 * i] == PCRE2_UNSET) return {};
  return {v[2 * i], v[2 * i + 1]};
}

size_t Matcher::Groups() const { return pcre2_get_ovector_count(data_->match); }

}  // namespace corvane::script::regexp
