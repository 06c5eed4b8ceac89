#include "upload_names.h"

#include <string>

#include "corvane/text.h"

namespace corvane::site {

namespace {

// The first quoted filename="..." of `body` that holds a "/"; npos when none does.
size_t SlashedFileName(std::string_view body) {
  constexpr std::string_view kKey = "filename=\"";
  for (size_t at = body.find(kKey); at != std::string_view::npos; at = body.find(kKey, at)) {
    at += kKey.size();
    const size_t close = body.find('"', at);
    const std::string_view name = body.substr(at, close == std::string_view::npos ? close : close - at);
    if (name.find('/') != std::string_view::npos) return at;
    if (close == std::string_view::npos) break;
    at = close + 1;
  }
  return std::string_view::npos;
}

}  // namespace

server::GuardVerdict CheckUploadNames(const server::GuardRequest& request) {
  constexpr std::string_view kMultipart = "multipart/";
  if (!EqualsNoCase(request.contentType.substr(0, kMultipart.size()), kMultipart) ||
      SlashedFileName(request.body) == std::string_view::npos)
    return {};
  return {.status = 400,
          .message = "file1: 文件名不能含 /。",
          .logLine = "400 " + std::string(request.method) + " " + std::string(request.sitePath) + " from " +
                     std::string(request.remoteAddr) + ": a sent file name holds \"/\""};
}

}  // namespace corvane::site
