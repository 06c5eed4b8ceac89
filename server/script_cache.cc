#include "script_cache.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "corvane/codepage.h"
#include "corvane/text.h"

namespace corvane::server {

namespace fs = std::filesystem;

namespace {

bool IsUtf8(std::string_view s) {
  for (size_t i = 0; i < s.size();) {
    auto b = static_cast<unsigned char>(s[i]);
    size_t n = b < 0x80 ? 1 : (b >> 5) == 6 ? 2 : (b >> 4) == 14 ? 3 : (b >> 3) == 30 ? 4 : 0;
    if (n == 0 || i + n > s.size()) return false;
    for (size_t k = 1; k < n; ++k)
      if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
    i += n;
  }
  return true;
}

// The identifiers of a text, lower-case.
void CollectNames(std::string_view text, std::unordered_set<std::string>& names) {
  auto isStart = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
  auto isPart = [&](char c) { return isStart(c) || (c >= '0' && c <= '9'); };
  for (size_t i = 0; i < text.size();) {
    if (!isStart(text[i])) {
      ++i;
      continue;
    }
    size_t start = i;
    while (i < text.size() && isPart(text[i])) ++i;
    names.insert(LCase(text.substr(start, i - start)));
  }
}

}  // namespace

FileStamp FileStamp::Of(const fs::path& path) {
  FileStamp s{.path = path};
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0) {
    s.mtime = st.st_mtim;
    s.size = st.st_size;
    s.inode = st.st_ino;
  }
  return s;
}

bool FileStamp::Changed() const {
  FileStamp now = Of(path);
  return now.size != size || now.inode != inode || now.mtime.tv_sec != mtime.tv_sec ||
         now.mtime.tv_nsec != mtime.tv_nsec;
}

std::string PageText(std::string bytes, int codePage) {
  if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
  if (IsUtf8(bytes) || codePage == kCodePageUtf8) return bytes;
  return DecodeCodePage(bytes, codePage);
}

bool CachedPage::Names(std::string_view id) const { return names.count(LCase(id)) > 0; }

ScriptCache::ScriptCache(fs::path siteFolder, int codePage, std::chrono::milliseconds checkEvery)
    : files_(std::move(siteFolder)), codePage_(codePage), checkEvery_(checkEvery) {}

std::optional<ScriptCache::Loaded> ScriptCache::Load(std::string_view sitePath) const {
  std::optional<fs::path> file = files_.Resolve(sitePath);
  if (!file) return std::nullopt;
  FileStamp stamp = FileStamp::Of(*file);
  std::ifstream in(*file, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  std::string onDisk = "/" + file->lexically_relative(files_.Root()).generic_string();
  return Loaded{{std::move(onDisk), PageText(std::move(bytes).str(), codePage_)}, std::move(stamp)};
}

std::shared_ptr<const CachedPage> ScriptCache::Get(std::string_view sitePath) {
  const std::string key = LCase(sitePath);
  std::shared_ptr<Slot> slot;
  {
    std::lock_guard lock(mu_);
    if (auto it = slots_.find(key); it != slots_.end()) slot = it->second;
  }
  if (!slot) {  // a slot only for a file that is there, so that asking for others costs nothing
    if (!files_.Resolve(sitePath)) return nullptr;
    std::lock_guard lock(mu_);
    auto& s = slots_[key];
    if (!s) s = std::make_shared<Slot>();
    slot = s;
  }
  std::lock_guard lock(slot->mu);
  auto now = std::chrono::steady_clock::now();
  if (slot->page) {
    if (now - slot->checked < checkEvery_) return slot->page;
    bool changed = false;
    for (const FileStamp& s : slot->stamps) changed = changed || s.Changed();
    slot->checked = now;
    if (!changed) return slot->page;
  }
  slot->page.reset();
  slot->stamps.clear();
  if (!files_.Resolve(sitePath)) {  // the page is gone
    std::lock_guard mapLock(mu_);
    slots_.erase(key);
    return nullptr;
  }

  auto page = std::make_shared<CachedPage>();
  std::vector<FileStamp> stamps;
  script::FileLoader loader = [&](std::string_view path) -> std::optional<script::PageFile> {
    std::optional<Loaded> loaded = Load(path);
    if (!loaded) return std::nullopt;
    stamps.push_back(std::move(loaded->stamp));
    CollectNames(loaded->file.text, page->names);
    return std::move(loaded->file);
  };
  page->compiled = script::CompilePage(sitePath, loader);
  page->sitePath = page->compiled->Files().empty() ? std::string(sitePath) : page->compiled->Files().front();
  slot->page = page;
  slot->stamps = std::move(stamps);
  slot->checked = now;
  return page;
}

}  // namespace corvane::server
