// The stack table: names found exactly or ignoring case only within a bucket, a refused second create, and
// deletion. The `stack` command's operations and messages run in the library/stacks scenario.
#include <gtest/gtest.h>

#include <string>

#include "host/nametable.h"
#include "library/stacks.h"

namespace {

TEST(StackTable, CreateFindDelete) {
  const size_t before = Stacks_Count();
  NamedStack* made = Stacks_Create("unit_stack");
  ASSERT_NE(made, nullptr);
  made->push_back("bottom");
  made->push_back("top");
  EXPECT_EQ(Stacks_Find("unit_stack"), made);
  EXPECT_EQ(Stacks_Create("unit_stack"), nullptr);  // refused, and the stack there keeps its entries
  ASSERT_EQ(Stacks_Find("unit_stack")->size(), 2u);
  EXPECT_EQ(Stacks_Find("unit_stack")->back(), "top");
  EXPECT_EQ(Stacks_Count(), before + 1);
  Stacks_Delete("unit_stack");
  EXPECT_EQ(Stacks_Find("unit_stack"), nullptr);
  Stacks_Delete("unit_stack");  // a name that is none: nothing
  EXPECT_EQ(Stacks_Count(), before);
  ASSERT_NE(Stacks_Create("unit_stack"), nullptr);  // a new stack of an old name starts empty
  EXPECT_TRUE(Stacks_Find("unit_stack")->empty());
  Stacks_Delete("unit_stack");
}

TEST(StackTable, CaseCountsThroughTheHash) {
  const uint32_t mask = NameTable<int>::kBuckets - 1;
  ASSERT_NE(NameTable<int>::Hash("UnitCase") & mask, NameTable<int>::Hash("unitcase") & mask);
  ASSERT_NE(Stacks_Create("UnitCase"), nullptr);
  EXPECT_EQ(Stacks_Find("unitcase"), nullptr);
  ASSERT_NE(Stacks_Create("unitcase"), nullptr);
  EXPECT_NE(Stacks_Find("unitcase"), Stacks_Find("UnitCase"));
  Stacks_Delete("UnitCase");
  EXPECT_NE(Stacks_Find("unitcase"), nullptr);
  Stacks_Delete("unitcase");
}

// Two names that differ only in case and share a bucket: compared ignoring case there, they are one stack.
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
