// The page a visitor sees when a page raises an error: the error's number, its description, the page,
// and for a script page the file, line, column and source line where it happened; nothing else (no
// stack, no connection string), as the original host's script error page. The server's log gets the
// same in one line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/error.h"

namespace corvane::server {

// The error number as the host showed it: 8 hex digits ("800a000d" for 13, "80040e14" for a
// database error).
std::string ErrorCode(int32_t number);

// What the error page and the log line report.
struct ErrorReport {
  int32_t number = 0;
  std::string description;
  std::string page;  // the request's path
  // Where a script page's error happened: the file's site path ("" when unknown), 1-based line and
  // column (0 when unknown) and the text of that line.
  std::string file;
  int line = 0, column = 0;
  std::string sourceLine;
  bool compileError = false;
};

// The report of an error a page raised; a script::ScriptError gives its place too.
ErrorReport ReportOf(const Error& e, std::string_view page);

// The HTML (UTF-8; the host converts it to the code page) of the error page, every text escaped.
// Every text in `secrets` (the connection string, the database file) is blanked out of every text
// shown.
std::string ErrorPageHtml(const ErrorReport& report, const std::vector<std::string>& secrets = {});
std::string ErrorPageHtml(int32_t number, std::string_view description, std::string_view page,
                          const std::vector<std::string>& secrets = {});

// The server log's line for it: "corvane-server: /p.asp: error 800a000d (13) Type mismatch at
// /inc/a.inc line 3 column 5: <source line>", secrets blanked and control bytes escaped.
std::string ErrorLogLine(const ErrorReport& report, const std::vector<std::string>& secrets = {});

// Text for a one-line log: control bytes (and backslash) as \xNN, \n, \r, \t.
std::string EscapeForLog(std::string_view text);

}  // namespace corvane::server
