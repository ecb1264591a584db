// The stack table: two names that differ only in case and share a bucket are one stack. Creating, a refused
// second create, other-case names in other buckets and deletion run in the library/stacks scenario.
#include <gtest/gtest.h>

#include <string>

#include "host/nametable.h"
#include "library/stacks.h"

namespace {

// 33 to the 64th is 1 modulo 2048, so flipping the case of letters 64 places apart in opposite directions
// leaves the 16 bits of the bucket alone.
TEST(StackTable, NamesOfOneBucketCompareIgnoringCase) {
  const std::string middle(63, 'x');
  const std::string first = "A" + middle + "b", second = "a" + middle + "B";
  const uint32_t mask = NameTable<int>::kBuckets - 1;
  ASSERT_EQ(NameTable<int>::Hash(first.c_str()) & mask, NameTable<int>::Hash(second.c_str()) & mask);
  NamedStack* made = Stacks_Create(first.c_str());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(Stacks_Find(second.c_str()), made);
  EXPECT_EQ(Stacks_Create(second.c_str()), nullptr);
  Stacks_Delete(second.c_str());
  EXPECT_EQ(Stacks_Find(first.c_str()), nullptr);
}

}  // namespace
