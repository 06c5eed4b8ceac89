// The parser's statements: blocks, control flow, declarations, procedures and classes.
#include <algorithm>
#include <cmath>

#include "corvane/text.h"
#include "script/parser_impl.h"
#include "script/script_object.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

// Whether `e` reads the very variable `target` names (the same local slot or the same global).
bool SameVariable(const Expr& target, const Expr& e) {
  if (auto* l = dynamic_cast<const LocalExpr*>(&target)) {
    auto* o = dynamic_cast<const LocalExpr*>(&e);
    return o && o->slot() == l->slot();
  }
  if (auto* g = dynamic_cast<const GlobalExpr*>(&target)) {
    auto* o = dynamic_cast<const GlobalExpr*>(&e);
    return o && o->index() == g->index();
  }
  return false;
}

}  // namespace

namespace {

bool EndsBlock(const Token& t) {
  if (t.kind == Tok::End) return true;
  if (t.kind != Tok::Keyword) return false;
  switch (t.kw) {
    case Kw::End:
    case Kw::Else:
    case Kw::ElseIf:
    case Kw::Case:
    case Kw::Loop:
    case Kw::Next:
    case Kw::Wend: return true;
    default: return false;
  }
}

bool IsBlankHtml(const Token& t) {
  return t.kind == Tok::Html && t.text.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace

void Parser::Block(script::Block& into) {
  while (!EndsBlock(Peek())) Statement(into);
}

void Parser::Statement(script::Block& into) {
  const Token& t = Peek();
  switch (t.kind) {
    case Tok::Newline:
    case Tok::Colon: Next(); return;
    case Tok::Html:
      into.stmts.push_back(std::make_unique<HtmlStmt>(PosOf(t), t.text));
      Next();
      return;
    case Tok::Directive:
      Directive(t);
      Next();
      return;
    case Tok::Output: {
      Pos p = PosOf(t);
      Next();
      into.stmts.push_back(std::make_unique<OutputStmt>(p, Expression()));
      EndOfStatement();
      return;
    }
    case Tok::Keyword:
      switch (t.kw) {
        case Kw::If: If(into); return;
        case Kw::Select: Select(into); return;
        case Kw::For: For(into); return;
        case Kw::Do: Do(into); return;
        case Kw::While: While(into); return;
        case Kw::With: With(into); return;
        case Kw::Sub:
        case Kw::Function: Procedure(true, false); return;
        case Kw::Class: Class(); return;
        case Kw::Public:
        case Kw::Private: {
          bool isPublic = t.kw == Kw::Public;
          const Token& n = Peek(1);
          bool isDefault = IsWord(n, "default");
          const Token& after = isDefault ? Peek(2) : n;
          if (after.Is(Kw::Sub) || after.Is(Kw::Function) || IsWord(after, "property")) {
            Next();
            if (isDefault) Next();
            if (isDefault && !cls_) Fail(kMustBeInClass);
            Procedure(isPublic, isDefault);
            return;
          }
          break;
        }
        default: break;
      }
      break;
    case Tok::Identifier:
      if (IsWord(t, "property") &&
          (Peek(1).Is(Kw::Set) || IsWord(Peek(1), "get") || IsWord(Peek(1), "let"))) {
        Fail(kMustBeInClass);
      }
      break;
    default: break;
  }
  Simple(into);
  EndOfStatement();
}

// A statement that fits on one line (the kind a one-line If holds).
void Parser::Simple(script::Block& into) {
  const Token& t = Peek();
  sawCode_ = true;
  if (t.kind == Tok::Keyword) {
    switch (t.kw) {
      case Kw::Dim:
        Next();
        Dim(true, false);
        return;
      case Kw::Public:
      case Kw::Private: {
        bool isPublic = t.kw == Kw::Public;
        Next();
        if (Peek().Is(Kw::Const)) {
          Next();
          Const();
          return;
        }
        Dim(isPublic, false);
        return;
      }
      case Kw::ReDim: ReDim(into); return;
      case Kw::Const:
        Next();
        Const();
        return;
      case Kw::Erase: Erase(into); return;
      case Kw::Exit: Exit(into); return;
      case Kw::On: OnError(into); return;
      case Kw::If: If(into); return;
      case Kw::Option:
        Next();
        if (!AcceptWord("explicit")) Fail(kSyntaxError);
        if (proc_ || blockDepth_ > 0) Fail(kExpectedStatement);
        if (pass_ == 1 && in_.optionExplicit) *in_.optionExplicit = true;
        return;
      case Kw::Set:
        Next();
        AssignOrCall(into, true, false);
        return;
      case Kw::Call:
        Next();
        AssignOrCall(into, false, true);
        return;
      case Kw::Me: AssignOrCall(into, false, false); return;
      default: Fail(kExpectedStatement);
    }
  }
  if (t.kind == Tok::Identifier) {
    if (IsWord(t, "stop")) {  // a breakpoint for a debugger: nothing here
      Next();
      if (AtEndOfStatement()) return;
      --i_;
    }
    if (IsWord(t, "let") && Peek(1).kind == Tok::Identifier) Next();
    AssignOrCall(into, false, false);
    return;
  }
  if (t.kind == Tok::Dot) {
    AssignOrCall(into, false, false);
    return;
  }
  Fail(kExpectedStatement);
}

// target = value; Set target = value; Call x(args); x args; x(arg).
void Parser::AssignOrCall(script::Block& into, bool isSet, bool isCall) {
  const Token& first = Peek();
  const Pos p = PosOf(first);
  const size_t start = i_;
  Tail tail = Chain(SIZE_MAX);
  if (!isCall && Peek().kind == Tok::Eq) {
    Next();
    if (tail.kind == Tail::Name && !tail.parens) NoteAssigned(tail.name, false);
    if (tail.kind == Tail::Primary && !tail.parens) Fail(kExpectedStatement);
    ExprPtr value = Expression();
    if (pass_ != 2) return;
    ExprPtr target = BuildTarget(std::move(tail));
    // s = s & a & b, with s a variable that a & b do not read: appends in place.
    if (auto* cat = isSet ? nullptr : dynamic_cast<ConcatExpr*>(value.get())) {
      auto same = [&](const ExprPtr& e) { return SameVariable(*target, *e); };
      if (same(cat->parts().front()) && std::none_of(cat->parts().begin() + 1, cat->parts().end(), same)) {
        ExprList parts = cat->TakeParts();
        parts.erase(parts.begin());
        into.stmts.push_back(std::make_unique<AppendStmt>(p, std::move(target), std::move(parts)));
        return;
      }
    }
    into.stmts.push_back(std::make_unique<AssignStmt>(p, std::move(target), std::move(value), isSet));
    return;
  }
  if (isSet) Fail(kExpectedEquals);
  if (tail.kind == Tail::Primary && !tail.parens && first.kind != Tok::Keyword) Fail(kExpectedStatement);
  ExprPtr call;
  if (isCall || AtEndOfStatement()) {
    call = BuildCall(std::move(tail), {}, false, isCall);
  } else {
    // `f (a) + 1, b`: the parentheses began the first argument, not an argument list.
    if (tail.parens) {
      i_ = start;
      tail = Chain(tail.groupStart);
    }
    ExprList args = PlainArgs();
    call = BuildCall(std::move(tail), std::move(args), true, false);
  }
  if (pass_ == 2) into.stmts.push_back(std::make_unique<ExprStmt>(p, std::move(call)));
}

void Parser::If(script::Block& into) {
  Nest nest(*this);
  const Pos p = PosOf(Next());
  auto stmt = std::make_unique<IfStmt>(p);
  stmt->conditions.push_back(Expression());
  Expect(Kw::Then, kExpectedThen);
  if (Peek().kind != Tok::Newline && Peek().kind != Tok::Colon) {
    // One line: If c Then a: b Else c: d
    stmt->blocks.emplace_back();
    ++singleLine_;
    SingleLineBody(stmt->blocks.back());
    if (Accept(Kw::Else)) {
      stmt->blocks.emplace_back();
      SingleLineBody(stmt->blocks.back());
    }
    --singleLine_;
    if (pass_ == 2) into.stmts.push_back(std::move(stmt));
    return;
  }
  ++blockDepth_;
  int saveSingle = singleLine_;
  singleLine_ = 0;
  stmt->blocks.emplace_back();
  Block(stmt->blocks.back());
  for (;;) {
    if (Accept(Kw::ElseIf)) {
      stmt->conditions.push_back(Expression());
      Expect(Kw::Then, kExpectedThen);
      stmt->blocks.emplace_back();
      Block(stmt->blocks.back());
      continue;
    }
    if (Accept(Kw::Else)) {
      stmt->blocks.emplace_back();
      Block(stmt->blocks.back());
    }
    break;
  }
  Expect(Kw::End, kExpectedEnd);
  Expect(Kw::If, kExpectedIf);
  singleLine_ = saveSingle;
  --blockDepth_;
  if (!singleLine_) EndOfStatement();
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

void Parser::SingleLineBody(script::Block& into) {
  for (;;) {
    const Token& t = Peek();
    if (t.kind == Tok::Colon) {
      Next();
      continue;
    }
    if (t.kind == Tok::Newline || t.kind == Tok::End || t.Is(Kw::Else) || t.kind == Tok::Html ||
        t.kind == Tok::Output)
      return;
    Simple(into);
    if (!AtEndOfStatement()) Fail(kExpectedEndOfStatement);
  }
}

void Parser::Select(script::Block& into) {
  Nest nest(*this);
  const Pos p = PosOf(Next());
  Expect(Kw::Case, kExpectedCase);
  auto stmt = std::make_unique<SelectStmt>(p);
  stmt->test = Expression();
  EndOfStatement();
  ++blockDepth_;
  while (Peek().kind == Tok::Newline || Peek().kind == Tok::Colon || IsBlankHtml(Peek())) Next();
  bool sawElse = false;
  while (!Peek().Is(Kw::End)) {
    if (sawElse || !Accept(Kw::Case)) Fail(kExpectedEnd);
    if (Accept(Kw::Else)) {
      sawElse = true;
    } else {
      ExprList values;
      do {
        values.push_back(Expression());
      } while (Accept(Tok::Comma));
      stmt->cases.push_back(std::move(values));
    }
    stmt->blocks.emplace_back();
    Block(stmt->blocks.back());
  }
  Next();
  Expect(Kw::Select, kExpectedSelect);
  --blockDepth_;
  EndOfStatement();
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

ExprPtr Parser::LoopVariable() {
  const Token& t = Peek();
  if (t.kind != Tok::Identifier) Fail(kExpectedIdentifier);
  Next();
  NoteAssigned(t, false);
  if (pass_ != 2) return std::make_unique<LiteralExpr>(Pos{}, Variant());
  ExprPtr v = NameExpr(t, {}, false, true);
  if (!dynamic_cast<LocalExpr*>(v.get()) && !dynamic_cast<GlobalExpr*>(v.get()) &&
      !dynamic_cast<ParamExpr*>(v.get()) && !dynamic_cast<FieldExpr*>(v.get()) &&
      !dynamic_cast<UndefinedExpr*>(v.get()))
    FailAt(kInvalidForVariable, t);
  return v;
}

void Parser::For(script::Block& into) {
  Nest nest(*this);
  const Pos p = PosOf(Next());
  ++blockDepth_;
  if (Accept(Kw::Each)) {
    auto stmt = std::make_unique<ForEachStmt>(p);
    stmt->var = LoopVariable();
    Expect(Kw::In, kExpectedIn);
    stmt->collection = Expression();
    LoopBody(stmt->body);
    if (pass_ == 2) into.stmts.push_back(std::move(stmt));
    return;
  }
  auto stmt = std::make_unique<ForStmt>(p);
  stmt->var = LoopVariable();
  Expect(Tok::Eq, kExpectedEquals);
  stmt->from = Expression();
  Expect(Kw::To, kExpectedTo);
  stopAtStep_ = true;
  stmt->to = Expression();
  stopAtStep_ = false;
  if (AcceptWord("step")) stmt->step = Expression();
  LoopBody(stmt->body);
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

// A For loop's body, from the end of its head to "Next [name]" and the end of that statement.
void Parser::LoopBody(script::Block& body) {
  EndOfStatement();
  ++forDepth_;
  Block(body);
  --forDepth_;
  Expect(Kw::Next, kExpectedNext);
  if (Peek().kind == Tok::Identifier) Next();
  --blockDepth_;
  EndOfStatement();
}

void Parser::Do(script::Block& into) {
  Nest nest(*this);
  const Pos p = PosOf(Next());
  auto stmt = std::make_unique<DoStmt>(p);
  if (Peek().Is(Kw::While) || Peek().Is(Kw::Until)) {
    stmt->until = Next().Is(Kw::Until);
    stmt->condition = Expression();
  }
  EndOfStatement();
  ++blockDepth_;
  ++doDepth_;
  Block(stmt->body);
  --doDepth_;
  Expect(Kw::Loop, kExpectedLoop);
  if (Peek().Is(Kw::While) || Peek().Is(Kw::Until)) {
    if (stmt->condition) Fail(kExpectedEndOfStatement);
    stmt->until = Next().Is(Kw::Until);
    stmt->condition = Expression();
    stmt->testFirst = false;
  }
  --blockDepth_;
  EndOfStatement();
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

void Parser::While(script::Block& into) {
  Nest nest(*this);
  const Pos p = PosOf(Next());
  auto stmt = std::make_unique<DoStmt>(p);
  stmt->condition = Expression();
  EndOfStatement();
  ++blockDepth_;
  Block(stmt->body);
  Expect(Kw::Wend, kExpectedWend);
  --blockDepth_;
  EndOfStatement();
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

void Parser::With(script::Block& into) {
  Nest nest(*this);
  const Token& at = Next();
  const Pos p = PosOf(at);
  auto stmt = std::make_unique<WithStmt>(p);
  stmt->object = Expression();
  EndOfStatement();
  // The object lives in a hidden variable of the scope.
  WithHolder holder{false, -1};
  if (pass_ == 2) {
    if (proc_) {
      holder = {true, proc_->slotCount++};
      stmt->holder = std::make_unique<LocalExpr>(p, holder.index);
    } else {
      holder = {false, names_.AddGlobal(" with" + std::to_string(++hiddenCounter_), true)};
      stmt->holder = std::make_unique<GlobalExpr>(p, holder.index, false, "", !in_.dynamic);
    }
  }
  withs_.push_back(holder);
  ++blockDepth_;
  Block(stmt->body);
  --blockDepth_;
  withs_.pop_back();
  Expect(Kw::End, kExpectedEnd);
  Expect(Kw::With, kExpectedWith);
  EndOfStatement();
  if (pass_ == 2) into.stmts.push_back(std::move(stmt));
}

void Parser::Exit(script::Block& into) {
  const Pos p = PosOf(Next());
  const Token& what = Peek();
  Flow flow = Flow::ExitProc;
  if (what.Is(Kw::For)) {
    if (forDepth_ == 0) Fail(kInvalidExit);
    flow = Flow::ExitFor;
  } else if (what.Is(Kw::Do)) {
    if (doDepth_ == 0) Fail(kInvalidExit);
    flow = Flow::ExitDo;
  } else if (what.Is(Kw::Sub)) {
    if (!proc_ || proc_->kind != ProcKind::Sub) Fail(kInvalidExit);
  } else if (what.Is(Kw::Function)) {
    if (!proc_ || proc_->kind != ProcKind::Function) Fail(kInvalidExit);
  } else if (IsWord(what, "property")) {
    if (!proc_ || proc_->kind == ProcKind::Sub || proc_->kind == ProcKind::Function) Fail(kInvalidExit);
  } else {
    Fail(kInvalidExit);
  }
  Next();
  if (pass_ == 2) into.stmts.push_back(std::make_unique<ExitStmt>(p, flow));
}

void Parser::OnError(script::Block& into) {
  const Pos p = PosOf(Next());
  if (!AcceptWord("error")) Fail(kSyntaxError);
  bool resumeNext = false;
  if (AcceptWord("resume")) {
    Expect(Kw::Next, kSyntaxError);
    resumeNext = true;
  } else if (AcceptWord("goto")) {
    if (Peek().kind != Tok::Integer || Peek().number != 0) Fail(kSyntaxError);
    Next();
  } else {
    Fail(kSyntaxError);
  }
  if (pass_ == 2) into.stmts.push_back(std::make_unique<OnErrorStmt>(p, resumeNext));
}

std::vector<VariantArray::Bound> Parser::DimBounds(bool* isArray) {
  std::vector<VariantArray::Bound> bounds;
  *isArray = false;
  if (!Accept(Tok::LParen)) return bounds;
  *isArray = true;
  if (Accept(Tok::RParen)) return bounds;
  do {
    const Token& t = Peek();
    double n;
    if (t.kind == Tok::Integer || t.kind == Tok::Long) {
      n = t.number;
    } else if (t.kind == Tok::Identifier && FindConst(Lower(t.text)) &&
               FindConst(Lower(t.text))->IsNumber()) {
      n = FindConst(Lower(t.text))->ToDouble();
    } else {
      Fail(kExpectedIntegerConstant);
    }
    Next();
    if (n < -1 || n > 0x7FFFFFF) FailAt(kExpectedIntegerConstant, t);
    bounds.push_back({0, static_cast<int32_t>(n) + 1});
  } while (Accept(Tok::Comma));
  Expect(Tok::RParen, kExpectedRParen);
  return bounds;
}

// Dim / Public / Private variables, in a procedure, a class or the page.
void Parser::Dim(bool isPublic, bool inClassBody) {
  do {
    const Token& name = Peek();
    std::string id = Identifier();
    bool isArray;
    std::vector<VariantArray::Bound> bounds = DimBounds(&isArray);
    if (pass_ != 1) continue;
    const std::string lower = Lower(id);
    if (inClassBody) {
      if (cls_->Find(lower)) FailAt(kNameRedefined, name);
      cls_->fields.push_back({id, isPublic, isArray, bounds});
      auto m = std::make_unique<ClassMember>();
      m->name = id;
      m->isPublic = isPublic;
      m->field = static_cast<int>(cls_->fields.size() - 1);
      m->owner = cls_;
      m->index = static_cast<int>(cls_->members.size());
      cls_->byName.emplace(lower, m.get());
      cls_->members.push_back(std::move(m));
    } else if (proc_) {
      if (proc_->locals.count(lower) || proc_->consts.count(lower)) FailAt(kNameRedefined, name);
      int slot = proc_->slotCount++;
      proc_->locals.emplace(lower, slot);
      if (isArray) proc_->arrays.push_back({slot, bounds});
    } else {
      int g = names_.FindGlobal(lower);
      if ((g >= 0 && names_.IsDeclared(g)) || FindProc(lower) || FindConst(lower) || FindClass(lower))
        FailAt(kNameRedefined, name);
      if (g < 0) {
        g = names_.AddGlobal(id, true);
      } else {
        names_.Declare(g);
      }
      if (isArray) unit_.arrays.push_back({g, bounds});
    }
  } while (Accept(Tok::Comma));
}

void Parser::ReDim(script::Block& into) {
  const Pos p = PosOf(Next());
  bool preserve = AcceptWord("preserve");
  do {
    const Token& name = Peek();
    Identifier();
    NoteAssigned(name, true);
    Expect(Tok::LParen, kExpectedLParen);
    ExprList bounds;
    do {
      bounds.push_back(Expression());
    } while (Accept(Tok::Comma));
    Expect(Tok::RParen, kExpectedRParen);
    if (pass_ == 2) {
      into.stmts.push_back(
          std::make_unique<ReDimStmt>(p, NameExpr(name, {}, false, true), std::move(bounds), preserve));
    }
  } while (Accept(Tok::Comma));
}

void Parser::Erase(script::Block& into) {
  const Pos p = PosOf(Next());
  const Token& name = Peek();
  Identifier();
  if (pass_ == 2) into.stmts.push_back(std::make_unique<EraseStmt>(p, NameExpr(name, {}, false, true)));
}

Variant Parser::ConstValue() {
  bool negative = false;
  while (Peek().kind == Tok::Minus || Peek().kind == Tok::Plus) negative ^= Next().kind == Tok::Minus;
  if (Accept(Tok::LParen)) {
    Variant v = ConstValue();
    Expect(Tok::RParen, kExpectedRParen);
    return negative ? Negate(v) : v;
  }
  const Token& t = Next();
  Variant v;
  switch (t.kind) {
    case Tok::Integer: v = Variant(static_cast<int16_t>(t.number)); break;
    case Tok::Long: v = Variant(static_cast<int32_t>(t.number)); break;
    case Tok::Double: v = Variant(t.number); break;
    case Tok::String: v = Variant(t.text); break;
    case Tok::Date: v = Variant::FromDate(t.number); break;
    case Tok::Keyword:
      switch (t.kw) {
        case Kw::True: v = Variant(true); break;
        case Kw::False: v = Variant(false); break;
        case Kw::Empty: break;
        case Kw::Null: v = Variant::Null(); break;
        default: FailAt(kExpectedLiteral, t);
      }
      break;
    case Tok::Identifier: {
      const std::string lower = Lower(t.text);
      const Variant* c = FindConst(lower);
      if (!c) c = FindConstant(lower);
      if (!c) FailAt(kExpectedLiteral, t);
      v = *c;
      break;
    }
    default: FailAt(kExpectedLiteral, t);
  }
  if (negative) {
    if (!v.IsNumber() && !v.IsDate() && !v.IsEmpty()) FailAt(kExpectedLiteral, t);
    v = Negate(v);
  }
  return v;
}

void Parser::Const() {
  do {
    const Token& name = Peek();
    std::string id = Identifier();
    Expect(Tok::Eq, kExpectedEquals);
    Variant v = ConstValue();
    if (pass_ != 1) continue;
    const std::string lower = Lower(id);
    if (proc_) {
      if (proc_->locals.count(lower) || proc_->consts.count(lower)) FailAt(kNameRedefined, name);
      proc_->consts.emplace(lower, std::move(v));
    } else {
      if (NameTaken(lower)) FailAt(kNameRedefined, name);
      decls_.consts.emplace(lower, std::move(v));
    }
  } while (Accept(Tok::Comma));
}

void Parser::Procedure(bool isPublic, bool isDefault) {
  if (proc_ || blockDepth_ > 0) Fail(kExpectedStatement);
  const Token& kwTok = Next();
  ProcKind kind = ProcKind::Sub;
  if (kwTok.Is(Kw::Function)) {
    kind = ProcKind::Function;
  } else if (IsWord(kwTok, "property")) {
    if (!cls_) FailAt(kMustBeInClass, kwTok);
    if (AcceptWord("get")) {
      kind = ProcKind::PropertyGet;
    } else if (AcceptWord("let")) {
      kind = ProcKind::PropertyLet;
    } else if (Accept(Kw::Set)) {
      kind = ProcKind::PropertySet;
    } else {
      Fail(kExpectedLetSetGet);
    }
  }
  const Token& nameTok = Peek();
  const Pos p = PosOf(nameTok);
  std::string name = Identifier();
  std::vector<std::string> params;
  std::vector<bool> byRef;
  if (Accept(Tok::LParen)) {
    if (!Accept(Tok::RParen)) {
      do {
        bool ref = true;
        if (Accept(Kw::ByVal)) {
          ref = false;
        } else {
          Accept(Kw::ByRef);
        }
        params.push_back(Identifier());
        byRef.push_back(ref);
        if (Accept(Tok::LParen)) Expect(Tok::RParen, kExpectedRParen);
      } while (Accept(Tok::Comma));
      Expect(Tok::RParen, kExpectedRParen);
    }
  }
  EndOfStatement();
  ProcDef* def;
  if (pass_ == 1) {
    auto owned = std::make_unique<ProcDef>();
    def = owned.get();
    def->name = name;
    def->kind = kind;
    def->cls = cls_;
    def->isPublic = isPublic;
    def->pos = p;
    def->params = params;
    def->byRef = byRef;
    for (size_t i = 0; i < params.size(); ++i) {
      if (!def->locals.emplace(Lower(params[i]), static_cast<int>(i)).second) FailAt(kNameRedefined, nameTok);
    }
    def->slotCount = static_cast<int>(params.size());
    if (kind == ProcKind::Function || kind == ProcKind::PropertyGet) def->returnSlot = def->slotCount++;
    if ((kind == ProcKind::PropertyLet || kind == ProcKind::PropertySet) && params.empty())
      FailAt(kPropertyNeedsArgument, nameTok);
    const std::string lower = Lower(name);
    if (cls_) {
      if (isDefault && !isPublic) FailAt(kDefaultMustBePublic, kwTok);
      if (isDefault && kind != ProcKind::Function && kind != ProcKind::PropertyGet && kind != ProcKind::Sub)
        FailAt(kDefaultOnlyOnGet, kwTok);
      ClassMember* m = nullptr;
      if (auto it = cls_->byName.find(lower); it != cls_->byName.end()) {
        m = it->second;
        bool clash = m->field >= 0 || m->method || kind == ProcKind::Sub || kind == ProcKind::Function ||
                     (kind == ProcKind::PropertyGet && m->get) || (kind == ProcKind::PropertyLet && m->let) ||
                     (kind == ProcKind::PropertySet && m->set);
        if (clash) FailAt(kNameRedefined, nameTok);
      } else {
        auto owned_member = std::make_unique<ClassMember>();
        m = owned_member.get();
        m->name = name;
        m->owner = cls_;
        m->index = static_cast<int>(cls_->members.size());
        cls_->byName.emplace(lower, m);
        cls_->members.push_back(std::move(owned_member));
      }
      m->isPublic = m->isPublic && isPublic;
      if (kind == ProcKind::PropertyGet) m->isPublic = isPublic;
      switch (kind) {
        case ProcKind::Sub:
        case ProcKind::Function: m->method = def; break;
        case ProcKind::PropertyGet: m->get = def; break;
        case ProcKind::PropertyLet: m->let = def; break;
        case ProcKind::PropertySet: m->set = def; break;
      }
      if (isDefault) {
        if (cls_->defaultMember) FailAt(kMultipleDefaults, kwTok);
        cls_->defaultMember = m;
      }
      if (kind == ProcKind::Sub && (lower == "class_initialize" || lower == "class_terminate")) {
        if (!params.empty()) FailAt(kInitTerminateArgs, nameTok);
        (lower == "class_initialize" ? cls_->initialize : cls_->terminate) = def;
      }
      cls_->procs.push_back(std::move(owned));
    } else {
      if (NameTaken(lower)) FailAt(kNameRedefined, nameTok);
      decls_.procs.emplace(lower, def);
      unit_.procs.push_back(std::move(owned));
    }
    decls_.procOrder.push_back(def);
  } else {
    def = decls_.procOrder.at(procCounter_++);
  }
  proc_ = def;
  script::Block scratch;
  Block(pass_ == 2 ? def->body : scratch);
  proc_ = nullptr;
  Expect(Kw::End, kExpectedEnd);
  switch (kind) {
    case ProcKind::Sub: Expect(Kw::Sub, kExpectedSub); break;
    case ProcKind::Function: Expect(Kw::Function, kExpectedFunction); break;
    default:
      if (!AcceptWord("property")) Fail(kExpectedProperty);
  }
  EndOfStatement();
}

void Parser::Class() {
  if (proc_ || cls_ || blockDepth_ > 0) Fail(kExpectedStatement);
  Next();
  const Token& nameTok = Peek();
  const Pos p = PosOf(nameTok);
  std::string name = Identifier();
  EndOfStatement();
  ClassDef* def;
  if (pass_ == 1) {
    const std::string lower = Lower(name);
    if (NameTaken(lower)) FailAt(kNameRedefined, nameTok);
    auto owned = std::make_unique<ClassDef>();
    def = owned.get();
    def->name = name;
    def->pos = p;
    decls_.classes.emplace(lower, def);
    decls_.classOrder.push_back(def);
    unit_.classes.push_back(std::move(owned));
  } else {
    def = decls_.classOrder.at(classCounter_++);
  }
  cls_ = def;
  ClassBody(*def);
  cls_ = nullptr;
  if (pass_ == 1) BuildClassInfo(*def);
}

void Parser::ClassBody(ClassDef& c) {
  for (;;) {
    const Token& t = Peek();
    if (t.kind == Tok::Newline || t.kind == Tok::Colon || IsBlankHtml(t)) {
      Next();
      continue;
    }
    if (t.Is(Kw::End)) {
      Next();
      Expect(Kw::Class, kExpectedClass);
      EndOfStatement();
      return;
    }
    bool isPublic = true, isDefault = false, modifier = false;
    if (t.Is(Kw::Public) || t.Is(Kw::Private)) {
      isPublic = t.Is(Kw::Public);
      modifier = true;
      Next();
      if (AcceptWord("default")) {
        isDefault = true;
        if (!isPublic) Fail(kDefaultMustBePublic);
      }
    }
    const Token& what = Peek();
    if (what.Is(Kw::Sub) || what.Is(Kw::Function) || IsWord(what, "property")) {
      Procedure(isPublic, isDefault);
      continue;
    }
    if (isDefault) Fail(kExpectedFunction);
    if (what.Is(Kw::Dim)) {
      if (modifier) Fail(kExpectedIdentifier);
      Next();
      Dim(true, true);
    } else if (modifier && what.kind == Tok::Identifier) {
      Dim(isPublic, true);
    } else if (what.Is(Kw::Const)) {
      Next();
      Const();
    } else {
      Fail(kExpectedEnd);
    }
    EndOfStatement();
  }
}

void Parser::Directive(const Token& t) {
  if (pass_ != 1 || !in_.directives) return;
  PageDirectives& d = *in_.directives;
  std::string_view s = t.text;
  size_t i = 0;
  auto blank = [&](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (i < s.size()) {
    while (i < s.size() && blank(s[i])) ++i;
    size_t k = i;
    while (i < s.size() && !blank(s[i]) && s[i] != '=') ++i;
    std::string key = LCase(s.substr(k, i - k));
    while (i < s.size() && blank(s[i])) ++i;
    std::string value;
    if (i < s.size() && s[i] == '=') {
      ++i;
      while (i < s.size() && blank(s[i])) ++i;
      if (i < s.size() && (s[i] == '"' || s[i] == '\'')) {
        char q = s[i++];
        size_t close = s.find(q, i);
        if (close == std::string_view::npos) close = s.size();
        value = std::string(s.substr(i, close - i));
        i = close < s.size() ? close + 1 : close;
      } else {
        size_t v = i;
        while (i < s.size() && !blank(s[i])) ++i;
        value = std::string(s.substr(v, i - v));
      }
    }
    if (key.empty()) {
      if (i < s.size()) ++i;
      continue;
    }
    auto number = [&]() -> int {
      try {
        return std::stoi(value);
      } catch (...) {
        FailAt(kSyntaxError, t);
      }
    };
    if (key == "language") {
      d.language = UCase(value);
    } else if (key == "codepage") {
      d.codePage = number();
    } else if (key == "lcid") {
      d.lcid = number();
    } else if (key == "enablesessionstate") {
      d.enableSessionState = !EqualsNoCase(value, "false") && value != "0";
    }
  }
}

}  // namespace corvane::script
