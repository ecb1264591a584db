// The game event manager: declarations, force, listener order, duplicates, typed reads, forged events.
#include <gtest/gtest.h>

#include <string>

#include "output_capture.h"
#include "test_server.h"

namespace {

struct Recorder : IGameEventListener2 {
  Recorder(std::string& log, const char* tag) : log(log), tag(tag) {}
  void FireGameEvent(IGameEvent* e) override { log += tag + (":" + std::string(e->GetName())) + " "; }
  std::string& log;
  std::string tag;
};

class GameEventsTest : public ::testing::Test {
protected:
  TestServer server;  // its game declares player_death, round_start and more, and nobody listens
  CGameEventManager& events = server.Server().Events();
  std::string log;
};

TEST_F(GameEventsTest, DeclaredEventsCarryTypedFieldsAndOnlyHeardOnesAreMadeUnlessForced) {
  EventDescriptor* d = events.FindDescriptor("PLAYER_DEATH");
  ASSERT_NE(d, nullptr);
  ASSERT_EQ(d->fields.size(), 4u);
  EXPECT_EQ(d->fields[0].first, "userid");
  EXPECT_EQ(d->fields[0].second, EventFieldType::Short);
  EXPECT_EQ(d->fields[3].second, EventFieldType::Bool);
  EXPECT_EQ(events.LoadEventsFromFile("resource/missing.res"), 0);
  EXPECT_EQ(events.CreateEvent("nothing", true), nullptr);
  EXPECT_EQ(events.CreateEvent("round_start", false), nullptr);
  IGameEvent* forced = events.CreateEvent("round_start", true);
  ASSERT_NE(forced, nullptr);
  events.FreeEvent(forced);
  EXPECT_EQ(events.LiveEvents(), 0u);
}

TEST_F(GameEventsTest, ListenersHearInRegistrationOrderOnceAndMayLeaveDuringDelivery) {
  struct Remover : IGameEventListener2 {
    CGameEventManager* events = nullptr;
    IGameEventListener2* victim = nullptr;
    void FireGameEvent(IGameEvent*) override { events->RemoveListener(victim); }
  } remover;
  Recorder a(log, "a"), b(log, "b");
  events.AddListener(&b, "player_death", true);
  events.AddListener(&a, "player_death", true);
  events.AddListener(&b, "player_death", true);
  EXPECT_TRUE(events.FireEvent(events.CreateEvent("player_death")));
  EXPECT_EQ(log, "b:player_death a:player_death ");
  remover.events = &events;
  remover.victim = &a;
  events.AddListener(&remover, "round_start", true);
  events.AddListener(&a, "round_start", true);
  events.FireEvent(events.CreateEvent("round_start"));
  EXPECT_EQ(log, "b:player_death a:player_death ");
  EXPECT_FALSE(events.FindListener(&a, "player_death"));
  EXPECT_TRUE(events.FindListener(&b, "player_death"));
  events.RemoveListener(&b);
  events.RemoveListener(&remover);
  EXPECT_EQ(events.LiveEvents(), 0u);
}

TEST_F(GameEventsTest, ValuesReadBackInAnyTypeAndNoKeyNamesNothing) {
  IGameEvent* e = events.CreateEvent("player_death", true);
  e->SetInt("userid", 7);
  e->SetString("weapon", "42abc");
  e->SetFloat("speed", 2.5f);
  EXPECT_STREQ(e->GetString("userid"), "7");
  EXPECT_EQ(e->GetInt("weapon"), 42);
  EXPECT_EQ(e->GetInt("speed"), 2);
  EXPECT_FLOAT_EQ(e->GetFloat("userid"), 7.0f);
  EXPECT_TRUE(e->GetBool("userid"));
  EXPECT_EQ(e->GetInt("missing", -3), -3);
  EXPECT_STREQ(e->GetString("missing", "dflt"), "dflt");
  EXPECT_STREQ(e->GetString("missing", nullptr), "");
  events.FreeEvent(e);
  e = events.CreateEvent("round_start", true);
  e->SetInt(nullptr, 5);
  e->SetString("", "x");
  EXPECT_TRUE(e->IsEmpty());
  EXPECT_EQ(e->GetInt(nullptr, 9), 9);
  events.FreeEvent(e);
}

TEST_F(GameEventsTest, DuplicatesAreOwnedByTheCallerAndFreedEventsAreRefused) {
  IGameEvent* e = events.CreateEvent("player_death", true);
  e->SetInt("userid", 3);
  e->SetString("tw_event", "player_death");
  IGameEvent* copy = events.DuplicateEvent(e);
  EXPECT_TRUE(events.FireEvent(e));  // fired events are freed, heard or not
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetInt("userid"), 3);
  EXPECT_STREQ(copy->GetString("tw_event"), "player_death");
  EXPECT_EQ(events.LiveEvents(), 1u);
  events.FreeEvent(copy);
  EXPECT_EQ(events.LiveEvents(), 0u);
  OutputCapture out;
  events.FreeEvent(copy);
  EXPECT_FALSE(events.FireEvent(copy));
  EXPECT_EQ(events.DuplicateEvent(copy), nullptr);
  events.FreeEvent(nullptr);
  EXPECT_FALSE(events.FireEvent(nullptr));
  EXPECT_TRUE(out.Contains("isn't live"));
}

}  // namespace
