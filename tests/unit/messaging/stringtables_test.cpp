// String tables: tw_stringtable leaves the tables locked or open exactly as it found them. (The sounds and
// stringtables scenarios show sounds precached before anything is checked, and adds as a user sees them.)
#include <gtest/gtest.h>

#include "eiface.h"
#include "host/engine_surface.h"
#include "iservices.h"
#include "messaging_fixture.h"

namespace {

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
}

}  // namespace
