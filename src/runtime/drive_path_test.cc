// Drive paths mapped onto folders under CORVANE_DRIVE_ROOT: letters, separators, climbing (76), stray
// ":" (52), relative paths, trailing separators, and the setting read on every call.
#include "corvane/drive_path.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "runtime_test_support.h"

namespace corvane {

TEST(DrivePath, MapsLettersAndRelativePathsAndRefusesWhatLeavesTheirFolder) {
  setenv("CORVANE_DRIVE_ROOT", "/srv/corvane/drives", 1);
  const std::string d = "/srv/corvane/drives/d", cwd = std::filesystem::current_path().lexically_normal();
  // Only the letter changes case; a trailing separator stays, so that the path still names a folder.
  // Leaving the drive folder or the working folder is refused (76), as are rooted paths: they name no drive.
  // clang-format off
  const struct { std::string path, mapped; } cases[] = {
      {"d:\\up\\a.txt", d + "/up/a.txt"}, {"D:\\up\\a.txt", d + "/up/a.txt"},
      {"c:/Up/B.TXT", "/srv/corvane/drives/c/Up/B.TXT"}, {"d:\\up/sub\\a.txt", d + "/up/sub/a.txt"},
      {"d:", d}, {"d:\\", d + "/"}, {"d:\\up\\", d + "/up/"}, {"d:up\\a.txt", d + "/up/a.txt"},
      {"d:\\\\up\\\\\\a.txt", d + "/up/a.txt"}, {"d:\\.\\up\\.\\a.txt", d + "/up/a.txt"},
      {"d:\\up\\x\\..\\a.txt", d + "/up/a.txt"}, {"d:\\up\\..", d}, {"up\\a.txt", cwd + "/up/a.txt"},
      {"./up/../b.txt", cwd + "/b.txt"}, {"up\\", cwd + "/up/"}, {".", cwd}, {"d:\\..", "#76"},
      {"d:\\up\\..\\..\\d\\x", "#76"}, {"d:..\\..\\etc\\passwd", "#76"}, {"c:\\a\\b\\..\\..\\..\\", "#76"},
      {"..", "#76"}, {"up/../../x", "#76"}, {"/etc/passwd", "#76"}, {"\\up\\a.txt", "#76"},
      {"\\\\server\\share\\a", "#76"}, {"", "#76"}, {"1:\\a", "#52"}, {"d:\\a:b", "#52"},
      {std::string("d:\\a\0b", 6), "#52"},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(testing::Outcome([&] { return MapDrivePath(c.path); }), c.mapped) << c.path;
  // The setting is read on every call and made absolute; unset or empty, it is ./drives. It is left
  // unset: nothing else in this program maps drive paths.
  // clang-format off
  const struct { const char* root; std::string mapped; } roots[] = {
      {"/tmp/other//root/", "/tmp/other/root/e/f"}, {"rel/drives", cwd + "/rel/drives/e/f"},
      {"", cwd + "/drives/e/f"}, {nullptr, cwd + "/drives/e/f"},
  };
  // clang-format on
  for (const auto& c : roots) {
    c.root ? setenv("CORVANE_DRIVE_ROOT", c.root, 1) : unsetenv("CORVANE_DRIVE_ROOT");
    EXPECT_EQ(MapDrivePath("e:\\f"), c.mapped);
  }
}

}  // namespace corvane
