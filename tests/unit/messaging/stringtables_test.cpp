// Sounds and string tables: the sound is precached before any other test, and tw_stringtable leaves the
// tables locked or open exactly as it found them.
#include <gtest/gtest.h>

#include <string>

#include "eiface.h"
#include "host/engine_surface.h"
#include "iservices.h"
#include "messaging_fixture.h"

namespace {

TEST_F(MessagingTest, EverySoundCommandPrecachesBeforeItChecksAnything) {
  INetworkStringTable* sounds = networkstringtable->FindTable("soundprecache");
  ASSERT_NE(sounds, nullptr);
  const char* lines[] = {"tw_emitsound nowhere 1 test/a.wav 1 1", "tw_emitsound player 999 test/b.wav 1 1",
                         "tw_emitsound entity 0 test/c.wav 1 1", "tw_playsound 0 test/d.wav 1",
                         "tw_playsound 999 test/e.wav 1"};
  const char* samples[] = {"test/a.wav", "test/b.wav", "test/c.wav", "test/d.wav", "test/e.wav"};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(sounds->FindStringIndex(samples[i]), INVALID_STRING_INDEX) << samples[i];
    std::string out = Run(lines[i]);
    EXPECT_NE(sounds->FindStringIndex(samples[i]), INVALID_STRING_INDEX) << lines[i];
    EXPECT_EQ(out.find("> sound"), std::string::npos) << lines[i];  // nothing played
  }
}

TEST_F(MessagingTest, AddingAStringLeavesTheLockAsItWas) {
  INetworkStringTable* downloads = networkstringtable->FindTable("downloadables");
  ASSERT_NE(downloads, nullptr);
  const bool levelLock = engine->LockNetworkStringTables(true);
  EXPECT_TRUE(levelLock);  // a level has started
  Run("tw_stringtable downloadables locked/one.txt");
  EXPECT_NE(downloads->FindStringIndex("locked/one.txt"), INVALID_STRING_INDEX);
  EXPECT_TRUE(engine->LockNetworkStringTables(false));  // still locked after the add
  Run("tw_stringtable downloadables open/two.txt");
  EXPECT_NE(downloads->FindStringIndex("open/two.txt"), INVALID_STRING_INDEX);
  EXPECT_FALSE(engine->LockNetworkStringTables(levelLock));  // still open after the add
  // A string that is there: success, and nothing is added.
  const int count = downloads->GetNumStrings();
  Set("tidewright_debug", "1");
  EXPECT_EQ(RunQuiet("tw_stringtable downloadables locked/one.txt"),
            "Added string: locked/one.txt to table downloadables\n");
  EXPECT_EQ(downloads->GetNumStrings(), count);
}

}  // namespace
