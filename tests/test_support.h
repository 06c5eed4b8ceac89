// Shared helpers for tests: scratch files, golden files, error numbers, small SQLite databases.
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <string>

#include "corvane/ado.h"
#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/registry.h"

namespace corvane::testing {

// A fresh path under the build's scratch folder (CORVANE_TEST_TMP, else the system temp folder).
inline std::filesystem::path ScratchPath(const std::string& name) {
  static std::atomic<int> counter{0};
  const char* root = std::getenv("CORVANE_TEST_TMP");
  std::filesystem::path dir = root ? root : std::filesystem::temp_directory_path() / "corvane-tests";
  dir /= std::to_string(::getpid());
  std::filesystem::create_directories(dir);
  return dir / (std::to_string(counter++) + "-" + name);
}

// The expected text kept in a golden file, `path` relative to the source tree
// ("src/dna/golden/list.html"). The components end every line with CR LF; a golden file keeps plain
// line ends and one more at its end, so that it reads well and diffs cleanly: the file's last "\n"
// is dropped and every other "\n" stands for "\r\n".
inline std::string Golden(const std::string& path) {
  std::ifstream in(std::string(CORVANE_SOURCE_DIR) + "/" + path, std::ios::binary);
  if (!in) throw std::runtime_error("no golden file " + path);
  std::stringstream text;
  text << in.rdbuf();
  std::string lf = text.str(), out;
  if (!lf.empty() && lf.back() == '\n') lf.pop_back();
  for (char c : lf) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
}

// The platform error number that `f` raises; 0 when it raises none.
template <class F>
int32_t ErrorNumber(F&& f) {
  try {
    f();
  } catch (const Error& e) {
    return e.Number();
  }
  return 0;
}

// What a page host gives its pages: here, the library's classes for Server.CreateObject.
inline host::PageHost LibraryHost() { return {.createObject = CreateObject}; }

// A new, empty SQLite database file, with its connection string.
struct ScratchDatabase {
  std::filesystem::path file = ScratchPath("test.db");
  std::string connectionString = "Provider=SQLite;Data Source=" + file.string();

  // Runs each statement in order on a fresh connection.
  void Run(std::initializer_list<std::string_view> statements) const {
    ado::Connection c;
    c.Open(connectionString);
    for (std::string_view s : statements) c.Execute(s);
    c.Close();
  }
};

}  // namespace corvane::testing
