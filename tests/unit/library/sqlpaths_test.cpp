// The SQL confinement: paths that try to leave the server root through "..", absolute paths, symbolic
// links and URIs, against a root built for the test, and ATTACH through a real connection's authorizer.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "../script/script_fixture.h"
#include "library/sqlpaths.h"

namespace fs = std::filesystem;

namespace {

// A server root and a folder beside it, with links out of the root and inside it:
//   <base>/root/game/cfg/            <base>/outside/
//   root/game/out -> <base>/outside  root/game/in -> cfg (relative)  root/game/up -> ../..
//   root/game/loop -> loop2 -> loop  root/game/lost.db -> <base>/outside/x.db  root/game/new.db -> cfg/n.db
class SqlPathTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    char folder[] = "/tmp/tw-sqlpaths.XXXXXX";
    s_base = fs::canonical(mkdtemp(folder)).string();
    fs::create_directories(s_base + "/root/game/cfg");
    fs::create_directories(s_base + "/outside");
    const std::string game = s_base + "/root/game";
    fs::create_directory_symlink(s_base + "/outside", game + "/out");
    fs::create_directory_symlink("cfg", game + "/in");
    fs::create_directory_symlink("../..", game + "/up");
    fs::create_symlink("loop2", game + "/loop");
    fs::create_symlink("loop", game + "/loop2");
    fs::create_symlink(s_base + "/outside/x.db", game + "/lost.db");
    fs::create_symlink("cfg/n.db", game + "/new.db");
  }
  static void TearDownTestSuite() { fs::remove_all(s_base); }

  static std::string Root() { return s_base + "/root"; }
  static std::string s_base;
};
std::string SqlPathTest::s_base;

struct PathCase {
  const char* path;      // below the root, as composed (absolute once the root is put in front)
  const char* resolved;  // below the root; null when refused
  const char* reason;    // when refused
};

const char kOutside[] = "the path leads out of the server's folder";

TEST_F(SqlPathTest, ComposedPathsStayInsideTheRoot) {
  const PathCase cases[] = {
      {"/game/cfg/./tw_data.sqldb", "/game/cfg/tw_data.sqldb", nullptr},
      {"/game/cfg//x.db", "/game/cfg/x.db", nullptr},
      {"/game/cfg/../cfg/x.db", "/game/cfg/x.db", nullptr},
      {"/game/cfg/missing/x.db", "/game/cfg/missing/x.db", nullptr},  // SQLite's own failure later
      {"/game/cfg/missing/../x.db", "/game/cfg/x.db", nullptr},       // as SQLite itself resolves it
      {"/game/in/x.db", "/game/cfg/x.db", nullptr},
      {"/game/new.db", "/game/cfg/n.db", nullptr},  // a link to a file not made yet, inside
      {"/game/../x.db", "/x.db", nullptr},          // the root itself is inside
      {"/game/cfg/../../../x.db", nullptr, kOutside},
      {"/game/cfg/missing/../../../../x.db", nullptr, kOutside},
      {"/game/out/x.db", nullptr, kOutside},
      {"/game/up/outside/x.db", nullptr, kOutside},
      {"/game/lost.db", nullptr, kOutside},
      {"/game/loop/x.db", nullptr, "the path passes too many symbolic links"},
  };
  for (const PathCase& c : cases) {
    SqlPathCheck check = Sql_ConfinePath(Root(), Root() + c.path);
    if (c.resolved) {
      EXPECT_TRUE(check.allowed) << c.path << ": " << (check.reason ? check.reason : "");
      EXPECT_EQ(check.path, Root() + c.resolved) << c.path;
    } else {
      EXPECT_FALSE(check.allowed) << c.path << " gave " << check.path;
      EXPECT_STREQ(check.reason, c.reason) << c.path;
    }
  }
  // A sibling whose name starts with the root's is not inside it.
  EXPECT_FALSE(Sql_ConfinePath(Root(), Root() + "2/x.db").allowed);
  EXPECT_FALSE(Sql_ConfinePath(Root(), "/etc/passwd").allowed);
  EXPECT_STREQ(Sql_ConfinePath("", Root() + "/x.db").reason, "the server's folder can't be found");
}

TEST_F(SqlPathTest, DoSqlPathsAreMemoryOrRelativeToTheRoot) {
  const char kNotRelative[] = "the path must be relative to the server's folder";
  const char kUri[] = "URIs are not accepted";
  const PathCase cases[] = {
      {":memory:", ":memory:", nullptr},
      {":MEMORY:", ":memory:", nullptr},
      {"game/cfg/x.db", "/game/cfg/x.db", nullptr},
      {"x.db", "/x.db", nullptr},
      {"../x.db", nullptr, kOutside},
      {"game/../../x.db", nullptr, kOutside},
      {"game/out/x.db", nullptr, kOutside},
      {"/tmp/x.db", nullptr, kNotRelative},
      {"file:x.db", nullptr, kUri},
      {"FILE:///tmp/x.db?mode=rwc", nullptr, kUri},
  };
  for (const PathCase& c : cases) {
    SqlPathCheck check = Sql_ConfineRelative(Root(), c.path);
    if (c.resolved) {
      EXPECT_TRUE(check.allowed) << c.path;
      EXPECT_EQ(check.path, c.resolved[0] == '/' ? Root() + c.resolved : c.resolved) << c.path;
    } else {
      EXPECT_FALSE(check.allowed) << c.path;
      EXPECT_STREQ(check.reason, c.reason) << c.path;
    }
  }
}

// ---- ATTACH through the authorizer, against the shared server's root ----

class SqlAttachTest : public ScriptTest {};

TEST_F(SqlAttachTest, AttachAndVacuumIntoStayInsideTheRoot) {
  const std::string root = fs::canonical(Shared().Root()).string();
  ASSERT_EQ(Sql_ServerRoot(), root);
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
  sqlite3_set_authorizer(db, Sql_Authorize, nullptr);
  auto run = [db](const std::string& sql) { return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr); };
  ASSERT_EQ(run("create table t(a); insert into t values(1)"), SQLITE_OK);
  const std::string inside = root + "/game/cfg/attached.db";
  EXPECT_EQ(run("attach '" + inside + "' as a"), SQLITE_OK);
  EXPECT_EQ(run("attach ':memory:' as m"), SQLITE_OK);
  EXPECT_EQ(run("attach '' as temporary"), SQLITE_OK);
  EXPECT_EQ(run("vacuum into '" + root + "/game/cfg/copy.db'"), SQLITE_OK);
  EXPECT_TRUE(fs::exists(root + "/game/cfg/copy.db"));

  const std::string outside = root + "/../tw-attach-outside.db";
  EXPECT_EQ(run("attach '" + outside + "' as o"), SQLITE_AUTH);
  EXPECT_EQ(run("attach 'file:" + inside + "' as u"), SQLITE_AUTH);            // no URIs
  EXPECT_EQ(run("attach '" + root + "/game/' || 'x.db' as e"), SQLITE_AUTH);   // computed names can't be checked
  EXPECT_EQ(run("vacuum into '" + outside + "'"), SQLITE_AUTH);
  EXPECT_FALSE(fs::exists(outside));
  // A relative name counts from the working directory, where SQLite opens it.
  const std::string here = fs::current_path().string();
  const bool hereInside = here.rfind(root, 0) == 0;
  EXPECT_EQ(run("attach 'tw-attach-relative.db' as r"), hereInside ? SQLITE_OK : SQLITE_AUTH);
  sqlite3_close(db);
  fs::remove(root + "/game/cfg/copy.db");
}

}  // namespace
