// The game event manager: declarations, force, listener order, duplicates, typed reads.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "files.h"
#include "gameevents.h"
#include "output_capture.h"

namespace fs = std::filesystem;

namespace {

struct Recorder : IGameEventListener2 {
  std::vector<std::string>* log;
  std::string tag;
  Recorder(std::vector<std::string>* l, std::string t) : log(l), tag(std::move(t)) {}
  void FireGameEvent(IGameEvent* e) override { log->push_back(tag + ":" + e->GetName()); }
};

class GameEventsTest : public ::testing::Test {
protected:
  void SetUp() override {
    std::string pattern = fs::temp_directory_path().string() + "/tw-ev-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root = pattern;
    fs::create_directories(root + "/game/resource");
    std::ofstream(root + "/game/resource/test.res")
        << "\"test\"\n{\n \"player_death\"\n {\n  \"userid\" \"short\"\n  \"weapon\" \"string\"\n }\n"
           " \"round_start\"\n {\n }\n}\n";
    files = std::make_unique<CFileSystem>(root + "/game");
    events = std::make_unique<CGameEventManager>(files.get());
    ASSERT_EQ(events->LoadEventsFromFile("resource/test.res"), 2);
  }
  void TearDown() override {
    events.reset();
    files.reset();
    fs::remove_all(root);
  }
  std::string root;
  std::unique_ptr<CFileSystem> files;
  std::unique_ptr<CGameEventManager> events;
  std::vector<std::string> log;
};

TEST_F(GameEventsTest, DeclarationsCarryTypedFields) {
  EventDescriptor* d = events->FindDescriptor("PLAYER_DEATH");
  ASSERT_NE(d, nullptr);
  ASSERT_EQ(d->fields.size(), 2u);
  EXPECT_EQ(d->fields[0].first, "userid");
  EXPECT_EQ(d->fields[0].second, EventFieldType::Short);
  EXPECT_EQ(events->LoadEventsFromFile("resource/missing.res"), 0);
}

TEST_F(GameEventsTest, UndeclaredOrUnheardEventsAreNotCreatedUnlessForced) {
  EXPECT_EQ(events->CreateEvent("nothing", true), nullptr);
  EXPECT_EQ(events->CreateEvent("round_start", false), nullptr);
  IGameEvent* forced = events->CreateEvent("round_start", true);
  ASSERT_NE(forced, nullptr);
  events->FreeEvent(forced);
  EXPECT_EQ(events->LiveEvents(), 0u);
}

TEST_F(GameEventsTest, ListenersHearInRegistrationOrderOnce) {
  Recorder a(&log, "a"), b(&log, "b");
  events->AddListener(&b, "player_death", true);
  events->AddListener(&a, "player_death", true);
  events->AddListener(&b, "player_death", true);
  EXPECT_TRUE(events->FindListener(&a, "player_death"));
  EXPECT_TRUE(events->FireEvent(events->CreateEvent("player_death")));
  EXPECT_EQ(log, (std::vector<std::string>{"b:player_death", "a:player_death"}));
  EXPECT_EQ(events->LiveEvents(), 0u);
}

TEST_F(GameEventsTest, RemovingAListenerWhileAnEventIsDeliveredIsSafe) {
  struct Remover : IGameEventListener2 {
    CGameEventManager* events;
    IGameEventListener2* victim;
    void FireGameEvent(IGameEvent*) override { events->RemoveListener(victim); }
  };
  Recorder r(&log, "r");
  Remover remover;
  remover.events = events.get();
  remover.victim = &r;
  events->AddListener(&remover, "round_start", true);
  events->AddListener(&r, "round_start", true);
  events->FireEvent(events->CreateEvent("round_start"));
  EXPECT_TRUE(log.empty());
  EXPECT_FALSE(events->FindListener(&r, "round_start"));
}

TEST_F(GameEventsTest, ValuesReadBackInAnyType) {
  IGameEvent* e = events->CreateEvent("player_death", true);
  e->SetInt("userid", 7);
  e->SetString("weapon", "42abc");
  e->SetFloat("speed", 2.5f);
  e->SetBool("extra_flag", true);
  EXPECT_STREQ(e->GetString("userid"), "7");
  EXPECT_EQ(e->GetInt("weapon"), 42);
  EXPECT_EQ(e->GetInt("speed"), 2);
  EXPECT_FLOAT_EQ(e->GetFloat("userid"), 7.0f);
  EXPECT_TRUE(e->GetBool("extra_flag"));
  EXPECT_EQ(e->GetInt("missing", -3), -3);
  EXPECT_STREQ(e->GetString("missing", "dflt"), "dflt");
  EXPECT_STREQ(e->GetString("missing", nullptr), "");
  EXPECT_TRUE(e->IsEmpty("missing"));
  EXPECT_FALSE(e->IsEmpty());
  EXPECT_STREQ(e->GetName(), "player_death");
  events->FreeEvent(e);
}

TEST_F(GameEventsTest, DuplicatesCarryEveryKeyAndAreOwnedByTheCaller) {
  Recorder r(&log, "r");
  events->AddListener(&r, "player_death", true);
  IGameEvent* e = events->CreateEvent("player_death");
  e->SetInt("userid", 3);
  e->SetString("tw_event", "player_death");
  IGameEvent* copy = events->DuplicateEvent(e);
  events->FireEvent(e);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetInt("userid"), 3);
  EXPECT_STREQ(copy->GetString("tw_event"), "player_death");
  EXPECT_EQ(events->LiveEvents(), 1u);
  events->FreeEvent(copy);
  EXPECT_EQ(events->LiveEvents(), 0u);
}

TEST_F(GameEventsTest, ForgedOrFreedEventsAreRefused) {
  OutputCapture out;
  IGameEvent* e = events->CreateEvent("round_start", true);
  events->FreeEvent(e);
  events->FreeEvent(e);
  EXPECT_FALSE(events->FireEvent(e));
  EXPECT_EQ(events->DuplicateEvent(e), nullptr);
  events->FreeEvent(nullptr);
  EXPECT_FALSE(events->FireEvent(nullptr));
  EXPECT_TRUE(out.Contains("isn't live"));
}

TEST_F(GameEventsTest, NullAndEmptyKeysNameNothing) {
  IGameEvent* e = events->CreateEvent("round_start", true);
  e->SetInt(nullptr, 5);
  e->SetString("", "x");
  EXPECT_TRUE(e->IsEmpty());
  EXPECT_EQ(e->GetInt(nullptr, 9), 9);
  events->FreeEvent(e);
}

}  // namespace
