// The parser's expressions: operators by precedence, chains of calls and members, and names.
#include "corvane/text.h"
#include "script/parser_impl.h"
#include "script/vbs_errors.h"

namespace corvane::script {

namespace {

// Precedence, loosest first: Imp, Eqv, Xor, Or, And, (Not), comparisons, &, + -, Mod, \, * /,
// (unary -), ^.
enum Level : int {
  kImp = 0,
  kEqv,
  kXor,
  kOr,
  kAnd,
  kNot,
  kCompare,
  kConcat,
  kAdd,
  kMod,
  kIntDiv,
  kMul,
  kNegate,
  kPow,
};

int LevelOf(const Token& t) {
  switch (t.kind) {
    case Tok::Eq:
    case Tok::Ne:
    case Tok::Lt:
    case Tok::Gt:
    case Tok::Le:
    case Tok::Ge: return kCompare;
    case Tok::Amp: return kConcat;
    case Tok::Plus:
    case Tok::Minus: return kAdd;
    case Tok::Backslash: return kIntDiv;
    case Tok::Star:
    case Tok::Slash: return kMul;
    case Tok::Caret: return kPow;
    case Tok::Keyword:
      switch (t.kw) {
        case Kw::Imp: return kImp;
        case Kw::Eqv: return kEqv;
        case Kw::Xor: return kXor;
        case Kw::Or: return kOr;
        case Kw::And: return kAnd;
        case Kw::Is: return kCompare;
        case Kw::Mod: return kMod;
        default: return -1;
      }
    default: return -1;
  }
}

int DepthOf(const ExprList& list) {
  int d = 0;
  for (const ExprPtr& e : list) d = std::max(d, e->depth);
  return d;
}

}  // namespace

ExprPtr Parser::Finish(ExprPtr e, int childDepth) {
  e->depth = childDepth + 1;
  if (e->depth > kMaxExprDepth) FailAt(kOutOfStackSpace, Peek());
  return e;
}

ExprPtr Parser::Expression() {
  if (pass_ == 1) return SkipExpression();
  return Binary(kImp);
}

// The first pass looks for declarations only, and expressions declare nothing: it steps over them
// to where they end (the second pass parses them and reports their errors).
ExprPtr Parser::SkipExpression() {
  const size_t start = i_;
  int depth = 0;
  auto ends = [&](const Token& t) {
    switch (t.kind) {
      case Tok::End:
      case Tok::Newline:
      case Tok::Colon:
      case Tok::Html:
      case Tok::Output:
      case Tok::Directive: return true;
      case Tok::LParen: ++depth; return false;
      case Tok::RParen: return depth-- == 0;
      case Tok::Comma: return depth == 0;
      case Tok::Keyword:
        return depth == 0 && (t.kw == Kw::Then || t.kw == Kw::To || t.kw == Kw::Else || t.kw == Kw::ElseIf);
      case Tok::Identifier: return depth == 0 && stopAtStep_ && IsWord(t, "step");
      default: return false;
    }
  };
  while (!ends(Peek())) Next();
  if (i_ == start) Fail(kExpectedExpression);
  return std::make_unique<LiteralExpr>(toks_[start].pos, Variant());
}

ExprPtr Parser::Binary(int minLevel) {
  ExprPtr left = Unary();
  for (;;) {
    const Token& op = Peek();
    int level = LevelOf(op);
    if (level < 0 || level < minLevel) return left;
    Next();
    const Pos p = PosOf(op);
    if (level == kConcat) {
      ExprList parts;
      parts.push_back(std::move(left));
      do {
        parts.push_back(Binary(kAdd));
      } while (Accept(Tok::Amp));
      int d = DepthOf(parts);
      left = Finish(std::make_unique<ConcatExpr>(p, std::move(parts)), d);
      continue;
    }
    ExprPtr right = Binary(level + 1);
    int d = std::max(left->depth, right->depth);
    ExprPtr node;
    switch (op.kind) {
      case Tok::Eq:
        node = std::make_unique<CompareExpr>(p, Comparison::Equal, std::move(left), std::move(right));
        break;
      case Tok::Ne:
        node = std::make_unique<CompareExpr>(p, Comparison::NotEqual, std::move(left), std::move(right));
        break;
      case Tok::Lt:
        node = std::make_unique<CompareExpr>(p, Comparison::Less, std::move(left), std::move(right));
        break;
      case Tok::Gt:
        node = std::make_unique<CompareExpr>(p, Comparison::Greater, std::move(left), std::move(right));
        break;
      case Tok::Le:
        node = std::make_unique<CompareExpr>(p, Comparison::LessEqual, std::move(left), std::move(right));
        break;
      case Tok::Ge:
        node = std::make_unique<CompareExpr>(p, Comparison::GreaterEqual, std::move(left), std::move(right));
        break;
      case Tok::Plus:
        node = std::make_unique<BinaryExpr>(p, Op::Add, std::move(left), std::move(right));
        break;
      case Tok::Minus:
        node = std::make_unique<BinaryExpr>(p, Op::Sub, std::move(left), std::move(right));
        break;
      case Tok::Star:
        node = std::make_unique<BinaryExpr>(p, Op::Mul, std::move(left), std::move(right));
        break;
      case Tok::Slash:
        node = std::make_unique<BinaryExpr>(p, Op::Div, std::move(left), std::move(right));
        break;
      case Tok::Backslash:
        node = std::make_unique<BinaryExpr>(p, Op::IntDiv, std::move(left), std::move(right));
        break;
      case Tok::Caret:
        node = std::make_unique<BinaryExpr>(p, Op::Pow, std::move(left), std::move(right));
        break;
      default:
        switch (op.kw) {
          case Kw::Is: node = std::make_unique<IsExpr>(p, std::move(left), std::move(right)); break;
          case Kw::Mod:
            node = std::make_unique<BinaryExpr>(p, Op::Mod, std::move(left), std::move(right));
            break;
          case Kw::And:
            node = std::make_unique<BinaryExpr>(p, Op::And, std::move(left), std::move(right));
            break;
          case Kw::Or:
            node = std::make_unique<BinaryExpr>(p, Op::Or, std::move(left), std::move(right));
            break;
          case Kw::Xor:
            node = std::make_unique<BinaryExpr>(p, Op::Xor, std::move(left), std::move(right));
            break;
          case Kw::Eqv:
            node = std::make_unique<BinaryExpr>(p, Op::Eqv, std::move(left), std::move(right));
            break;
          default: node = std::make_unique<BinaryExpr>(p, Op::Imp, std::move(left), std::move(right)); break;
        }
    }
    left = Finish(std::move(node), d);
  }
}

ExprPtr Parser::Unary() {
  const Token& t = Peek();
  if (t.Is(Kw::Not)) {
    Nest nest(*this);
    const Pos p = PosOf(Next());
    ExprPtr e = Binary(kCompare);
    int d = e->depth;
    return Finish(std::make_unique<NotExpr>(p, std::move(e)), d);
  }
  if (t.kind == Tok::Minus) {
    Nest nest(*this);
    const Pos p = PosOf(Next());
    ExprPtr e = Binary(kPow);
    int d = e->depth;
    return Finish(std::make_unique<NegateExpr>(p, std::move(e)), d);
  }
  if (t.kind == Tok::Plus) {
    Nest nest(*this);
    Next();
    return Binary(kPow);
  }
  return Primary();
}

ExprPtr Parser::Primary() {
  const Token& t = Peek();
  const Pos p = PosOf(t);
  switch (t.kind) {
    case Tok::Integer:
      Next();
      return std::make_unique<LiteralExpr>(p, Variant(static_cast<int16_t>(t.number)));
    case Tok::Long: Next(); return std::make_unique<LiteralExpr>(p, Variant(static_cast<int32_t>(t.number)));
    case Tok::Double: Next(); return std::make_unique<LiteralExpr>(p, Variant(t.number));
    case Tok::String: Next(); return std::make_unique<LiteralExpr>(p, Variant(t.text));
    case Tok::Date: Next(); return std::make_unique<LiteralExpr>(p, Variant::FromDate(t.number));
    case Tok::Keyword:
      switch (t.kw) {
        case Kw::True: Next(); return std::make_unique<LiteralExpr>(p, Variant(true), false);
        case Kw::False: Next(); return std::make_unique<LiteralExpr>(p, Variant(false), false);
        case Kw::Empty: Next(); return std::make_unique<LiteralExpr>(p, Variant(), false);
        case Kw::Null: Next(); return std::make_unique<LiteralExpr>(p, Variant::Null(), false);
        case Kw::Nothing: Next(); return std::make_unique<LiteralExpr>(p, Variant(Object()), false);
        case Kw::New: {
          Next();
          const Token& name = Peek();
          std::string id = Identifier();
          const ClassDef* c = pass_ == 2 ? FindClass(Lower(id)) : nullptr;
          return std::make_unique<NewExpr>(PosOf(name), c, id);
        }
        case Kw::Me: break;
        default: Fail(kExpectedExpression);
      }
      break;
    case Tok::Identifier:
    case Tok::Dot:
    case Tok::LParen: break;
    default: Fail(kExpectedExpression);
  }
  return Build(Chain(SIZE_MAX));
}

Tail Parser::Chain(size_t stopAt) {
  Tail t;
  const Token& s = Peek();
  if (s.kind == Tok::Dot) {
    const Token& dot = Next();
    if (!Peek().IsWord()) Fail(kExpectedIdentifier);
    t.kind = Tail::Member;
    t.object = WithObject(dot);
    t.name = Next();
  } else if (s.kind == Tok::Identifier) {
    t.kind = Tail::Name;
    t.name = Next();
  } else if (s.Is(Kw::Me)) {
    if (!ScopeClass()) Fail(kInvalidMe);
    t.object = std::make_unique<MeExpr>(PosOf(Next()));
  } else if (s.kind == Tok::LParen) {
    Nest nest(*this);
    const Pos p = PosOf(Next());
    ExprPtr inner = Expression();
    Expect(Tok::RParen, kExpectedRParen);
    int d = inner->depth;
    t.object = Finish(std::make_unique<ParenExpr>(p, std::move(inner)), d);
  } else {
    Fail(kExpectedExpression);
  }
  for (;;) {
    const Token& n = Peek();
    if (n.kind == Tok::LParen && i_ != stopAt) {
      if (t.parens) {  // a(1)(2): the second list applies to what the first gives
        ExprPtr e = Build(std::move(t));
        t = Tail{};
        t.object = std::move(e);
      }
      t.groupStart = i_;
      t.args = ParenArgs();
      t.parens = true;
      continue;
    }
    if (n.kind == Tok::Dot && (!n.spaceBefore || withs_.empty())) {
      Next();
      if (!Peek().IsWord()) Fail(kExpectedIdentifier);
      const Token& name = Next();
      ExprPtr object = Build(std::move(t));
      t = Tail{};
      t.kind = Tail::Member;
      t.object = std::move(object);
      t.name = name;
      continue;
    }
    return t;
  }
}

ExprList Parser::ParenArgs() {
  Nest nest(*this);
  Expect(Tok::LParen, kExpectedLParen);
  ExprList args;
  if (Accept(Tok::RParen)) return args;
  for (;;) {
    const Token& t = Peek();
    if (t.kind == Tok::Comma || t.kind == Tok::RParen) {
      args.push_back(std::make_unique<MissingExpr>(PosOf(t)));
    } else {
      args.push_back(Expression());
    }
    if (!Accept(Tok::Comma)) break;
  }
  Expect(Tok::RParen, kExpectedRParen);
  return args;
}

ExprList Parser::PlainArgs() {
  ExprList args;
  for (;;) {
    const Token& t = Peek();
    if (t.kind == Tok::Comma || (AtEndOfStatement() && !args.empty())) {
      args.push_back(std::make_unique<MissingExpr>(PosOf(t)));
    } else {
      args.push_back(Expression());
    }
    if (!Accept(Tok::Comma)) break;
  }
  return args;
}

ExprPtr Parser::Build(Tail t) {
  switch (t.kind) {
    case Tail::Name: return NameExpr(t.name, std::move(t.args), t.parens, false);
    case Tail::Member: {
      int d = std::max(t.object->depth, DepthOf(t.args));
      return Finish(std::make_unique<MemberExpr>(PosOf(t.name), std::move(t.object), t.name.text,
                                                 std::move(t.args), t.parens),
                    d);
    }
    case Tail::Primary:
    default:
      if (!t.parens) return std::move(t.object);
      int d = std::max(t.object->depth, DepthOf(t.args));
      Pos p = t.object->pos;
      return Finish(std::make_unique<IndexExpr>(p, std::move(t.object), std::move(t.args), ""), d);
  }
}

ExprPtr Parser::BuildTarget(Tail t) {
  if (t.kind == Tail::Name) return NameExpr(t.name, std::move(t.args), t.parens, true);
  return Build(std::move(t));
}

ExprPtr Parser::BuildCall(Tail t, ExprList extra, bool extraGiven, bool isCall) {
  if (extraGiven) {
    t.args = std::move(extra);
    t.parens = false;
  } else if (t.parens && !isCall) {
    // f(x) as a statement: x in parentheses, passed by value; f(x, y) is refused.
    if (t.args.size() > 1) FailAt(kParenthesesOnSub, toks_[t.groupStart]);
    if (t.args.size() == 1 && !dynamic_cast<MissingExpr*>(t.args[0].get())) {
      Pos p = t.args[0]->pos;
      int d = t.args[0]->depth;
      t.args[0] = Finish(std::make_unique<ParenExpr>(p, std::move(t.args[0])), d);
    }
  }
  bool hasArgs = extraGiven || t.parens;
  switch (t.kind) {
    case Tail::Name: return NameExpr(t.name, std::move(t.args), hasArgs, false, true);
    case Tail::Member: {
      int d = std::max(t.object->depth, DepthOf(t.args));
      return Finish(std::make_unique<MemberExpr>(PosOf(t.name), std::move(t.object), t.name.text,
                                                 std::move(t.args), hasArgs),
                    d);
    }
    case Tail::Primary:
    default: {
      int d = std::max(t.object->depth, DepthOf(t.args));
      Pos p = t.object->pos;
      return Finish(std::make_unique<IndexExpr>(p, std::move(t.object), std::move(t.args), ""), d);
    }
  }
}

ExprPtr Parser::WithObject(const Token& at) {
  if (withs_.empty()) FailAt(505, at);
  const WithHolder& h = withs_.back();
  const Pos p = PosOf(at);
  if (pass_ != 2) return std::make_unique<LiteralExpr>(p, Variant());
  if (h.local) return std::make_unique<LocalExpr>(p, h.index);
  return std::make_unique<GlobalExpr>(p, h.index, false, "", !in_.dynamic);
}

ExprPtr Parser::VariableNode(const Binding& b, const Token& name) {
  const Pos p = PosOf(name);
  switch (b.kind) {
    case Binding::Local: return std::make_unique<LocalExpr>(p, b.index);
    case Binding::Param: return std::make_unique<ParamExpr>(p, b.index);
    case Binding::Field: return std::make_unique<FieldExpr>(p, b.index);
    case Binding::Undefined: return std::make_unique<UndefinedExpr>(p, name.text);
    default: return std::make_unique<GlobalExpr>(p, b.index, b.checked, name.text, !in_.dynamic);
  }
}

ExprPtr Parser::NameExpr(const Token& name, ExprList args, bool parens, bool asTarget, bool asCall) {
  const Pos p = PosOf(name);
  if (pass_ != 2) return std::make_unique<LiteralExpr>(p, Variant());
  const int d = DepthOf(args);
  Binding b = Resolve(name, parens && !asTarget);
  switch (b.kind) {
    case Binding::Local:
    case Binding::Param:
    case Binding::Global:
    case Binding::Field:
    case Binding::Undefined: {
      ExprPtr var = VariableNode(b, name);
      if (!parens && !asCall) return var;
      return Finish(std::make_unique<IndexExpr>(p, std::move(var), std::move(args), name.text), d);
    }
    case Binding::Const: {
      auto lit = std::make_unique<LiteralExpr>(p, *b.value);
      if (!parens) return lit;
      return Finish(std::make_unique<IndexExpr>(p, std::move(lit), std::move(args), name.text), d);
    }
    case Binding::Proc: return Finish(std::make_unique<CallExpr>(p, b.proc, std::move(args), false), d);
    case Binding::Member: return Finish(std::make_unique<MeMemberExpr>(p, b.member, std::move(args)), d);
    case Binding::Builtin:
      return Finish(std::make_unique<BuiltinExpr>(p, b.builtin, std::move(args),
                                                  !EqualsNoCase(b.builtin->name, "array")),
                    d);
    case Binding::Intrinsic:
      return Finish(std::make_unique<IntrinsicExpr>(p, b.intrinsic, std::move(args)), d);
    case Binding::Err:
    default: {
      auto err = std::make_unique<ErrExpr>(p);
      if (!parens) return err;
      return Finish(std::make_unique<IndexExpr>(p, std::move(err), std::move(args), name.text), d);
    }
  }
}

}  // namespace corvane::script
