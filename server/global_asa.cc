#include "global_asa.h"

#include <map>
#include <optional>

#include "corvane/text.h"

namespace corvane::server {

namespace {

// Position of `what` in `s` from `from`, ASCII case-blind; npos when absent.
size_t FindNoCase(std::string_view s, std::string_view what, size_t from) {
  for (size_t i = from; i + what.size() <= s.size(); ++i)
    if (EqualsNoCase(s.substr(i, what.size()), what)) return i;
  return std::string_view::npos;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The attributes of a tag's text between its name and ">": name=value, name="value", name='value',
// names lower-case.
std::map<std::string, std::string> Attributes(std::string_view tag) {
  std::map<std::string, std::string> out;
  size_t i = 0;
  while (i < tag.size()) {
    while (i < tag.size() && (IsBlank(tag[i]) || tag[i] == '/')) ++i;
    size_t start = i;
    while (i < tag.size() && !IsBlank(tag[i]) && tag[i] != '=' && tag[i] != '/') ++i;
    std::string name = LCase(tag.substr(start, i - start));
    while (i < tag.size() && IsBlank(tag[i])) ++i;
    std::string value;
    if (i < tag.size() && tag[i] == '=') {
      ++i;
      while (i < tag.size() && IsBlank(tag[i])) ++i;
      if (i < tag.size() && (tag[i] == '"' || tag[i] == '\'')) {
        char quote = tag[i++];
        size_t end = tag.find(quote, i);
        if (end == std::string_view::npos) end = tag.size();
        value = tag.substr(i, end - i);
        i = end + 1;
      } else {
        start = i;
        while (i < tag.size() && !IsBlank(tag[i])) ++i;
        value = tag.substr(start, i - start);
      }
    }
    if (!name.empty()) out[name] = value;
  }
  return out;
}

// A tag starts at `at` ("<name"): the end of its name and of the tag (the ">").
struct Tag {
  std::map<std::string, std::string> attributes;
  size_t end;  // just past ">"
};
std::optional<Tag> ReadTag(std::string_view text, size_t at, size_t nameLength) {
  size_t close = text.find('>', at);
  if (close == std::string_view::npos) return std::nullopt;
  return Tag{Attributes(text.substr(at + nameLength, close - at - nameLength)), close + 1};
}

bool StartsTag(std::string_view text, size_t at, std::string_view name) {
  size_t after = at + name.size();
  return after < text.size() && (IsBlank(text[after]) || text[after] == '>' || text[after] == '/');
}

}  // namespace

GlobalAsaText ParseGlobalAsa(std::string_view text) {
  GlobalAsaText out;
  out.code.assign(text.size(), ' ');
  for (size_t i = 0; i < text.size(); ++i)
    if (text[i] == '\n' || text[i] == '\r') out.code[i] = text[i];
  for (size_t at = 0; (at = text.find('<', at)) != std::string_view::npos;) {
    if (FindNoCase(text.substr(at, 7), "<script", 0) == 0 && StartsTag(text, at, "<script")) {
      std::optional<Tag> tag = ReadTag(text, at, 7);
      if (!tag) break;
      size_t end = FindNoCase(text, "</script", tag->end);
      if (end == std::string_view::npos) end = text.size();
      auto& a = tag->attributes;
      bool server = EqualsNoCase(a["runat"], "server");
      bool vbscript = a["language"].empty() || EqualsNoCase(a["language"], "vbscript");
      if (server && vbscript)
        out.code.replace(tag->end, end - tag->end, text.substr(tag->end, end - tag->end));
      at = end;
    } else if (FindNoCase(text.substr(at, 7), "<object", 0) == 0 && StartsTag(text, at, "<object")) {
      std::optional<Tag> tag = ReadTag(text, at, 7);
      if (!tag) break;
      auto& a = tag->attributes;
      std::string progID = a["progid"];
      if (progID.empty() && LCase(a["classid"]).rfind("clsid:", 0) == 0)
        progID = "{" + a["classid"].substr(6) + "}";
      if (EqualsNoCase(a["runat"], "server") && !a["id"].empty() && !progID.empty()) {
        DeclaredObject o{.id = a["id"], .progID = progID};
        if (EqualsNoCase(a["scope"], "session")) o.scope = DeclaredObject::Scope::Session;
        if (EqualsNoCase(a["scope"], "application")) o.scope = DeclaredObject::Scope::Application;
        out.objects.push_back(std::move(o));
      }
      at = tag->end;
    } else {
      ++at;
    }
  }
  return out;
}

}  // namespace corvane::server
