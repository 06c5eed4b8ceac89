// Shared helpers for tests: scratch files and small SQLite databases.
#pragma once

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <unistd.h>

#include "corvane/ado.h"
#include "corvane/error.h"

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
