// The physics handler's life: "start" makes every waking object get a push upward, a second start replaces
// the handler, Unload takes it out of the environment.
#include <gtest/gtest.h>

#include <string>

#include "vphysics.h"
#include "worldaccess_fixture.h"
#include "world/physics.h"

namespace {

class PhysicsTest : public WorldAccessTest {
protected:
  void SetUp() override {
    WorldAccessTest::SetUp();
    int userid = Connect("Builder");
    Run("sv_cheats 1\nsim_client " + std::to_string(userid) + " prop_physics_create crate");
    m_index = engine->GetEntityCount() - 1;
    m_body = SimWorld().EntityAt(m_index)->Physics();
    ASSERT_NE(m_body, nullptr);
  }
  void TearDown() override {
    Physics_OnUnload();
    Run("sv_cheats 0");
    if (CEntity* crate = SimWorld().EntityAt(m_index)) SimWorld().RemoveEntity(*crate);
    WorldAccessTest::TearDown();
  }
  // Puts the crate to sleep and wakes it again; gives its velocity afterwards.
  Vector SleepAndWake() {
    Run("ent_fire " + std::to_string(m_index) + " Sleep\nent_fire " + std::to_string(m_index) + " Wake");
    Vector velocity;
    m_body->GetVelocity(&velocity, nullptr);
    return velocity;
  }
  int m_index = 0;
  IPhysicsObject* m_body = nullptr;
};

TEST_F(PhysicsTest, AStartedHandlerPushesWakingObjectsUpUntilUnload) {
  EXPECT_EQ(SleepAndWake(), Vector());
  Run("tw_xphysics start");
  EXPECT_EQ(SleepAndWake(), Vector(0, 0, 2));  // 100 over the mass of 50
  Run("tw_xphysics start");
  EXPECT_EQ(SleepAndWake(), Vector(0, 0, 2));
  Physics_OnUnload();
  EXPECT_EQ(SleepAndWake(), Vector());
}

}  // namespace
