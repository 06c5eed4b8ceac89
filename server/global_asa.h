// global.asa, the site's application file: the code of its <script language=vbscript runat=server>
// blocks (Application_OnStart, Session_OnStart, Session_OnEnd, ...) and the objects its
// <object runat=server> tags declare.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::server {

struct DeclaredObject {
  enum class Scope { Page, Session, Application };
  std::string id;      // the name pages use
  std::string progID;  // a ProgID, or a CLSID ("{...}") from classid="clsid:..."
  Scope scope = Scope::Page;
};

struct GlobalAsaText {
  // The script blocks' code in place: every other character of the file is a blank (line ends
  // kept), so that lines and columns are the file's own.
  std::string code;
  std::vector<DeclaredObject> objects;
};

// Splits global.asa's text. Script blocks of another language, objects without runat=server, an id
// or a class, and anything else in the file are left out.
GlobalAsaText ParseGlobalAsa(std::string_view text);

}  // namespace corvane::server
