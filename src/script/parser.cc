// The parser's driver, its token helpers, name resolution and the position map.
#include "script/parser.h"

#include <algorithm>

#include "corvane/text.h"
#include "script/parser_impl.h"
#include "script/script_object.h"
#include "script/vbs_errors.h"

namespace corvane::script {

std::string Lower(std::string_view s) { return LCase(s); }

// ---- Positions ------------------------------------------------------------------------------------

PositionMap::PositionMap(const Source& source) : segments_(source.segments) {
  lineStarts_.push_back(0);
  const std::string& t = source.text;
  for (size_t i = t.find('\n'); i != std::string::npos; i = t.find('\n', i + 1)) lineStarts_.push_back(i + 1);
}

Pos PositionMap::At(size_t offset) const {
  if (isFixed_) return fixed_;
  // The parser asks in the order of the text, mostly: walk on from the last answer when it can.
  auto lineOf = [&](size_t o, size_t& hint) {
    if (hint >= lineStarts_.size() || lineStarts_[hint] > o) {
      hint = static_cast<size_t>(std::upper_bound(lineStarts_.begin(), lineStarts_.end(), o) -
                                 lineStarts_.begin() - 1);
    } else {
      while (hint + 1 < lineStarts_.size() && lineStarts_[hint + 1] <= o) ++hint;
    }
    return hint;
  };
  if (segmentHint_ >= segments_.size() || segments_[segmentHint_].offset > offset) {
    auto seg = std::upper_bound(segments_.begin(), segments_.end(), offset,
                                [](size_t o, const Segment& s) { return o < s.offset; });
    if (seg == segments_.begin()) return {};
    segmentHint_ = static_cast<size_t>(seg - segments_.begin() - 1);
  } else {
    while (segmentHint_ + 1 < segments_.size() && segments_[segmentHint_ + 1].offset <= offset)
      ++segmentHint_;
  }
  const Segment& seg = segments_[segmentHint_];
  size_t line = lineOf(offset, lineHint_), segLine = lineOf(seg.offset, segmentLineHint_);
  Pos p;
  p.file = seg.file;
  p.line = seg.line + static_cast<int32_t>(line - segLine);
  p.column = line == segLine ? seg.column + static_cast<int32_t>(offset - seg.offset)
                             : static_cast<int32_t>(offset - lineStarts_[line] + 1);
  return p;
}

void PlaceTokens(std::vector<Token>& tokens, const PositionMap& positions) {
  for (Token& t : tokens) t.pos = positions.At(t.offset);
}

// ---- Driver ----------------------------------------------------------------------------------------

Declarations ParseStatements(const ParseInput& in) {
  Declarations decls;
  Parser(in, 1, decls).Program();
  Parser(in, 2, decls).Program();
  return decls;
}

void ParseExpressionOnly(const ParseInput& in) {
  Declarations decls;
  in.unit->expr = Parser(in, 2, decls).ExpressionOnly();
}

Parser::Parser(const ParseInput& in, int pass, Declarations& decls)
    : in_(in),
      toks_(*in.tokens),
      positions_(in.positions),
      names_(*in.names),
      unit_(*in.unit),
      decls_(decls),
      pass_(pass) {}

void Parser::Program() {
  script::Block scratch;
  script::Block& body = pass_ == 2 ? unit_.body : scratch;
  for (;;) {
    Block(body);
    const Token& t = Peek();
    if (t.kind == Tok::End) return;
    if (t.Is(Kw::Next)) Fail(kUnexpectedNext);
    if (t.Is(Kw::Loop)) Fail(kLoopWithoutDo);
    Fail(kExpectedStatement);
  }
}

ExprPtr Parser::ExpressionOnly() {
  while (Peek().kind == Tok::Newline) Next();
  ExprPtr e = Expression();
  while (Peek().kind == Tok::Newline) Next();
  if (Peek().kind != Tok::End) Fail(kExpectedEndOfStatement);
  return e;
}

// ---- Tokens ----------------------------------------------------------------------------------------

bool Parser::IsWord(const Token& t, std::string_view word) const {
  return t.kind == Tok::Identifier && EqualsNoCase(t.text, word);
}

bool Parser::AcceptWord(std::string_view word) {
  if (!IsWord(Peek(), word)) return false;
  Next();
  return true;
}

void Parser::Expect(Tok k, int32_t code) {
  if (!Accept(k)) Fail(code);
}

void Parser::Expect(Kw k, int32_t code) {
  if (!Accept(k)) Fail(code);
}

void Parser::Fail(int32_t code) const { FailAt(code, Peek()); }

void Parser::FailAt(int32_t code, const Token& t) const { throw CompileFailure{code, t.offset}; }

std::string Parser::Identifier() {
  if (Peek().kind != Tok::Identifier) Fail(kExpectedIdentifier);
  return Next().text;
}

bool Parser::AtEndOfStatement() const {
  const Token& t = Peek();
  switch (t.kind) {
    case Tok::Newline:
    case Tok::Colon:
    case Tok::End:
    case Tok::Html:
    case Tok::Output:
    case Tok::Directive: return true;
    case Tok::Keyword: return singleLine_ > 0 && t.kw == Kw::Else;
    default: return false;
  }
}

void Parser::EndOfStatement() {
  if (Accept(Tok::Newline) || Accept(Tok::Colon)) return;
  if (!AtEndOfStatement()) Fail(kExpectedEndOfStatement);
}

// ---- Names -----------------------------------------------------------------------------------------

bool Parser::OptionExplicit() const { return names_.OptionExplicit(); }

const ProcDef* Parser::FindProc(const std::string& lower) const {
  auto it = decls_.procs.find(lower);
  return it != decls_.procs.end() ? it->second : names_.FindProc(lower);
}

const ClassDef* Parser::FindClass(const std::string& lower) const {
  auto it = decls_.classes.find(lower);
  return it != decls_.classes.end() ? it->second : names_.FindClass(lower);
}

const Variant* Parser::FindConst(const std::string& lower) const {
  auto it = decls_.consts.find(lower);
  return it != decls_.consts.end() ? &it->second : names_.FindConst(lower);
}

bool Parser::NameTaken(const std::string& lower) const {
  if (FindProc(lower) || FindClass(lower) || FindConst(lower)) return true;
  int g = names_.FindGlobal(lower);
  return g >= 0 && names_.IsDeclared(g);
}

Binding Parser::Resolve(const Token& name, bool withArgs) {
  const std::string lower = Lower(name.text);
  Binding b{Binding::Global};
  if (const ProcDef* p = ScopeProc()) {
    if (auto it = p->consts.find(lower); it != p->consts.end()) {
      b.kind = Binding::Const;
      b.value = &it->second;
      return b;
    }
    if (auto it = p->locals.find(lower); it != p->locals.end()) {
      b.kind = it->second < static_cast<int>(p->params.size()) ? Binding::Param : Binding::Local;
      b.index = it->second;
      return b;
    }
    if (p->ReturnsValue() && lower == Lower(p->name)) {
      // Inside Function f, `f` is its result; f(...) calls it again.
      if (withArgs && !p->cls) {
        b.kind = Binding::Proc;
        b.proc = p;
      } else if (withArgs) {
        b.kind = Binding::Member;
        b.member = p->cls->Find(lower);
      } else {
        b.kind = Binding::Local;
        b.index = p->returnSlot;
      }
      return b;
    }
  }
  if (const ClassDef* c = ScopeClass()) {
    if (const ClassMember* m = c->Find(lower)) {
      if (m->field >= 0) {
        b.kind = Binding::Field;
        b.index = m->field;
      } else {
        b.kind = Binding::Member;
        b.member = m;
      }
      return b;
    }
  }
  if (const Variant* v = FindConst(lower)) {
    b.kind = Binding::Const;
    b.value = v;
    return b;
  }
  if (const ProcDef* p = FindProc(lower)) {
    b.kind = Binding::Proc;
    b.proc = p;
    return b;
  }
  int g = names_.FindGlobal(lower);
  if (g >= 0 && names_.IsDeclared(g)) {
    b.index = g;
    return b;
  }
  if (lower == "err") {
    b.kind = Binding::Err;
    return b;
  }
  if (FindIntrinsic(lower, &b.intrinsic, &b.minArgs, &b.maxArgs)) {
    b.kind = Binding::Intrinsic;
    return b;
  }
  if ((b.builtin = FindBuiltin(lower))) {
    b.kind = Binding::Builtin;
    return b;
  }
  if ((b.value = FindConstant(lower))) {
    b.kind = Binding::Const;
    return b;
  }
  if (g < 0 && proc_) {
    if (auto it = proc_->assigned.find(lower); it != proc_->assigned.end()) {
      if (OptionExplicit() && !it->second) {
        b.kind = Binding::Undefined;
        return b;
      }
      b.kind = Binding::Local;
      b.index = proc_->slotCount++;
      proc_->locals.emplace(lower, b.index);
      return b;
    }
  }
  if (g < 0) g = names_.AddGlobal(name.text, false);
  b.index = g;
  b.checked = OptionExplicit();
  return b;
}

void Parser::NoteAssigned(const Token& name, bool byReDim) {
  if (pass_ != 1) return;
  const std::string lower = Lower(name.text);
  if (proc_) {
    if (proc_->locals.count(lower) || proc_->consts.count(lower)) return;
    if (proc_->ReturnsValue() && lower == Lower(proc_->name)) return;
    if (cls_ && cls_->Find(lower)) return;
    bool& declared = proc_->assigned[lower];
    declared = declared || byReDim;
    return;
  }
  if (in_.dynamic) {
    if (const ProcDef* p = in_.scopeProc) {
      if (p->locals.count(lower) || (p->ReturnsValue() && lower == Lower(p->name))) return;
    }
    if (const ClassDef* c = in_.scopeClass; c && c->Find(lower)) return;
  }
  if (FindConst(lower) || FindProc(lower)) return;
  int g = names_.FindGlobal(lower);
  if (g < 0) {
    names_.AddGlobal(name.text, byReDim);
  } else if (byReDim) {
    names_.Declare(g);
  }
}

}  // namespace corvane::script
