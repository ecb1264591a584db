// Vector strings: their format, non-finite components and the blanks reading accepts. The vector commands
// run in the language_vectors scenario.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "library/vectors.h"

namespace {

TEST(VectorStrings, FormatAndNonFiniteComponents) {
  EXPECT_STREQ(VectorToString(Vector(1, 2.5f, -3)).text, "1.000000,2.500000,-3.000000");
  EXPECT_STREQ(VectorToString(Vector(std::numeric_limits<float>::infinity(), 0, 0)).text, "0.0,0.0,0.0");
  EXPECT_STREQ(VectorToString(Vector(1, 2, std::nanf(""))).text, "0.0,0.0,0.0");
}

TEST(VectorStrings, ReadingAcceptsBlanksAfterCommas) {
  EXPECT_EQ(AllocVectorFromString("1, 2,\t3"), Vector(1, 2, 3));
  EXPECT_EQ(AllocVectorFromString(nullptr), Vector());
}

}  // namespace
