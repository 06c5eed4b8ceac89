// A drive root and a site folder of the test's own, for the file classes' tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "runtime/runtime_test_support.h"
#include "scripting/scripting.h"

namespace corvane::scripting {

class FileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* old = std::getenv("CORVANE_DRIVE_ROOT")) savedRoot_ = old;
    setenv("CORVANE_DRIVE_ROOT", root_.c_str(), 1);
    std::filesystem::create_directories(root_ / "d");
    std::filesystem::create_directories(site_);
    SetSiteFolder(site_.string());
  }
  void TearDown() override {
    savedRoot_.empty() ? unsetenv("CORVANE_DRIVE_ROOT") : setenv("CORVANE_DRIVE_ROOT", savedRoot_.c_str(), 1);
    SetSiteFolder("");
  }

  // A file's bytes, and a file written with the given bytes, by local path.
  static std::string Bytes(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  static void Put(const std::filesystem::path& p, const std::string& bytes) {
    std::filesystem::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << bytes;
  }

  const std::filesystem::path root_ = testing::ScratchPath("drives");
  const std::filesystem::path site_ = testing::ScratchPath("site");
  const std::filesystem::path d_ = root_ / "d";

 private:
  std::string savedRoot_;
};

}  // namespace corvane::scripting
