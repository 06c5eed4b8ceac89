#include "script/compile.h"

#include "script/lexer.h"
#include "script/vbs_errors.h"

namespace corvane::script {

ScriptError MakeScriptError(const Error& error, Pos pos, const std::vector<PageFile>& sources, bool compile) {
  SourcePosition where;
  std::string line;
  if (pos.file < sources.size()) {
    const PageFile& file = sources[pos.file];
    where.file = file.path;
    std::string_view text = file.text;
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    if (pos.line > 0) line = std::string(LineOf(text, pos.line));
  }
  where.line = pos.line;
  where.column = pos.column;
  return ScriptError(error, std::move(where), std::move(line), compile);
}

std::shared_ptr<Program> CompileProgram(Source source, bool page) {
  auto program = std::make_shared<Program>();
  for (const PageFile& f : source.files) program->filePaths.push_back(f.path);
  PositionMap positions(source);
  program->sources = std::move(source.files);
  try {
    std::vector<Token> tokens = Tokenize(source.text, page);
    PlaceTokens(tokens, positions);
    ProgramNames names(*program);
    ParseInput in;
    in.tokens = &tokens;
    in.positions = &positions;
    in.names = &names;
    in.unit = program.get();
    in.directives = &program->directives;
    in.optionExplicit = &program->optionExplicit;
    Declarations d = ParseStatements(in);
    for (auto& [name, proc] : d.procs) program->procIndex.emplace(name, proc);
    for (auto& [name, cls] : d.classes) program->classIndex.emplace(name, cls);
    for (auto& [name, value] : d.consts) program->consts.emplace(name, value);
  } catch (const LexError& e) {
    throw MakeScriptError(LanguageError(e.number), positions.At(e.offset), program->sources, true);
  } catch (const CompileFailure& e) {
    throw MakeScriptError(LanguageError(e.number), positions.At(e.offset), program->sources, true);
  }
  return program;
}

}  // namespace corvane::script
