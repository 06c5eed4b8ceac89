// Compiling text into a Program or a Unit, and the ScriptErrors compile errors become.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "corvane/script.h"
#include "script/page_source.h"
#include "script/parser.h"
#include "script/program.h"

namespace corvane::script {

// A ScriptError for error `number` at `pos` of the page's files, with the text of that line.
ScriptError MakeScriptError(const Error& error, Pos pos, const std::vector<PageFile>& sources, bool compile);

// A whole page (page = true: text outside <% %> is output) or plain code.
std::shared_ptr<Program> CompileProgram(Source source, bool page);

}  // namespace corvane::script
