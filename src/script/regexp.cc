// RegExp: Pattern, Global, IgnoreCase, MultiLine; Test, Execute and Replace.
//
// The compiled pattern is kept until Pattern, IgnoreCase or MultiLine changes, so a page that runs
// one RegExp over many texts compiles it once. A search walks the text as the platform's engine
// does: each search starts where the last match ended, and after an empty match one character
// further on, so "x*" replaced by "-" in "abc" gives "-a-b-c-".
#include "script/regexp.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/members.h"
#include "runtime/utf8.h"
#include "script/regexp_engine.h"
#include "script/regexp_matches.h"

namespace corvane::script {

namespace {

using regexp::Matcher;
using regexp::Span;

// Byte offsets into a text turned into UTF-16 units, for offsets that mostly increase.
class Utf16Offsets {
 public:
  explicit Utf16Offsets(std::string_view text) : text_(text) {}
  int32_t At(size_t byte) {
    if (byte < byte_) byte_ = units_ = 0;
    while (byte_ < byte) {
      const utf8::Char c = utf8::DecodeAt(text_, byte_);
      byte_ += c.bytes;
      units_ += c.Units();
    }
    return units_;
  }

 private:
  std::string_view text_;
  size_t byte_ = 0;
  int32_t units_ = 0;
};

std::string_view Slice(std::string_view text, Span span) {
  return text.substr(span.begin, span.end - span.begin);
}

// The replacement text with its "$" forms: $1..$99 a group ("$12" is group 12 when there are that
// many, else group 1 and a "2"), $& the match, $` the text before it, $' the text after it, $$ a "$".
// Any other "$" is itself, and so is a reference to a group the pattern does not have.
void Expand(std::string& out, std::string_view with, std::string_view text, const Matcher& m) {
  const size_t groups = m.Groups() - 1;
  const Span whole = m.Group(0);
  auto digit = [&](size_t i) {
    return i < with.size() && with[i] >= '0' && with[i] <= '9' ? with[i] - '0' : -1;
  };
  for (size_t i = 0; i < with.size(); ++i) {
    if (with[i] != '$' || i + 1 == with.size()) {
      out += with[i];
      continue;
    }
    const char next = with[i + 1];
    size_t group = 0, used = 0;
    if (const int d1 = digit(i + 1); d1 >= 0) {
      const int d2 = digit(i + 2);
      if (d2 >= 0 && d1 * 10 + d2 >= 1 && static_cast<size_t>(d1 * 10 + d2) <= groups) {
        group = d1 * 10 + d2;
        used = 2;
      } else if (d1 >= 1 && static_cast<size_t>(d1) <= groups) {
        group = d1;
        used = 1;
      }
    }
    if (used) {
      if (Span s = m.Group(group); s.Matched()) out += Slice(text, s);
      i += used;
    } else if (next == '$') {
      out += '$';
      ++i;
    } else if (next == '&') {
      out += Slice(text, whole);
      ++i;
    } else if (next == '`') {
      out += text.substr(0, whole.begin);
      ++i;
    } else if (next == '\'') {
      out += text.substr(whole.end);
      ++i;
    } else {
      out += '$';
    }
  }
}

class RegExp final : public Dispatch {
 public:
  const ClassInfo& Info() const override { return RegExpClass(); }

  const std::string& Pattern() const { return pattern_; }
  void SetPattern(std::string pattern) {
    if (pattern != pattern_) compiled_.reset();
    pattern_ = std::move(pattern);
  }
  bool IgnoreCase() const { return ignoreCase_; }
  void SetIgnoreCase(bool on) {
    if (on != ignoreCase_) compiled_.reset();
    ignoreCase_ = on;
  }
  bool MultiLine() const { return multiLine_; }
  void SetMultiLine(bool on) {
    if (on != multiLine_) compiled_.reset();
    multiLine_ = on;
  }
  bool global = false;

  bool Test(std::string_view text) {
    Matcher m(Compiled());
    return m.Find(text, 0);
  }

