// The table of built-in functions: each family's functions (builtins_<family>.cc), found by
// case-insensitive name.
#include "script/builtins.h"

#include <string>
#include <unordered_map>

#include "corvane/text.h"
#include "script/builtins_support.h"

namespace corvane::script {
namespace {

using Table = std::unordered_map<std::string, const Builtin*>;

Table MakeTable() {
  Table table;
  for (auto family : {builtins::ConversionBuiltins(), builtins::InspectionBuiltins(),
                      builtins::TextBuiltins(), builtins::MathBuiltins(), builtins::DateBuiltins(),
                      builtins::ArrayBuiltins(), builtins::FormatBuiltins()})
    for (const Builtin& b : family) table.emplace(LCase(b.name), &b);
  return table;
}

}  // namespace

const Builtin* FindBuiltin(std::string_view name) {
  static const Table table = MakeTable();
  auto it = table.find(LCase(name));
  return it == table.end() ? nullptr : it->second;
}

}  // namespace corvane::script
