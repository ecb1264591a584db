// Handle tables: handles name live objects only, and a full table refuses instead of letting a slot spill
// into the serial.
#include <gtest/gtest.h>

#include <vector>

#include "tier1/handletable.h"

namespace {

// Four slot bits: sixteen objects at most, so the limit is in reach.
using SmallTable = HandleTable<int, 4>;

}  // namespace

TEST(HandleTable, HandlesNameLiveObjectsOnly) {
  HandleTable<int> table;
  int a = 1, b = 2;
  auto ha = table.Add(&a);
  auto hb = table.Add(&b);
  EXPECT_EQ(table.Get(ha), &a);
  EXPECT_EQ(table.Get(hb), &b);
  table.Remove(ha);
  EXPECT_EQ(table.Get(ha), nullptr);
  auto hc = table.Add(&a);  // takes a's slot again, with a new serial
  EXPECT_NE(hc, ha);
  EXPECT_EQ(table.Get(ha), nullptr);
  EXPECT_EQ(table.Get(hc), &a);
  for (uint64_t typed : {0ull, 1ull, 2ull, 42ull, (1ull << 24) - 1})  // serial 0: nobody's
    EXPECT_EQ(table.Get(typed), nullptr) << typed;
  table.Remove(12345);  // unknown: ignored
  EXPECT_EQ(table.LiveCount(), 2u);
  auto hn = table.Add(nullptr);  // a handle of a null object is there, and gives null
  EXPECT_TRUE(table.Contains(hn));
  EXPECT_EQ(table.Get(hn), nullptr);
  EXPECT_FALSE(table.Contains(ha));
}

TEST(HandleTable, AFullTableRefusesAndKeepsEveryHandle) {
  SmallTable table;
  std::vector<int> objects(SmallTable::kMaxSlots + 1);
  std::vector<SmallTable::Handle> handles;
  for (size_t i = 0; i < SmallTable::kMaxSlots; ++i) handles.push_back(table.Add(&objects[i]));
  EXPECT_EQ(table.Add(&objects.back()), SmallTable::kNone);  // one more would spill into the serial
  for (size_t i = 0; i < handles.size(); ++i) {
    ASSERT_NE(handles[i], SmallTable::kNone);
    EXPECT_EQ(table.Get(handles[i]), &objects[i]) << i;
  }
  table.Remove(handles[3]);
  SmallTable::Handle again = table.Add(&objects.back());
  EXPECT_NE(again, SmallTable::kNone);
  EXPECT_EQ(table.Get(again), &objects.back());
  EXPECT_EQ(table.Get(handles[3]), nullptr);
}

TEST(HandleTable, ALimitBelowTheSlotBitsIsKept) {
  HandleTable<int> table;
  table.LimitSlots(2);
  int a = 0, b = 0, c = 0;
  EXPECT_NE(table.Add(&a), table.kNone);
  auto hb = table.Add(&b);
  EXPECT_EQ(table.Add(&c), table.kNone);
  table.Remove(hb);
  EXPECT_NE(table.Add(&c), table.kNone);
}

TEST(HandleTable, ARunOutOfSerialsRefuses) {
  HandleTable<int, 60> table;  // four bits of serial: 15 handles over the table's life
  int a = 0;
  for (int i = 0; i < 15; ++i) {
    auto h = table.Add(&a);
    ASSERT_NE(h, table.kNone) << i;
    table.Remove(h);
  }
  EXPECT_EQ(table.Add(&a), table.kNone);
}
