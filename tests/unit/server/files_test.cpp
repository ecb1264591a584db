// The file system's path rules and file operations.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "files.h"

namespace fs = std::filesystem;

namespace {

class FileSystemTest : public ::testing::Test {
protected:
  void SetUp() override {
    std::string pattern = fs::temp_directory_path().string() + "/tw-fs-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root = pattern;
    fs::create_directories(root + "/game/cfg");
    fs::create_directories(root + "/hl2/resource");
    std::ofstream(root + "/game/cfg/a.cfg") << "line one\nline two\n";
    std::ofstream(root + "/hl2/resource/x.res") << "x";
    files = std::make_unique<CFileSystem>(root + "/game");
  }
  void TearDown() override {
    files.reset();
    fs::remove_all(root);
  }
  std::string root;
  std::unique_ptr<CFileSystem> files;
};

TEST(PathNormalising, DropsEmptyAndDotPartsAndClimbs) {
  std::string out;
  ASSERT_TRUE(NormalisePath("cfg//packs/./x.cfg", out));
  EXPECT_EQ(out, "cfg/packs/x.cfg");
  ASSERT_TRUE(NormalisePath("/a/b/../c", out));
  EXPECT_EQ(out, "/a/c");
  EXPECT_FALSE(NormalisePath("a/../../b", out));
}

TEST_F(FileSystemTest, PathsAreRelativeToTheModAndMayReachSiblings) {
  std::string path;
  ASSERT_TRUE(files->ResolvePath("cfg//a.cfg", path));
  EXPECT_EQ(path, root + "/game/cfg/a.cfg");
  EXPECT_TRUE(files->FileExists("../hl2/resource/x.res"));
  EXPECT_TRUE(files->FileExists("cfg\\a.cfg"));
}

TEST_F(FileSystemTest, PathsNeverLeaveTheRoot) {
  std::string path;
  EXPECT_FALSE(files->ResolvePath("../../etc/passwd", path));
  EXPECT_FALSE(files->ResolvePath("/etc/passwd", path));
  EXPECT_FALSE(files->ResolvePath("", path));
  EXPECT_FALSE(files->ResolvePath(nullptr, path));
  EXPECT_TRUE(files->ResolvePath((root + "/game/cfg/a.cfg").c_str(), path));
  EXPECT_EQ(files->Open("../../outside.txt", "w"), FILESYSTEM_INVALID_HANDLE);
}

TEST_F(FileSystemTest, ReadsWholeFilesAndLines) {
  FileHandle_t f = files->Open("cfg/a.cfg", "rb");
  ASSERT_NE(f, FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Size(f), 18u);
  char line[64];
  EXPECT_STREQ(files->ReadLine(line, sizeof line, f), "line one\n");
  EXPECT_FALSE(files->EndOfFile(f));
  EXPECT_STREQ(files->ReadLine(line, sizeof line, f), "line two\n");
  EXPECT_TRUE(files->EndOfFile(f));
  EXPECT_EQ(files->ReadLine(line, sizeof line, f), nullptr);
  files->Close(f);
  EXPECT_EQ(files->OpenCount(), 0u);
}

TEST_F(FileSystemTest, WritesAndAppends) {
  FileHandle_t f = files->Open("cfg/new.txt", "w");
  ASSERT_NE(f, FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Write("abc", 3, f), 3);
  files->Close(f);
  f = files->Open("cfg/new.txt", "ab");
  files->Write("de", 2, f);
  EXPECT_EQ(files->Size(f), 5u);
  files->Close(f);
  EXPECT_GT(files->GetFileTime("cfg/new.txt"), 0);
}

TEST_F(FileSystemTest, WritingIntoAMissingFolderFails) {
  EXPECT_EQ(files->Open("nofolder/x.txt", "w"), FILESYSTEM_INVALID_HANDLE);
}

TEST_F(FileSystemTest, RefusesBadModesFoldersAndMissingFiles) {
  EXPECT_EQ(files->Open("cfg/a.cfg", "x"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg/a.cfg", nullptr), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg", "r"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg/none.cfg", "r"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_FALSE(files->FileExists("cfg"));
  EXPECT_EQ(files->GetFileTime("cfg/none.cfg"), 0);
}

TEST_F(FileSystemTest, ForgedAndClosedHandlesAreRefused) {
  FileHandle_t f = files->Open("cfg/a.cfg", "r");
  files->Close(f);
  char buf[8];
  EXPECT_EQ(files->Read(buf, sizeof buf, f), 0);
  EXPECT_EQ(files->Size(f), 0u);
  files->Close(f);
  FileHandle_t forged = reinterpret_cast<FileHandle_t>(uintptr_t(12345));
  EXPECT_EQ(files->Write("x", 1, forged), 0);
  EXPECT_TRUE(files->EndOfFile(forged));
}

TEST_F(FileSystemTest, OpenFilesCloseWithTheFileSystem) {
  files->Open("cfg/a.cfg", "r");
  EXPECT_EQ(files->OpenCount(), 1u);
  files.reset();
}

}  // namespace
