// Static files of the site folder: style sheets, scripts, images.
//
// URL paths are matched against the folder case-insensitively, segment by segment (an exact match
// wins), because the pages' links mix "Images/" and "images/" as the original server's file system
// allowed. A path that would leave the folder is never served. Replies carry an ETag and a
// Last-Modified date and answer a matching conditional request with 304. One byte range is honoured
// (206, or 416 when it lies past the end); a request for several ranges gets the whole file, so that
// no request can make the reply larger than the file.
//
// What a path resolved to is kept for a second, and a small file's bytes for as long as the file
// keeps its size and modification time (checked with one stat() per request), so that a file served
// again costs neither the case-blind walk nor a read.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::server {

struct StaticReply {
  int status = 200;  // 200, 206, 304 or 416
  std::string contentType;
  std::string body;  // empty for 304 and 416
  std::vector<std::pair<std::string, std::string>> headers;
};

// The Content-Type of a file name by its extension ("application/octet-stream" when unknown). The
// site's text files are UTF-8 whatever the pages' code page, so text types say so: a script that a
// GBK page loads would otherwise be read as GBK.
std::string ContentTypeFor(std::string_view fileName);

// Whether a file's source must never be sent: a script page, an include or an application file
// (.asp, .asa, .inc, .cer in any case), whatever trailing dots or blanks or stream suffix
// ("::$DATA") its name carries.
bool IsScriptSource(std::string_view fileName);

struct ByteRange {
  size_t first = 0, last = 0;  // inclusive
};
// The one range of a Range header for a file of `size` bytes: nullopt when the header asks for no
// single byte range ("", several ranges, another unit, bad syntax: the whole file is sent), a range
// with first > last when it lies past the end (416).
std::optional<ByteRange> SingleRange(std::string_view header, size_t size);

class StaticFiles {
 public:
  explicit StaticFiles(std::filesystem::path root);

  // The regular file that the decoded URL path names ("/Images/Edit.GIF"), or nullopt when there is
  // none, when a segment is "..", empty-named or hidden (".x"), or when it resolves outside the root.
  std::optional<std::filesystem::path> Resolve(std::string_view urlPath) const;

  // The reply for a GET of `urlPath`, or nullopt (404; also for a script source, IsScriptSource, by
  // the name asked for or the file's own). `ifNoneMatch` and `ifModifiedSince` are the request's
  // conditional headers and `range` its Range header ("" when absent).
  std::optional<StaticReply> Get(std::string_view urlPath, std::string_view ifNoneMatch = "",
                                 std::string_view ifModifiedSince = "", std::string_view range = "") const;

  const std::filesystem::path& Root() const { return root_; }

 private:
  struct Known;
  struct Cache;
  std::shared_ptr<const Known> Find(std::string_view urlPath) const;

  std::filesystem::path root_;  // canonical
  std::shared_ptr<Cache> cache_;
};

}  // namespace corvane::server
