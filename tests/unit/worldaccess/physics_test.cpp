// The physics handler's life: "start" makes every waking object get a push upward, a second start replaces
// the handler, Unload takes it out of the environment. (The physics scenario shows the push as a user sees it.)
#include <gtest/gtest.h>

#include <string>

#include "vphysics.h"
#include "worldaccess_fixture.h"
#include "world/physics.h"

namespace {

class PhysicsTest : public WorldAccessTest {
protected:
  void TearDown() override {
    Physics_OnUnload();
    Run("sv_cheats 0");
    if (CEntity* crate = m_index ? SimWorld().EntityAt(m_index) : nullptr) SimWorld().RemoveEntity(*crate);
    WorldAccessTest::TearDown();
  }
  int m_index = 0;
};

TEST_F(PhysicsTest, AStartedHandlerPushesWakingObjectsUpUntilUnload) {
  Run("sv_cheats 1\nsim_client " + std::to_string(Connect("Builder")) + " prop_physics_create crate");
  m_index = engine->GetEntityCount() - 1;
  IPhysicsObject* body = SimWorld().EntityAt(m_index)->Physics();
  ASSERT_NE(body, nullptr);
  // Puts the crate to sleep and wakes it again; gives its velocity afterwards.
  auto sleepAndWake = [&] {
    Run("ent_fire " + std::to_string(m_index) + " Sleep\nent_fire " + std::to_string(m_index) + " Wake");
    Vector velocity;
    body->GetVelocity(&velocity, nullptr);
    return velocity;
  };
  EXPECT_EQ(sleepAndWake(), Vector());
  Run("tw_xphysics start");
  EXPECT_EQ(sleepAndWake(), Vector(0, 0, 2));  // 100 over the mass of 50
  Run("tw_xphysics start");
  EXPECT_EQ(sleepAndWake(), Vector(0, 0, 2));
  Physics_OnUnload();
  EXPECT_EQ(sleepAndWake(), Vector());
}

}  // namespace
