#include "page_kit.h"

#include <vector>

#include "corvane/codepage.h"
#include "corvane/host.h"

namespace corvane::site {

std::string ConnStr(PageContext& p) { return p.Application.Get("ConnStr").Text(); }

std::string Param(PageContext& p, std::string_view name) {
  Variant v = p.Request.Form(name);
  if (v.Text().empty()) v = p.Request.QueryString(name);
  return v.Text();
}

bool RequireSignIn(PageContext& p) {
  if (!p.Session.Get("personID").Text().empty()) return true;
  p.Response.Redirect("/login.asp");
  return false;
}

int32_t PersonID(PageContext& p) {
  Variant id = p.Session.Get("personID");
  return id.Text().empty() ? 0 : id.ToLong();
}

bool DebugOn(PageContext& p) {
  std::string debug = p.Request.QueryString("debug").Text();
  if (!debug.empty()) p.Session.Set("debug", Variant(debug == "1"));
  Variant on = p.Session.Get("debug");
  return !on.IsEmpty() && on.ToBool();
}

void WriteHead(PageContext& p, std::string_view title, std::string_view head,
               std::string_view bodyAttributes) {
  std::string charset = CharsetName(p.Request.CodePage());
  std::string s =
      "<html><head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=" + charset +
      "\">\r\n<title>" + Html(title) + "</title>\r\n" +
      "<link rel=\"stylesheet\" href=\"/include/site.css\" type=\"text/css\">\r\n"
      "<script src=\"/include/compat.js\"></script>\r\n";
  s += head;
  s += "</head>\r\n<body";
  if (!bodyAttributes.empty()) {
    s += ' ';
    s += bodyAttributes;
  }
  s += ">\r\n";
  p.Response.Write(s);
}

void WriteFoot(PageContext& p) { p.Response.Write("\r\n</body></html>\r\n"); }

std::string Html(std::string_view text) { return host::HtmlEncode(text); }

Variant Call(const Object& obj, std::string_view name, std::initializer_list<Variant> args) {
  std::vector<Variant> a(args);
  return obj.Invoke(name, a);
}

}  // namespace corvane::site