  Object Execute(std::string_view text) {
    std::vector<regexp::MatchRecord> records;
    Utf16Offsets units(text);
    ForEachMatch(text, [&](const Matcher& m) {
      const Span whole = m.Group(0);
      regexp::MatchRecord r{.value = std::string(Slice(text, whole)), .firstIndex = units.At(whole.begin)};
      r.length = units.At(whole.end) - r.firstIndex;
      for (size_t g = 1; g < m.Groups(); ++g) {
        const Span s = m.Group(g);
        r.subMatches.push_back(s.Matched() ? Variant(Slice(text, s)) : Variant());
      }
      records.push_back(std::move(r));
    });
    return regexp::MakeMatches(std::move(records));
  }

  // Replace(text, with): `with` is the replacement text, or an object (a function reference) whose
  // default member is called with the match, each group, the match's position and the whole text,
  // and whose result replaces the match.
  std::string Replace(std::string_view text, const Variant& with) {
    std::string out;
    size_t copied = 0;
    const std::string withText = with.IsObject() ? std::string() : with.Text();
    Utf16Offsets units(text);
    ForEachMatch(text, [&](const Matcher& m) {
      const Span whole = m.Group(0);
      out += text.substr(copied, whole.begin - copied);
      copied = whole.end;
      if (!with.IsObject()) {
        Expand(out, withText, text, m);
        return;
      }
      Args args{Variant(Slice(text, whole))};
      for (size_t g = 1; g < m.Groups(); ++g) {
        const Span s = m.Group(g);
        args.push_back(s.Matched() ? Variant(Slice(text, s)) : Variant());
      }
      args.push_back(Variant(units.At(whole.begin)));
      args.push_back(Variant(text));
      out += with.ToObject().Invoke(int32_t{0}, args).Text();  // the default member
    });
    out += text.substr(copied);
    return out;
  }

 private:
  const regexp::Pattern& Compiled() {
    if (!compiled_) compiled_.emplace(pattern_, ignoreCase_, multiLine_);
    return *compiled_;
  }

  // Calls f for each match in turn: every match with Global, else the first.
  template <class F>
  void ForEachMatch(std::string_view text, F f) {
    Matcher m(Compiled());
    size_t at = 0;
    while (m.Find(text, at)) {
      f(m);
      if (!global) break;
      const Span whole = m.Group(0);
      at = whole.end;
      if (whole.begin == whole.end) {
        if (at >= text.size()) break;
        at += utf8::DecodeAt(text, at).bytes;
      }
    }
  }

  std::string pattern_;
  bool ignoreCase_ = false;
  bool multiLine_ = false;
  std::optional<regexp::Pattern> compiled_;
};

}  // namespace

Object NewRegExp() { return Object(std::make_shared<RegExp>()); }

const ClassInfo& RegExpClass() {
  static const ClassInfo info{
      .className = "IRegExp2",  // what TypeName shows on the platform
      .progID = "VBScript.RegExp",
      .clsid = "{3f4daca4-160d-11d2-a8e9-00104b365c9f}",
      .iid = "{3f4dacb0-160d-11d2-a8e9-00104b365c9f}",
      .members =
          {
              ReadWrite<RegExp>(
                  "Pattern", 10001, [](RegExp& r, Args&) { return r.Pattern(); },
                  [](RegExp& r, Args&, const Variant& v) { r.SetPattern(v.Text()); }),
              ReadWrite<RegExp>(
                  "IgnoreCase", 10002, [](RegExp& r, Args&) { return r.IgnoreCase(); },
                  [](RegExp& r, Args&, const Variant& v) { r.SetIgnoreCase(v.ToBool()); }),
              ReadWrite<RegExp>(
                  "Global", 10003, [](RegExp& r, Args&) { return r.global; },
                  [](RegExp& r, Args&, const Variant& v) { r.global = v.ToBool(); }),
              ReadWrite<RegExp>(
                  "MultiLine", 10004, [](RegExp& r, Args&) { return r.MultiLine(); },
                  [](RegExp& r, Args&, const Variant& v) { r.SetMultiLine(v.ToBool()); }),
              Method<RegExp>("Execute", 10005,
                             [](RegExp& r, Args& a) { return r.Execute(Arg(a, 0).Text()); }),
              Method<RegExp>("Test", 10006, [](RegExp& r, Args& a) { return r.Test(Arg(a, 0).Text()); }),
              Method<RegExp>("Replace", 10007,
                             [](RegExp& r, Args& a) { return r.Replace(Arg(a, 0).Text(), Arg(a, 1)); }),
          },
      .create = NewRegExp,
  };
  return info;
}

}  // namespace corvane::script
