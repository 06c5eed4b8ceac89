// The parser's internals, shared by its statement and expression halves.
#pragma once

#include <string>
#include <vector>

#include "script/nodes.h"
#include "script/parser.h"
#include "script/stmts.h"
#include "script/vbs_errors.h"

namespace corvane::script {

// Deeper nesting of blocks or parentheses than this is a compile error, not a stack overflow.
constexpr int kMaxNesting = 200;
// Expression trees taller than this (long operator chains) are refused too.
constexpr int kMaxExprDepth = 400;

// What a name means where it is used.
struct Binding {
  enum Kind { Local, Param, Global, Field, Undefined, Const, Proc, Member, Builtin, Intrinsic, Err } kind;
  int index = 0;
  bool checked = false;
  const ProcDef* proc = nullptr;
  const ClassMember* member = nullptr;
  const Variant* value = nullptr;
  const struct Builtin* builtin = nullptr;
  script::Intrinsic intrinsic = script::Intrinsic::Eval;
  int minArgs = 0, maxArgs = 0;
};

// The last link of a chain such as a.b(1).c(2), not yet made into a node: whether it is read,
// assigned or called as a statement decides the node.
struct Tail {
  enum Kind { Name, Member, Primary } kind = Primary;
  ExprPtr object;  // Member: the object; Primary: the expression
  Token name;      // Name, Member
  bool parens = false;
  ExprList args;
  size_t groupStart = 0;  // token index of the '(' of `args`
};

class Parser {
 public:
  Parser(const ParseInput& in, int pass, Declarations& decls);
  void Program();
  ExprPtr ExpressionOnly();

 private:
  // Tokens.
  const Token& Peek(size_t k = 0) const {
    size_t j = i_ + k;
    return toks_[j < toks_.size() ? j : toks_.size() - 1];
  }
  const Token& Next() {
    const Token& t = Peek();
    if (i_ < toks_.size() - 1) ++i_;
    return t;
  }
  bool Accept(Tok k) {
    if (Peek().kind != k) return false;
    Next();
    return true;
  }
  bool Accept(Kw k) {
    if (!Peek().Is(k)) return false;
    Next();
    return true;
  }
  bool IsWord(const Token& t, std::string_view word) const;
  bool AcceptWord(std::string_view word);
  void Expect(Tok k, int32_t code);
  void Expect(Kw k, int32_t code);
  [[noreturn]] void Fail(int32_t code) const;
  [[noreturn]] void FailAt(int32_t code, const Token& t) const;
  Pos PosOf(const Token& t) const { return t.pos; }
  std::string Identifier();
  bool AtEndOfStatement() const;
  void EndOfStatement();

  // Statements (parser_stmt.cc).
  void Block(script::Block& into);
  void Statement(script::Block& into);
  void Simple(script::Block& into);
  void SingleLineBody(script::Block& into);
  void If(script::Block& into);
  void Select(script::Block& into);
  void For(script::Block& into);
  void LoopBody(script::Block& body);
  void Do(script::Block& into);
  void While(script::Block& into);
  void With(script::Block& into);
  void Exit(script::Block& into);
  void OnError(script::Block& into);
  void Dim(bool isPublic, bool inClassBody);
  void ReDim(script::Block& into);
  void Const();
  void Erase(script::Block& into);
  void AssignOrCall(script::Block& into, bool isSet, bool isCall);
  void Procedure(bool isPublic, bool isDefault);
  void Class();
  void ClassBody(ClassDef& c);
  void Directive(const Token& t);
  std::vector<VariantArray::Bound> DimBounds(bool* isArray);
  Variant ConstValue();
  ExprPtr LoopVariable();

  // Expressions (parser_expr.cc).
  ExprPtr Expression();
  ExprPtr SkipExpression();
  ExprPtr Binary(int minLevel);
  ExprPtr Unary();
  ExprPtr Primary();
  Tail Chain(size_t stopAt);
  ExprPtr Build(Tail t);
  ExprPtr BuildTarget(Tail t);
  ExprPtr BuildCall(Tail t, ExprList extra, bool extraGiven, bool isCall);
  ExprList ParenArgs();
  ExprList PlainArgs();
  ExprPtr NameExpr(const Token& name, ExprList args, bool parens, bool asTarget, bool asCall = false);
  ExprPtr VariableNode(const Binding& b, const Token& name);
  ExprPtr WithObject(const Token& at);
  ExprPtr Finish(ExprPtr e, int childDepth);

  // Names (parser.cc).
  Binding Resolve(const Token& name, bool withArgs);
  void NoteAssigned(const Token& name, bool byReDim);
  const ProcDef* ScopeProc() const { return proc_ ? proc_ : (in_.dynamic ? in_.scopeProc : nullptr); }
  const ClassDef* ScopeClass() const { return cls_ ? cls_ : (in_.dynamic ? in_.scopeClass : nullptr); }
  bool OptionExplicit() const;
  const ProcDef* FindProc(const std::string& lower) const;
  const ClassDef* FindClass(const std::string& lower) const;
  const Variant* FindConst(const std::string& lower) const;
  bool NameTaken(const std::string& lower) const;

  struct Nest {
    Parser& p;
    explicit Nest(Parser& parser) : p(parser) {
      if (++p.nesting_ > kMaxNesting) p.Fail(kOutOfStackSpace);
    }
    ~Nest() { --p.nesting_; }
  };

  const ParseInput& in_;
  const std::vector<Token>& toks_;
  const PositionMap* positions_;
  Names& names_;
  Unit& unit_;
  Declarations& decls_;
  const int pass_;
  size_t i_ = 0;
  int nesting_ = 0;
  int blockDepth_ = 0;  // statements inside If, loops, With...: no procedure definitions there
  int forDepth_ = 0;
  int doDepth_ = 0;
  int singleLine_ = 0;  // inside a one-line If: Else ends a statement
  bool sawCode_ = false;
  bool stopAtStep_ = false;  // the first pass skipping For's end value
  ProcDef* proc_ = nullptr;
  ClassDef* cls_ = nullptr;
  size_t procCounter_ = 0;
  size_t classCounter_ = 0;
  int hiddenCounter_ = 0;
  struct WithHolder {
    bool local;
    int index;
  };
  std::vector<WithHolder> withs_;
};

}  // namespace corvane::script
