#include "script/page_source.h"

#include <optional>

#include "corvane/text.h"

namespace corvane::script {

namespace {

constexpr int kMaxIncludeDepth = 64;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Case-blind match of `word` at s[i].
bool MatchesAt(std::string_view s, size_t i, std::string_view word) {
  return s.size() - i >= word.size() && EqualsNoCase(s.substr(i, word.size()), word);
}

// One include directive found in a file's text.
struct Directive {
  size_t begin = 0;  // "<!--"
  size_t end = 0;    // after "-->"
  bool isVirtual = false;
  std::string path;
};

// Parses the directive that may start at text[i] ("<!--" there); nullopt when it is not one.
std::optional<Directive> ParseDirective(std::string_view text, size_t i) {
  Directive d{.begin = i};
  size_t p = i + 4;
  while (p < text.size() && IsBlank(text[p])) ++p;
  if (!MatchesAt(text, p, "#include")) return std::nullopt;
  p += 8;
  while (p < text.size() && IsBlank(text[p])) ++p;
  if (MatchesAt(text, p, "file")) {
    p += 4;
  } else if (MatchesAt(text, p, "virtual")) {
    d.isVirtual = true;
    p += 7;
  } else {
    return std::nullopt;
  }
  while (p < text.size() && IsBlank(text[p])) ++p;
  if (p >= text.size() || text[p] != '=') return std::nullopt;
  ++p;
  while (p < text.size() && IsBlank(text[p])) ++p;
  if (p >= text.size()) return std::nullopt;
  char quote = text[p];
  if (quote == '"' || quote == '\'') {
    size_t close = text.find(quote, p + 1);
    if (close == std::string_view::npos) return std::nullopt;
    d.path = std::string(text.substr(p + 1, close - p - 1));
    p = close + 1;
  } else {
    size_t start = p;
    while (p < text.size() && !IsBlank(text[p]) && text[p] != '-') ++p;
    d.path = std::string(text.substr(start, p - start));
  }
  while (p < text.size() && IsBlank(text[p])) ++p;
  if (!MatchesAt(text, p, "-->")) return std::nullopt;
  d.end = p + 3;
  return d;
}

std::string_view WithoutBom(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  return text;
}

class Expander {
 public:
  explicit Expander(const FileLoader& load) : load_(load) {}

  Source Run(std::string_view sitePath) {
    std::optional<PageFile> page = load_(sitePath);
    if (!page) throw ScriptError(Error(53, "File not found"), {std::string(sitePath), 0, 0}, "", true);
    uint16_t index = AddFile(std::move(*page));
    Expand(index, 0);
    return std::move(out_);
  }

 private:
  uint16_t AddFile(PageFile file) {
    for (size_t i = 0; i < out_.files.size(); ++i)
      if (out_.files[i].path == file.path) return static_cast<uint16_t>(i);
    out_.files.push_back(std::move(file));
    return static_cast<uint16_t>(out_.files.size() - 1);
  }

  void Expand(uint16_t index, int depth) {
    stack_.push_back(index);
    // Copies: AddFile may grow the list.
    const std::string text(WithoutBom(out_.files[index].text));
    const std::string path = out_.files[index].path;
    int line = 1, column = 1;
    size_t done = 0;  // text[0, done) is copied
    out_.segments.push_back({out_.text.size(), index, line, column});
    for (size_t i = text.find("<!--"); i != std::string::npos; i = text.find("<!--", i + 1)) {
      std::optional<Directive> d = ParseDirective(text, i);
      if (!d) continue;
      out_.text.append(text, done, d->begin - done);
      Advance(text, done, d->begin, line, column);
      Include(path, *d, line, column, depth);
      Advance(text, d->begin, d->end, line, column);
      done = d->end;
      out_.segments.push_back({out_.text.size(), index, line, column});
      i = d->end - 1;
    }
    out_.text.append(text, done);
    stack_.pop_back();
  }

  void Include(const std::string& from, const Directive& d, int line, int column, int depth) {
    auto fail = [&](std::string message) {
      const std::string& fromText = out_.files[stack_.back()].text;
      throw ScriptError(Error(kIncludeError, std::move(message)), {from, line, column},
                        std::string(LineOf(WithoutBom(fromText), line)), true);
    };
    std::string target = ResolveIncludePath(from, d.path, d.isVirtual);
    std::optional<PageFile> file;
    if (!target.empty()) file = load_(target);
    if (!file) fail("The include file '" + d.path + "' was not found.");
    for (uint16_t open : stack_)
      if (EqualsNoCase(out_.files[open].path, file->path))
        fail("The include file '" + d.path + "' includes itself (possibly indirectly).");
    if (depth + 1 >= kMaxIncludeDepth) fail("The include file '" + d.path + "' is nested too deeply.");
    Expand(AddFile(std::move(*file)), depth + 1);
  }

  static void Advance(std::string_view text, size_t from, size_t to, int& line, int& column) {
    for (size_t i = from; i < to; ++i) {
      if (text[i] == '\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
  }

  static constexpr int32_t kIncludeError = -2147467259;  // E_FAIL, as the page host reports it
  const FileLoader& load_;
  Source out_;
  std::vector<uint16_t> stack_;  // the files being expanded, outermost first
};

}  // namespace

std::string ResolveIncludePath(std::string_view includingFile, std::string_view path, bool isVirtual) {
  std::string p(path);
  for (char& c : p)
    if (c == '\\') c = '/';
  std::string joined;
  if (isVirtual || (!p.empty() && p[0] == '/')) {
    joined = p;
  } else {
    size_t slash = includingFile.rfind('/');
    joined = std::string(slash == std::string_view::npos ? "" : includingFile.substr(0, slash + 1)) + p;
  }
  std::vector<std::string> parts;
  size_t start = 0;
  while (start <= joined.size()) {
    size_t slash = joined.find('/', start);
    if (slash == std::string::npos) slash = joined.size();
    std::string part = joined.substr(start, slash - start);
    if (part == "..") {
      if (parts.empty()) return "";
      parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(std::move(part));
    }
    start = slash + 1;
  }
  if (parts.empty()) return "";
  std::string out;
  for (const std::string& part : parts) out += "/" + part;
  return out;
}

std::string_view LineOf(std::string_view text, int line) {
  size_t start = 0;
  for (int l = 1; l < line; ++l) {
    size_t nl = text.find('\n', start);
    if (nl == std::string_view::npos) return "";
    start = nl + 1;
  }
  size_t end = text.find('\n', start);
  std::string_view s = text.substr(start, end == std::string_view::npos ? text.size() - start : end - start);
  if (!s.empty() && s.back() == '\r') s.remove_suffix(1);
  return s;
}

Source ExpandPage(std::string_view sitePath, const FileLoader& load) { return Expander(load).Run(sitePath); }

Source PlainSource(std::string_view code, std::string_view file, int firstLine) {
  Source s;
  s.text = std::string(code);
  // The file's text as far as it is known: blank lines up to the code, so that line numbers agree.
  s.files.push_back(
      {std::string(file), std::string(firstLine > 1 ? firstLine - 1 : 0, '\n') + std::string(code)});
  s.segments.push_back({0, 0, firstLine, 1});
  return s;
}

}  // namespace corvane::script
