// Builds the compiled tree from tokens. Two passes over the tokens: the first finds every
// declaration (procedures, classes, constants, global variables, the names each procedure assigns),
// so that the second resolves each name where it is used, whatever the order of the code.
#pragma once

#include <cstdint>
#include <vector>

#include "script/page_source.h"
#include "script/program.h"
#include "script/token.h"
#include "script/tree.h"

namespace corvane::script {

// A compile error at an offset of the text.
struct CompileFailure {
  int32_t number;
  size_t offset;
};

// Maps offsets of the expanded text to positions in the original files.
class PositionMap {
 public:
  explicit PositionMap(const Source& source);
  // Every offset maps to `fixed` (code compiled while running reports the line that ran it).
  explicit PositionMap(Pos fixed) : fixed_(fixed), isFixed_(true) {}
  Pos At(size_t offset) const;

 private:
  std::vector<size_t> lineStarts_;
  std::vector<Segment> segments_;
  mutable size_t segmentHint_ = 0, lineHint_ = 0, segmentLineHint_ = 0;
  Pos fixed_;
  bool isFixed_ = false;
};

// Fills each token's position.
void PlaceTokens(std::vector<Token>& tokens, const PositionMap& positions);

struct ParseInput {
  const std::vector<Token>* tokens = nullptr;
  const PositionMap* positions = nullptr;
  Names* names = nullptr;
  Unit* unit = nullptr;
  // The page's directives (<%@ %>), when compiling a page.
  PageDirectives* directives = nullptr;
  bool* optionExplicit = nullptr;
  // Code compiled while running: the procedure (and class) whose frame it runs in, if any.
  bool dynamic = false;
  const ProcDef* scopeProc = nullptr;
  const ClassDef* scopeClass = nullptr;
};

// What the first pass found that the caller registers: the unit's own procedures, classes and
// constants by lower-case name.
struct Declarations {
  std::unordered_map<std::string, const ProcDef*> procs;
  std::unordered_map<std::string, const ClassDef*> classes;
  std::unordered_map<std::string, Variant> consts;
  // Every procedure and class in the order of the text (the second pass meets them in that order).
  std::vector<ProcDef*> procOrder;
  std::vector<ClassDef*> classOrder;
};

// Statements into unit->body (and the unit's procedures and classes). Raises CompileFailure.
Declarations ParseStatements(const ParseInput& in);
// One expression into unit->expr (Eval). Raises CompileFailure.
void ParseExpressionOnly(const ParseInput& in);

}  // namespace corvane::script
