#include "corvane/drive_path.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "corvane/error.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

int ErrorNumber(std::string_view path) {
  try {
    MapDrivePath(path);
  } catch (const Error& e) {
    return e.Number();
  }
  return 0;
}

// Sets CORVANE_DRIVE_ROOT for one test and restores it afterwards.
class DrivePath : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* old = std::getenv("CORVANE_DRIVE_ROOT");
    hadRoot_ = old != nullptr;
    if (hadRoot_) oldRoot_ = old;
    setenv("CORVANE_DRIVE_ROOT", "/srv/corvane/drives", 1);
  }
  void TearDown() override {
    if (hadRoot_)
      setenv("CORVANE_DRIVE_ROOT", oldRoot_.c_str(), 1);
    else
      unsetenv("CORVANE_DRIVE_ROOT");
  }
  static std::string Cwd() { return fs::current_path().lexically_normal().string(); }

 private:
  bool hadRoot_ = false;
  std::string oldRoot_;
};

TEST_F(DrivePath, DriveLettersMapToFoldersUnderTheRoot) {
  struct Case {
    const char* path;
    const char* mapped;
  } cases[] = {
      {"d:\\up\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"D:\\up\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"c:/Up/B.TXT", "/srv/corvane/drives/c/Up/B.TXT"},  // only the letter changes case
      {"d:\\up/sub\\a.txt", "/srv/corvane/drives/d/up/sub/a.txt"},
      {"d:", "/srv/corvane/drives/d"},
      {"d:\\", "/srv/corvane/drives/d/"},
      {"d:\\up\\", "/srv/corvane/drives/d/up/"},
      {"d:up\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"d:\\\\up\\\\\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"d:\\.\\up\\.\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"d:\\up\\x\\..\\a.txt", "/srv/corvane/drives/d/up/a.txt"},
      {"d:\\up\\..", "/srv/corvane/drives/d"},
  };
  for (const auto& c : cases) EXPECT_EQ(MapDrivePath(c.path), c.mapped) << c.path;
}

TEST_F(DrivePath, LeavingTheDriveFolderIsRefused) {
  for (const char* path : {"d:\\..", "d:\\..\\e\\a.txt", "d:\\up\\..\\..\\d\\x", "d:..\\..\\etc\\passwd",
                           "d:/up/../../a", "d:\\up\\.\\..\\..", "c:\\a\\b\\..\\..\\..\\"})
    EXPECT_EQ(ErrorNumber(path), 76) << path;
}

TEST_F(DrivePath, PathsWithoutADriveLetter) {
  EXPECT_EQ(ErrorNumber("/etc/passwd"), 76);
  EXPECT_EQ(ErrorNumber("\\up\\a.txt"), 76);
  EXPECT_EQ(ErrorNumber("\\\\server\\share\\a"), 76);
  EXPECT_EQ(ErrorNumber(""), 76);
  EXPECT_EQ(ErrorNumber("1:\\a"), 52);
  EXPECT_EQ(ErrorNumber("d:\\a:b"), 52);
  EXPECT_EQ(ErrorNumber(std::string("d:\\a\0b", 6)), 52);
}

TEST_F(DrivePath, RelativePathsStayInTheWorkingFolder) {
  const std::string cwd = Cwd();
  EXPECT_EQ(MapDrivePath("up\\a.txt"), cwd + "/up/a.txt");
  EXPECT_EQ(MapDrivePath("./up/../b.txt"), cwd + "/b.txt");
  EXPECT_EQ(MapDrivePath("up\\"), cwd + "/up/");
  EXPECT_EQ(MapDrivePath("."), cwd);
  EXPECT_EQ(ErrorNumber(".."), 76);
  EXPECT_EQ(ErrorNumber("..\\..\\etc"), 76);
  EXPECT_EQ(ErrorNumber("up/../../x"), 76);
}

TEST_F(DrivePath, RootIsReadOnEveryCallAndMadeAbsolute) {
  setenv("CORVANE_DRIVE_ROOT", "/tmp/other//root/", 1);
  EXPECT_EQ(MapDrivePath("e:\\f"), "/tmp/other/root/e/f");
  setenv("CORVANE_DRIVE_ROOT", "rel/drives", 1);
  EXPECT_EQ(DriveRoot(), Cwd() + "/rel/drives");
  EXPECT_EQ(MapDrivePath("d:\\x"), Cwd() + "/rel/drives/d/x");
  unsetenv("CORVANE_DRIVE_ROOT");
  EXPECT_EQ(DriveRoot(), Cwd() + "/drives");
  setenv("CORVANE_DRIVE_ROOT", "", 1);
  EXPECT_EQ(DriveRoot(), Cwd() + "/drives");
}

}  // namespace
}  // namespace corvane
