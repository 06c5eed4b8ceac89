#include "upload/file_store.h"

#include <gtest/gtest.h>

#include "corvane/error.h"
#include "upload/upload_test_support.h"
#include "test_support.h"

namespace corvane::upload {
namespace {

using testing::ReadFile;
using testing::ScratchDrives;
using testing::WriteFile;
namespace fs = std::filesystem;

using corvane::testing::ErrorNumber;

TEST(FileStore, WritesFromTheStartWithoutTruncating) {
  ScratchDrives drives;
  const std::string local = (drives.Up() / "a.bin").string();
  WriteFileFromStart(local, "first version, long");
  EXPECT_EQ(ReadFile(local), "first version, long");
  WriteFileFromStart(local, "SECOND");
  EXPECT_EQ(ReadFile(local), "SECONDversion, long");
  WriteFileFromStart(local, "");
  EXPECT_EQ(ReadFile(local), "SECONDversion, long");
  WriteFileFromStart((drives.Up() / "empty").string(), "");
  EXPECT_TRUE(LocalFileExists((drives.Up() / "empty").string()));
}

TEST(FileStore, OpenFailuresRaiseThePlatformsFileErrors) {
  ScratchDrives drives;
  EXPECT_EQ(ErrorNumber([&] { WriteFileFromStart(drives.Up().string() + "/", "x"); }), 75);  // a folder
  EXPECT_EQ(ErrorNumber([&] { WriteFileFromStart((drives.Up() / "no" / "x").string(), "x"); }), 76);
  EXPECT_EQ(ErrorNumber([&] { WriteFileFromStart(drives.Up().string() + std::string("/a\0b", 4), "x"); }), 52);
  EXPECT_FALSE(LocalFileExists(drives.Up().string()));
  EXPECT_FALSE(LocalFileExists(drives.Up().string() + std::string("/a\0b", 4)));
}

TEST(FileStore, SaveFileAddsTheBackslashToTheCallersFolder) {
  ScratchDrives drives;
  std::string folder = "d:\\up";
  EXPECT_TRUE(SaveFile(folder, "a.txt", "one", 1, ""));
  EXPECT_EQ(folder, "d:\\up\\");
  EXPECT_TRUE(SaveFile(folder, "b.txt", "two", 1, ""));
  EXPECT_EQ(folder, "d:\\up\\");
  EXPECT_EQ(ReadFile(drives.Up() / "a.txt"), "one");
  EXPECT_EQ(ReadFile(drives.Up() / "b.txt"), "two");
}

TEST(FileStore, NewFileNameReplacesTheName) {
  ScratchDrives drives;
  std::string folder = "D:/up/";
  EXPECT_TRUE(SaveFile(folder, "client.txt", "data", 1, "fixed.txt"));
  EXPECT_EQ(folder, "D:/up/\\");
  EXPECT_EQ(ReadFile(drives.Up() / "fixed.txt"), "data");
  EXPECT_FALSE(fs::exists(drives.Up() / "client.txt"));
}

TEST(FileStore, ARewriteOfTheSameDataIsSkipped) {
  ScratchDrives drives;
  const std::string body = "0123456789";
  std::string_view whole(body), part = whole.substr(0, 3);
  WriteLog log;
  std::string folder = "d:\\up\\";
  EXPECT_TRUE(SaveFile(folder, "a", whole, 2, "", &log));
  WriteFile(drives.Up() / "a", "changed by someone else");
  EXPECT_TRUE(SaveFile(folder, "a", whole, 2, "", &log));  // the same data again: skipped
  EXPECT_EQ(ReadFile(drives.Up() / "a"), "changed by someone else");
  EXPECT_TRUE(SaveFile(folder, "a", part, 2, "", &log));  // other data: written
  EXPECT_EQ(ReadFile(drives.Up() / "a"), "012nged by someone else");
  fs::remove(drives.Up() / "a");
  EXPECT_TRUE(SaveFile(folder, "a", part, 2, "", &log));  // gone: written again
  EXPECT_EQ(ReadFile(drives.Up() / "a"), "012");
}

}  // namespace
}  // namespace corvane::upload
