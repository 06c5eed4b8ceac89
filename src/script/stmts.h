// The statement node types of the compiled tree.
#pragma once

#include <string>
#include <vector>

#include "script/nodes.h"
#include "script/tree.h"

namespace corvane::script {

// A call or other expression used as a statement.
class ExprStmt : public Stmt {
 public:
  ExprStmt(Pos p, ExprPtr e) : Stmt(p), e_(std::move(e)) {}
  Flow Exec(Frame& f) const override {
    e_->Exec(f);
    return Flow::Normal;
  }

 private:
  ExprPtr e_;
};

// target = value, Set target = value.
class AssignStmt : public Stmt {
 public:
  AssignStmt(Pos p, ExprPtr target, ExprPtr value, bool isSet)
      : Stmt(p, StmtKind::Assign),
        target_(std::move(target)),
        value_(std::move(value)),
        set_(isSet),
        arithmetic_(dynamic_cast<const BinaryExpr*>(value_.get())),
        dst_(target_.get()),
        src_(value_.get()) {}
  Flow Exec(Frame& f) const override;
  // The assignment itself, inlined where blocks and loops run it (run_inline.h).
  inline void Run(Frame& f) const;

 private:
  ExprPtr target_, value_;
  bool set_;
  const BinaryExpr* arithmetic_;  // an operator's result, never an object: computed into the variable
  OperandSource dst_, src_;       // an operator's result, never an object: computed into the variable
};

// s = s & a & b: appends to the text in place when s holds text.
class AppendStmt : public Stmt {
 public:
  AppendStmt(Pos p, ExprPtr target, ExprList parts)
      : Stmt(p), target_(std::move(target)), parts_(std::move(parts)) {}
  Flow Exec(Frame& f) const override;

 private:
  ExprPtr target_;
  ExprList parts_;
};

class IfStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprList conditions;
  std::vector<Block> blocks;  // one per condition, then the Else block when there is one
};

class SelectStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprPtr test;
  std::vector<ExprList> cases;
  std::vector<Block> blocks;  // one per Case, then Case Else when there is one
};

class ForStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprPtr var, from, to, step;  // step may be null (1)
  Block body;
};

class ForEachStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprPtr var, collection;
  Block body;
};

// Do [While|Until c] ... Loop [While|Until c], and While ... Wend.
class DoStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprPtr condition;  // null: loops until Exit Do
  bool until = false;
  bool testFirst = true;
  Block body;
};

class ExitStmt : public Stmt {
 public:
  ExitStmt(Pos p, Flow flow) : Stmt(p), flow_(flow) {}
  Flow Exec(Frame& f) const override;

 private:
  Flow flow_;
};

class OnErrorStmt : public Stmt {
 public:
  OnErrorStmt(Pos p, bool resumeNext) : Stmt(p), resumeNext_(resumeNext) {}
  Flow Exec(Frame& f) const override;

 private:
  bool resumeNext_;
};

// ReDim [Preserve] a(...): one per variable.
class ReDimStmt : public Stmt {
 public:
  ReDimStmt(Pos p, ExprPtr var, ExprList bounds, bool preserve)
      : Stmt(p), var_(std::move(var)), bounds_(std::move(bounds)), preserve_(preserve) {}
  Flow Exec(Frame& f) const override;

 private:
  ExprPtr var_;
  ExprList bounds_;
  bool preserve_;
};

class EraseStmt : public Stmt {
 public:
  EraseStmt(Pos p, ExprPtr var) : Stmt(p), var_(std::move(var)) {}
  Flow Exec(Frame& f) const override;

 private:
  ExprPtr var_;
};

// With obj ... End With: the object is kept in a hidden variable the block's ".member"s read.
class WithStmt : public Stmt {
 public:
  using Stmt::Stmt;
  Flow Exec(Frame& f) const override;
  ExprPtr holder, object;
  Block body;
};

// Page text outside the code blocks.
class HtmlStmt : public Stmt {
 public:
  HtmlStmt(Pos p, std::string text) : Stmt(p), text_(std::move(text)) {}
  Flow Exec(Frame& f) const override;

 private:
  std::string text_;
};

// <%= expression %>
class OutputStmt : public Stmt {
 public:
  OutputStmt(Pos p, ExprPtr e) : Stmt(p), e_(std::move(e)) {}
  Flow Exec(Frame& f) const override;

 private:
  ExprPtr e_;
};

// Fills an array variable with a new fixed-size array.
void MakeFixedArray(Variant& target, const std::vector<VariantArray::Bound>& bounds);

}  // namespace corvane::script
