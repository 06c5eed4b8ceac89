// Feeds arbitrary page text to the page compiler (CompilePage) and checks what must hold for every
// text: it compiles, or it raises a ScriptError that names one of the page's files and a line
// within it; nothing else escapes, nothing crashes or hangs.
//
// The page is /dir/page.asp. Its includes are answered from a few fixed files: /dir/a.inc (plain
// code), /dir/b.inc (includes a.inc), /lib/c.inc (includes itself) and /dir/text.inc (page text
// with a block of code); every other path is missing.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "corvane/script.h"

using namespace corvane;
using namespace corvane::script;

namespace {

std::optional<PageFile> Load(std::string_view path, std::string_view page) {
  if (path == "/dir/page.asp") return PageFile{"/dir/page.asp", std::string(page)};
  if (path == "/dir/a.inc") return PageFile{"/dir/a.inc", "<% Function A(x): A = x & 1: End Function %>"};
  if (path == "/dir/b.inc") return PageFile{"/dir/b.inc", "b<!--#include file=\"a.inc\"-->"};
  if (path == "/lib/c.inc") return PageFile{"/lib/c.inc", "\n<!--#include virtual=\"/lib/c.inc\"-->"};
  if (path == "/dir/text.inc") return PageFile{"/dir/text.inc", "<p>\n<% Dim t(3) %><%= t(1) %>\n</p>"};
  return std::nullopt;
}

int LineCount(std::string_view text) {
  int lines = 1;
  for (char c : text) lines += c == '\n';
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view page(reinterpret_cast<const char*>(data), size);
  try {
    auto compiled = CompilePage("/dir/page.asp", [page](std::string_view path) { return Load(path, page); });
    if (compiled->Files().empty() || compiled->Files()[0] != "/dir/page.asp") std::abort();
  } catch (const ScriptError& e) {
    const std::string& file = e.Where().file;
    std::optional<PageFile> f = Load(file, page);
    if (!f) std::abort();
    if (e.Where().line < 1 || e.Where().line > LineCount(f->text)) std::abort();
    if (e.Description().empty() || !e.IsCompileError()) std::abort();
  }
  return 0;
}
