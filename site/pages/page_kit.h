// What the site's pages share, as an ASP site's include file would: the connection string, request
// values, the sign-in check, the page head and foot, and short late-bound calls on components.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "corvane/variant.h"
#include "page_registry.h"

namespace corvane::site {

using server::PageContext;

// Application("ConnStr"), set by the host at start.
std::string ConnStr(PageContext& p);
// Request.Form(name), else Request.QueryString(name), as text ("" when absent).
std::string Param(PageContext& p, std::string_view name);
// True when someone is signed in; else redirects to the sign-in page and answers false.
bool RequireSignIn(PageContext& p);
// Session("personID") as a number (0 when nobody is signed in).
int32_t PersonID(PageContext& p);
// The session's debug switch for the components' trace: "?debug=1" turns it on for this session's
// pages, "?debug=0" off.
bool DebugOn(PageContext& p);

// "<html><head>" with the charset of the code page, the title, the style sheet and the site's
// compatibility script, then `head`, then "</head><body>" (with `bodyAttributes`).
void WriteHead(PageContext& p, std::string_view title, std::string_view head = "",
               std::string_view bodyAttributes = "");
void WriteFoot(PageContext& p);

// Escapes text for HTML (element text and quoted attribute values).
std::string Html(std::string_view text);

// A late-bound call with arguments passed by value: obj.name(args...).
Variant Call(const Object& obj, std::string_view name, std::initializer_list<Variant> args = {});

}  // namespace corvane::site
