// The stand-in's side of world access: physics objects that move and sleep, the Wake and Sleep inputs, a
// fresh environment per level; voice as people hear it; the answers to queries; a client console's echo.
#include <gtest/gtest.h>

#include <string>

#include "vphysics.h"
#include "world_fixture.h"

namespace {

class ContractTest : public WorldTest {
protected:
  IPhysicsEnvironment* Env() { return Iface<IPhysics>("VPhysics030")->GetActiveEnvironmentByIndex(0); }
  IPhysicsObject* Body(int index) { return World().EntityAt(index)->Physics(); }
  Vector Origin(int index) { return World().EntityAt(index)->fields.origin; }
  // A physics prop made by player 2 at the origin; gives its index.
  int MakeProp() {
    server.Run("sim_client 2 prop_physics_create crate");
    return Engine().GetEntityCount() - 1;
  }
  void SetUp() override { server.Run("sim_connect Alice\nsv_cheats 1"); }
};

TEST_F(ContractTest, AnAwakeObjectMovesByItsVelocityEachFrame) {
  int crate = MakeProp();
  const float tick = server.Server().Clock().Globals()->interval_per_tick;
  Vector start = Origin(crate);
  Vector velocity(tick > 0 ? 1.0f / tick : 0, 0, -2.0f / tick);
  Body(crate)->SetVelocity(&velocity, nullptr);
  long long before = World().FrameNumber();
  server.Run("sim_frames 10");
  const float frames = float(World().FrameNumber() - before);
  EXPECT_GE(frames, 10);
  EXPECT_NEAR(Origin(crate).x - start.x, frames, 1e-3);
  EXPECT_NEAR(Origin(crate).z - start.z, -2 * frames, 1e-3);
  EXPECT_NE(Edict(crate)->m_fStateFlags & FL_EDICT_CHANGED, 0);
  Body(crate)->ApplyForceCenter(Vector(0, 500, 0));  // mass 50: +10 units a second
  Vector after;
  Body(crate)->GetVelocity(&after, nullptr);
  EXPECT_EQ(after, velocity + Vector(0, 10, 0));
}

TEST_F(ContractTest, QuietObjectsSleepWithoutVelocityAndInputsWakeAndSleepThem) {
  int crate = MakeProp();
  Vector velocity(1, 0, 0);
  Body(crate)->SetVelocity(&velocity, nullptr);
  server.Run("sim_frames " + std::to_string(PHYSICS_SLEEP_FRAMES + 5));
  EXPECT_TRUE(Body(crate)->IsAsleep());
  Vector now;
  Body(crate)->GetVelocity(&now, nullptr);
  EXPECT_EQ(now, Vector());
  Vector resting = Origin(crate);
  server.Run("sim_frames 3");
  EXPECT_EQ(Origin(crate), resting);
  server.Run("ent_fire " + std::to_string(crate) + " Wake");
  EXPECT_FALSE(Body(crate)->IsAsleep());
  server.Run("ent_fire " + std::to_string(crate) + " Sleep");
  EXPECT_TRUE(Body(crate)->IsAsleep());
  EXPECT_EQ(Env()->GetActiveObjectCount(), 0);
}

TEST_F(ContractTest, EachLevelHasAFreshEnvironment) {
  MakeProp();
  struct Handler : IPhysicsObjectEvent {
    void ObjectWake(IPhysicsObject*) override {}
    void ObjectSleep(IPhysicsObject*) override {}
  } handler;
  Env()->SetGravity(Vector(1, 2, 3));
  Env()->SetAirDensity(9);
  Env()->SetObjectEventHandler(&handler);
  server.Run("map second");
  Vector gravity;
  Env()->GetGravity(&gravity);
  EXPECT_EQ(gravity, Vector(0, 0, -600));
  EXPECT_EQ(Env()->GetAirDensity(), 2.0f);
  EXPECT_EQ(Env()->GetActiveObjectCount(), 0);
  EXPECT_EQ(server.Run("sim_physics"), "No physics objects\n");
  server.Run("sim_frames 2");  // the old handler would be called here if the environment kept it
}

TEST_F(ContractTest, SimPhysicsListsObjectsInOrderOfMaking) {
  int first = MakeProp();
  int second = MakeProp();
  Body(first)->SetMass(20);
  EXPECT_EQ(server.Run("sim_physics"), "#" + std::to_string(first) +
                                           " prop_physics awake origin 0,0,0 velocity 0,0,0 mass 20\n#" +
                                           std::to_string(second) +
                                           " prop_physics awake origin 0,0,0 velocity 0,0,0 mass 50\n");
}

TEST_F(ContractTest, VoiceReachesThePeopleWhoHear) {
  server.Run("sim_connect Bob\nsim_addbot Bot\nsim_connect Cy");  // userids 3, 4, 5 in slots 2, 3, 4
  auto* voice = Iface<IVoiceServer>("VoiceServer001");
  EXPECT_EQ(server.Run("sim_voice 2"), "> voice to 3,5: from 2\n");
  voice->SetClientListening(2, 1, false);
  voice->SetClientListening(4, 1, false);
  EXPECT_EQ(server.Run("sim_voice 2"), "");
  EXPECT_EQ(server.Run("sim_voice 4"), "sim_voice: \"Bot\" is a bot; bots don't talk\n");
}

TEST_F(ContractTest, QueriesAnswerWithTheirStatus) {
  Plugin().Take();
  struct Case {
    const char* name;
    int status;
    const char* value;
  };
  const Case cases[] = {{"cl_cmdrate", eQueryCvarValueStatus_ValueIntact, "66"},
                        {"RCON_PASSWORD", eQueryCvarValueStatus_CvarProtected, ""},
                        {"password", eQueryCvarValueStatus_CvarProtected, ""},
                        {"menuselect", eQueryCvarValueStatus_NotACvar, ""},
                        {"say_team", eQueryCvarValueStatus_NotACvar, ""},
                        {"nothing", eQueryCvarValueStatus_CvarNotFound, ""}};
  auto* helpers = Iface<IServerPluginHelpers>("ISERVERPLUGINHELPERS001");
  for (const Case& c : cases) {
    QueryCvarCookie_t cookie = helpers->StartQueryCvarValue(Edict(1), c.name);
    server.Run("sim_frames 1");
    EXPECT_EQ(Plugin().Take(), "Query " + std::to_string(cookie) + " " + std::to_string(c.status) + " " + c.name +
                                   "=" + c.value + " @1\n");
  }
}

TEST_F(ContractTest, AClientConsoleEchoesItselfAndSendsNothing) {
  Plugin().Take();
  EXPECT_EQ(server.Run("sim_client 2 \"echo  one  two;echo\""), "> echo to 2: \"one  two\"\n> echo to 2: \"\"\n");
  EXPECT_EQ(Plugin().Take(), "");
}

}  // namespace
