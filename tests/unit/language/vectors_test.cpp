// Vector strings and the vector commands.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "host/engine_surface.h"
#include "language_fixture.h"
#include "vphysics.h"
#include "library/vectors.h"

namespace {

class VectorsTest : public LanguageTest {
protected:
  void SetUp() override {
    LanguageTest::SetUp();
    MakeVars({"vec", "vx", "vy", "vz"});
  }
};

TEST(VectorStrings, FormatAndNonFiniteComponents) {
  EXPECT_STREQ(VectorToString(Vector(1, 2.5f, -3)).text, "1.000000,2.500000,-3.000000");
  EXPECT_STREQ(VectorToString(Vector(std::numeric_limits<float>::infinity(), 0, 0)).text, "0.0,0.0,0.0");
  EXPECT_STREQ(VectorToString(Vector(1, 2, std::nanf(""))).text, "0.0,0.0,0.0");
}

TEST(VectorStrings, ReadingAcceptsBlanksAfterCommas) {
  Vector v = AllocVectorFromString("1, 2,\t3");
  EXPECT_EQ(v, Vector(1, 2, 3));
  EXPECT_EQ(AllocVectorFromString(nullptr), Vector());
}

TEST_F(VectorsTest, CreateVectorString) {
  Run("tw_createvectorstring vec 1 2 3");
  EXPECT_EQ(Var("vec"), "1.000000,2.000000,3.000000");
}

TEST_F(VectorsTest, CreateVectorFromPointsGoesFromAToB) {
  Run("tw_createvectorfrompoints vec 1,1,1 2,3,4");
  EXPECT_EQ(Var("vec"), "1.000000,2.000000,3.000000");
}

TEST_F(VectorsTest, SplitStoresTheComponents) {
  Run("tw_xsplitvectorstring vx vy vz 1.5,-2,3");
  EXPECT_EQ(Var("vx"), "1.500000");
  EXPECT_EQ(Var("vy"), "-2.000000");
  EXPECT_EQ(Var("vz"), "3.000000");
}

TEST_F(VectorsTest, BadStringStoresZerosAfterTheMessage) {
  Set("vx", "9");
  std::string out = Run("tw_splitvectorstring vx vy vz 1,2");
  EXPECT_EQ(out, "AllocVectorFromString: invalid string format\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Incorrect arguments");
  EXPECT_EQ(Var("vx"), "0");
  EXPECT_EQ(Var("vy"), "0");
  EXPECT_EQ(Var("vz"), "0");
}

TEST_F(VectorsTest, RefusedStoreStopsTheSplit) {
  Set("vx", "9");
  std::string out = Run("tw_xsplitvectorstring vx vec_missing vz 1,2,3");
  EXPECT_NE(out.find("The var \"vec_missing\" could not be set\n"), std::string::npos) << out;
  EXPECT_EQ(Var("vx"), "1.000000");
  EXPECT_EQ(Var("vz"), "");
}

TEST_F(VectorsTest, InfinityGivesTheZeroText) {
  Run("tw_createvectorstring vec 1e39 2 3");
  EXPECT_EQ(Var("vec"), "0.0,0.0,0.0");
}

TEST_F(VectorsTest, GravityOfTheFirstEnvironment) {
  Vector gravity;
  physics->GetActiveEnvironmentByIndex(0)->GetGravity(&gravity);
  Run("tw_getgravityvector vec");
  EXPECT_EQ(Var("vec"), VectorToString(gravity).text);
  EXPECT_EQ(Run("tw_xgetgravityvector 3"), "No physics environment.\n");
}

TEST_F(VectorsTest, UsageLines) {
  EXPECT_EQ(Run("tw_xcreatevectorstring vec 1 2"), "Syntax: tw_xcreatevectorstring <output-var> <x> <y> <z>\n");
  EXPECT_EQ(Run("tw_splitvectorstring a b c"), "Syntax: tw_splitvectorstring <var x> <var y> <var z> <vectorstring>\n");
}

}  // namespace
