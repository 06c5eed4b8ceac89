// The script engine's language core and page compiler.
//
//   numeric_loop  For i = 1 To 1000000: s = s + i
//   string_loop   For i = 1 To 1000000: s = s & "x"
//   fib25         a recursive Function fib(25)
//   compile_page  a 2,000-line page (400 lines of its own, four includes of 400 lines) compiled with
//                 its includes from memory, as the server's compile cache does on a change
//
// The first three run the same programs as bench/script/core.lua; bench/script_bench.sh runs both
// and prints them side by side. Each iteration compiles nothing: the program is compiled once and
// each iteration is one run of it.
#include <benchmark/benchmark.h>

#include <map>
#include <string>

#include "corvane/script.h"

namespace {

using namespace corvane;

const char* kNumericLoop = R"(
Dim i, s
s = 0
For i = 1 To 1000000
  s = s + i
Next
)";

const char* kStringLoop = R"(
Dim i, s
s = ""
For i = 1 To 1000000
  s = s & "x"
Next
)";

const char* kFib = R"(
Function fib(n)
  If n < 2 Then
    fib = n
  Else
    fib = fib(n - 1) + fib(n - 2)
  End If
End Function
Dim r
r = fib(25)
)";

void RunProgram(benchmark::State& state, const char* code) {
  auto program = script::CompileScript(code, "bench.vbs");
  for (auto _ : state) {
    script::RunContext context;
    context.write = [](std::string_view) {};
    script::ScriptRun run(program, std::move(context));
    run.Run();
  }
}

void NumericLoop(benchmark::State& state) { RunProgram(state, kNumericLoop); }
void StringLoop(benchmark::State& state) { RunProgram(state, kStringLoop); }
void Fib25(benchmark::State& state) { RunProgram(state, kFib); }

// 400 lines of a page's usual mix: markup, output blocks, a procedure, conditions and loops.
std::string PageLines(const std::string& prefix) {
  std::string text;
  for (int block = 0; block < 20; ++block) {
    std::string n = prefix + std::to_string(block);
    text += "<tr><td class=label>Row " + n + "</td>\r\n";                              // 1
    text += "<td><%= Server.HTMLEncode(Request(\"q" + n + "\")) %></td></tr>\r\n";     // 2
    text += "<%\r\n";                                                                  // 3
    text += "Function Cell" + n + "(value, width)\r\n";                                // 4
    text += "  Dim s, i\r\n";                                                          // 5
    text += "  If IsNull(value) Or value = \"\" Then\r\n";                             // 6
    text += "    s = \"&nbsp;\"\r\n";                                                  // 7
    text += "  ElseIf Len(value) > width Then\r\n";                                    // 8
    text += "    s = Left(value, width - 1) & \"...\"\r\n";                            // 9
    text += "  Else\r\n";                                                              // 10
    text += "    s = value\r\n";                                                       // 11
    text += "  End If\r\n";                                                            // 12
    text += "  For i = 1 To 3\r\n";                                                    // 13
    text += "    s = s & \"<b>\" & i & \"</b>\"\r\n";                                  // 14
    text += "  Next\r\n";                                                              // 15
    text += "  Cell" + n + " = \"<td width='\" & width & \"'>\" & s & \"</td>\"\r\n";  // 16
    text += "End Function\r\n";                                                        // 17
    text += "Select Case Request(\"action\") : Case \"a" + n + "\" : Response.Write Cell" + n +
            "(\"x\", 10) : Case Else : End Select\r\n";  // 18
    text += "%>\r\n";                                    // 19
    text += "<!-- row " + n + " -->\r\n";                // 20
  }
  return text;
}

void CompilePage(benchmark::State& state) {
  std::map<std::string, std::string> files;
  std::string page = "<%@ LANGUAGE=\"VBSCRIPT\" CODEPAGE=65001 %>\r\n";
  for (int i = 0; i < 4; ++i) {
    std::string name = "/inc/part" + std::to_string(i) + ".inc";
    files[name] = PageLines("p" + std::to_string(i) + "_");
    page += "<!--#include virtual=\"" + name + "\"-->\r\n";
  }
  page += PageLines("main_");
  files["/page.asp"] = page;
  script::FileLoader load = [&](std::string_view path) -> std::optional<script::PageFile> {
    auto it = files.find(std::string(path));
    if (it == files.end()) return std::nullopt;
    return script::PageFile{it->first, it->second};
  };
  size_t lines = 0;
  for (const auto& [name, text] : files)
    for (char c : text) lines += c == '\n';
  for (auto _ : state) benchmark::DoNotOptimize(script::CompilePage("/page.asp", load));
  state.counters["lines"] = static_cast<double>(lines);
}

BENCHMARK(NumericLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(StringLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(Fib25)->Unit(benchmark::kMillisecond);
BENCHMARK(CompilePage)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
