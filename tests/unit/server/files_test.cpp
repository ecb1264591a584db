// The file system's path rules, the cost of a file test, and its refusals: bad modes, folders, missing
// files, forged and closed handles. Reading lines and writing files as scripts see them are in the
// scenarios library/mexec and keygroups/files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "files.h"
#include "test_server.h"

// Every allocation of the binary is counted, so that a test can show a path of the code makes none. The
// sanitizer build keeps its own allocator.
#ifndef TW_SANITIZE
namespace {
size_t g_allocations = 0;
}
void* operator new(size_t size) {
  ++g_allocations;
  if (void* p = malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { free(p); }
void operator delete(void* p, size_t) noexcept { free(p); }
#endif

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
      {"cfg/" + std::string(FILES_MAX_PATH, 'a'), ""},  // longer than a path may be
      {"cfg/" + std::string(FILES_MAX_PATH, 'a') + "/../../a.cfg", ""},
      {root + "/game", "/game"},
      {root + "x/game/cfg", ""},  // a sibling whose name starts with the root's
  };
  for (const auto& c : cases) {
    std::string out;
    bool resolved = files->ResolvePath(c.path.c_str(), out);
    EXPECT_EQ(resolved ? out : "", c.resolved.empty() ? "" : root + c.resolved) << c.path.substr(0, 80);
  }
  std::string out;
  EXPECT_FALSE(files->ResolvePath(nullptr, out));
  EXPECT_TRUE(files->FileExists("../hl2/resource/serverevents.res"));
  EXPECT_EQ(files->Open("../../outside.txt", "w"), FILESYSTEM_INVALID_HANDLE);
}

// An event nobody wants costs one file test: it must not allocate.
TEST_F(FileSystemTest, AFileTestAllocatesNothing) {
#ifdef TW_SANITIZE
  GTEST_SKIP() << "allocations are counted in the release build";
#else
  const char* paths[] = {"cfg/tidewright/player_death.cfg", "cfg/autoexec.cfg", "../hl2/resource/gameevents.res",
                         "../../outside.cfg", "cfg\\..\\cfg\\server.cfg"};
  bool found[std::size(paths)] = {};
  size_t before = g_allocations;
  for (size_t i = 0; i < std::size(paths); ++i) found[i] = files->FileExists(paths[i]);
  size_t made = g_allocations - before;
  EXPECT_EQ(made, 0u);
  EXPECT_FALSE(found[0]);
  EXPECT_TRUE(found[1] && found[2] && found[4]);
  EXPECT_FALSE(found[3]);
#endif
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
