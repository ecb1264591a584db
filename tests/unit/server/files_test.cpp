// The file system's path rules and file operations, forged and closed handles included.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "files.h"
#include "test_server.h"

namespace {

// A file system of its own over a server root: game/ (the mod) and hl2/ beside it.
class FileSystemTest : public ::testing::Test {
protected:
  TestServer server;
  std::string root = server.Root();
  std::unique_ptr<CFileSystem> files = std::make_unique<CFileSystem>(server.GameDir());
};

TEST_F(FileSystemTest, PathsAreRelativeToTheModAndNeverLeaveTheRoot) {
  const struct {
    std::string path, resolved;  // resolved under the root; "" when refused
  } cases[] = {
      {"cfg//a.cfg", "/game/cfg/a.cfg"},
      {"cfg\\.\\a.cfg", "/game/cfg/a.cfg"},
      {"../hl2/resource/gameevents.res", "/hl2/resource/gameevents.res"},
      {"cfg/../../hl2", "/hl2"},
      {root + "/game/cfg/autoexec.cfg", "/game/cfg/autoexec.cfg"},
      {"../../etc/passwd", ""},
      {"/etc/passwd", ""},
      {"/../etc/passwd", ""},  // climbs above the start of the path
      {"", ""},
  };
  for (const auto& c : cases) {
    std::string out;
    bool resolved = files->ResolvePath(c.path.c_str(), out);
    EXPECT_EQ(resolved ? out : "", c.resolved.empty() ? "" : root + c.resolved) << c.path;
  }
  std::string out;
  EXPECT_FALSE(files->ResolvePath(nullptr, out));
  EXPECT_TRUE(files->FileExists("../hl2/resource/serverevents.res"));
  EXPECT_EQ(files->Open("../../outside.txt", "w"), FILESYSTEM_INVALID_HANDLE);
}

TEST_F(FileSystemTest, WritesAppendsAndReads) {
  FileHandle_t f = files->Open("cfg/new.txt", "w");
  EXPECT_EQ(files->Write("abc", 3, f), 3);
  files->Close(f);
  f = files->Open("cfg/new.txt", "ab");
  files->Write("de\nf", 4, f);
  files->Close(f);
  f = files->Open("cfg/new.txt", "rb");
  EXPECT_EQ(files->Size(f), 7u);
  char line[64];
  EXPECT_STREQ(files->ReadLine(line, sizeof line, f), "abcde\n");
  EXPECT_FALSE(files->EndOfFile(f));
  EXPECT_EQ(files->Read(line, sizeof line, f), 1);
  EXPECT_TRUE(files->EndOfFile(f));
  files->Close(f);
  EXPECT_EQ(files->OpenCount(), 0u);
}

TEST_F(FileSystemTest, RefusesBadModesFoldersMissingFilesAndForgedHandles) {
  EXPECT_EQ(files->Open("cfg/autoexec.cfg", "x"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg/autoexec.cfg", nullptr), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg", "r"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("cfg/none.cfg", "r"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_EQ(files->Open("nofolder/x.txt", "w"), FILESYSTEM_INVALID_HANDLE);
  EXPECT_FALSE(files->FileExists("cfg"));
  EXPECT_EQ(files->GetFileTime("cfg/none.cfg"), 0);
  FileHandle_t f = files->Open("cfg/autoexec.cfg", "r");
  files->Close(f);
  char buf[8];
  EXPECT_EQ(files->Read(buf, sizeof buf, f), 0);
  EXPECT_EQ(files->Size(f), 0u);
  files->Close(f);
  FileHandle_t forged = reinterpret_cast<FileHandle_t>(uintptr_t(12345));
  EXPECT_EQ(files->Write("x", 1, forged), 0);
  EXPECT_TRUE(files->EndOfFile(forged));
  files->Open("cfg/autoexec.cfg", "r");
  EXPECT_EQ(files->OpenCount(), 1u);
  files.reset();  // the sanitizer build sees a leaked FILE
}

}  // namespace
