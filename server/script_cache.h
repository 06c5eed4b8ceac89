// Script pages compiled once and kept: each page of the site folder (found case-blind, never outside
// the folder) is compiled with its includes on first use and again when one of its files changes,
// which is looked at no more than once per check interval. Many requests run one compiled page at
// once; a burst of requests for a page not compiled yet compiles it once.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "corvane/script.h"
#include "static_files.h"

namespace corvane::server {

// A file as it was when read: a later Changed() tells whether it is another now (or gone).
struct FileStamp {
  std::filesystem::path path;
  timespec mtime{};
  off_t size = -1;
  ino_t inode = 0;
  static FileStamp Of(const std::filesystem::path& path);  // size -1 when there is no such file
  bool Changed() const;
};

// A site file's text for the compiler: UTF-8 as it is (a byte order mark dropped); text that is not
// UTF-8 is read in the code page (a page saved in GBK for a GBK site).
std::string PageText(std::string bytes, int codePage);

// One compiled page with what the host needs beside it.
struct CachedPage {
  std::shared_ptr<const script::CompiledPage> compiled;
  std::string sitePath;  // the page's site path, in the case it has on disk
  // The names its files use, lower-case, so that a declared object is created only for a page
  // that names it.
  std::unordered_set<std::string> names;
  bool Names(std::string_view id) const;
};

class ScriptCache {
 public:
  ScriptCache(std::filesystem::path siteFolder, int codePage,
              std::chrono::milliseconds checkEvery = std::chrono::seconds(1));

  // The page at `sitePath`, compiled; nullptr when there is no such file in the site. Raises
  // script::ScriptError when it does not compile (a syntax error, a missing include, a cycle).
  std::shared_ptr<const CachedPage> Get(std::string_view sitePath);

  // Reads a site file (case-blind, inside the site): its text as the compiler takes it, its site
  // path in the case it has on disk, and its stamp. nullopt when there is none.
  struct Loaded {
    script::PageFile file;
    FileStamp stamp;
  };
  std::optional<Loaded> Load(std::string_view sitePath) const;

 private:
  struct Slot {
    std::mutex mu;  // held while the page is checked or compiled
    std::shared_ptr<const CachedPage> page;
    std::vector<FileStamp> stamps;
    std::chrono::steady_clock::time_point checked;
  };

  StaticFiles files_;
  int codePage_;
  std::chrono::milliseconds checkEvery_;
  std::mutex mu_;
  std::unordered_map<std::string, std::shared_ptr<Slot>> slots_;  // lower-case site path -> slot
};

}  // namespace corvane::server
