// The KeyValues tree: lookups by name and path, typed values, child lists, copies, handles.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KeyValues.h"
#include "memfs.h"

TEST(KeyValuesTree, FindKeyCreatesPathsAndClearsParentValue) {
  TreeGuard root(new KeyValues("root"));
  root->SetString("a", "text");
  KeyValues* b = root->FindKey("a/b", true);
  ASSERT_NE(b, nullptr);
  EXPECT_STREQ(b->GetName(), "b");
  EXPECT_EQ(root->GetDataType("a"), KeyValues::TYPE_NONE);
  EXPECT_EQ(root->FindKey("a/b"), b);
  EXPECT_EQ(root->FindKey("a/c"), nullptr);
  EXPECT_EQ(root->FindKey(""), root.kv);
  EXPECT_EQ(root->FindKey(nullptr), root.kv);
}

TEST(KeyValuesTree, NamesAreSymbolsIgnoringCase) {
  TreeGuard root(new KeyValues("root"));
  KeyValues* k = root->CreateKey("MixedCaseName");
  EXPECT_EQ(root->FindKey("mixedcasename"), k);
  EXPECT_EQ(root->FindKey("MIXEDCASENAME"), k);
}

TEST(KeyValuesTree, OverlongPathPartIsNotFound) {
  TreeGuard root(new KeyValues("root"));
  std::string path(300, 'x');
  path += "/y";
  EXPECT_EQ(root->FindKey(path.c_str(), true), nullptr);
  EXPECT_EQ(root->GetFirstSubKey(), nullptr);
}

TEST(KeyValuesTree, DuplicateNamesKeepBothAndFindTheFirst) {
  TreeGuard root(new KeyValues("root"));
  KeyValues* first = root->CreateKey("dup");
  KeyValues* second = root->CreateKey("dup");
  EXPECT_NE(first, second);
  EXPECT_EQ(root->FindKey("dup"), first);
  EXPECT_EQ(first->GetNextKey(), second);
}

TEST(KeyValuesTree, TypedGettersAndConversions) {
  TreeGuard root(new KeyValues("root"));
  root->SetInt("i", 42);
  root->SetFloat("f", 2.5f);
  root->SetString("s", "17abc");
  EXPECT_EQ(root->GetInt("f"), 2);
  EXPECT_FLOAT_EQ(root->GetFloat("i"), 42.0f);
  EXPECT_EQ(root->GetInt("s"), 17);
  EXPECT_EQ(root->GetInt("missing", 9), 9);
  EXPECT_STREQ(root->GetString("missing", "dflt"), "dflt");
  // Reading an int as text turns the key into a string key.
  EXPECT_STREQ(root->GetString("i"), "42");
  EXPECT_EQ(root->GetDataType("i"), KeyValues::TYPE_STRING);
  EXPECT_STREQ(root->GetString("f"), "2.500000");
  // A node with children reads as the default for text and 0 for numbers.
  root->FindKey("parent/child", true);
  EXPECT_STREQ(root->GetString("parent", "d"), "d");
  EXPECT_EQ(root->GetInt("parent", 5), 0);
  EXPECT_FALSE(root->IsEmpty("parent"));
  EXPECT_TRUE(root->IsEmpty("nothing"));
}

TEST(KeyValuesTree, SetStringOfItsOwnText) {
  TreeGuard root(new KeyValues("root"));
  root->SetString("s", "value");
  KeyValues* s = root->FindKey("s");
  s->SetString(nullptr, s->GetString());
  EXPECT_STREQ(root->GetString("s"), "value");
}

TEST(KeyValuesTree, TrueSubKeysAndValuesAreSeparateWalks) {
  TreeGuard root(new KeyValues("root"));
  root->SetString("v1", "x");
  root->FindKey("k1", true);
  root->SetInt("v2", 2);
  root->FindKey("k2/inner", true);
  std::string keys, values;
  for (KeyValues* k = root->GetFirstTrueSubKey(); k; k = k->GetNextTrueSubKey()) keys += k->GetName();
  for (KeyValues* v = root->GetFirstValue(); v; v = v->GetNextValue()) values += v->GetName();
  EXPECT_EQ(keys, "k1k2");
  EXPECT_EQ(values, "v1v2");
}

TEST(KeyValuesTree, RemoveSubKeyUnlinksWithoutDestroying) {
  TreeGuard root(new KeyValues("root"));
  KeyValues* a = root->CreateKey("a");
  KeyValues* b = root->CreateKey("b");
  KeyValues* c = root->CreateKey("c");
  root->RemoveSubKey(b);
  EXPECT_EQ(a->GetNextKey(), c);
  EXPECT_EQ(b->GetNextKey(), nullptr);
  root->RemoveSubKey(a);
  EXPECT_EQ(root->GetFirstSubKey(), c);
  a->deleteThis();
  b->deleteThis();
}

TEST(KeyValuesTree, MakeCopyIsDeepAndKeepsOrderWithoutPeers) {
  TreeGuard root(new KeyValues("root"));
  KeyValues* group = root->CreateKey("group");
  root->CreateKey("after");
  group->SetString("a", "1");
  group->SetInt("b", 2);
  group->FindKey("c/d", true)->SetFloat(nullptr, 3.5f);
  TreeGuard copy(group->MakeCopy());
  EXPECT_STREQ(copy->GetName(), "group");
  EXPECT_EQ(copy->GetNextKey(), nullptr);
  EXPECT_STREQ(copy->GetString("a"), "1");
  EXPECT_EQ(copy->GetInt("b"), 2);
  EXPECT_FLOAT_EQ(copy->GetFloat("c/d"), 3.5f);
  group->SetString("a", "changed");
  EXPECT_STREQ(copy->GetString("a"), "1");
  std::string order;
  for (KeyValues* k = copy->GetFirstSubKey(); k; k = k->GetNextKey()) order += k->GetName();
  EXPECT_EQ(order, "abc");
}

TEST(KeyValuesTree, RecursiveCopyBringsPeersAndKeepsTheDestinationsOwn) {
  TreeGuard src(new KeyValues("first"));
  src->SetInt("n", 5);
  KeyValues* srcPeer = new KeyValues("second");
  srcPeer->SetFloat("f", 1.5f);
  src->SetNextKey(srcPeer);

  TreeGuard list(new KeyValues("list"));
  KeyValues* dest = list->CreateKey("dest");
  dest->SetString("old", "gone");
  list->CreateKey("kept");

  dest->RecursiveCopyKeyValues(*src.kv);
  std::string order;
  for (KeyValues* k = list->GetFirstSubKey(); k; k = k->GetNextKey()) order += std::string(k->GetName()) + ",";
  EXPECT_EQ(order, "first,second,kept,");
  EXPECT_EQ(dest->FindKey("old"), nullptr);
  EXPECT_EQ(dest->GetInt("n"), 5);
  // Copied numbers also carry their text.
  EXPECT_STREQ(list->FindKey("second")->GetString("f"), "1.500000");
}

TEST(KeyValuesTree, HandlesNameLiveNodesOnly) {
  KeyValues* root = new KeyValues("root");
  KeyValues* child = root->CreateKey("child");
  uint64_t h = child->GetHandle();
  EXPECT_EQ(child->GetHandle(), h);
  EXPECT_EQ(KeyValues::FromHandle(h), child);
  EXPECT_EQ(KeyValues::FromHandle(0), nullptr);
  EXPECT_EQ(KeyValues::FromHandle(12345), nullptr);
  EXPECT_EQ(KeyValues::FromHandle(h + (uint64_t(1) << 24)), nullptr);
  root->deleteThis();
  EXPECT_EQ(KeyValues::FromHandle(h), nullptr);
  // A new node in the same slot gets a new handle; the old one stays dead.
  KeyValues* other = new KeyValues("other");
  uint64_t h2 = other->GetHandle();
  EXPECT_NE(h2, h);
  EXPECT_EQ(KeyValues::FromHandle(h), nullptr);
  other->deleteThis();
}

TEST(KeyValuesTree, DeletingALongListDoesNotRecurseOnPeers) {
  TreeGuard root(new KeyValues("root"));
  KeyValues* last = root->CreateKey("0");
  for (int i = 1; i < 200000; ++i) {
    KeyValues* k = new KeyValues("k");
    last->SetNextKey(k);
    last = k;
  }
}

TEST(KeyValuesTree, CreateNewKeyTakesOneAboveTheLargestNumber) {
  const struct {
    std::vector<const char*> children;
    const char* next;
  } cases[] = {
      {{}, "1"},
      {{"1"}, "2"},
      {{"7", "name", "3"}, "8"},  // a name that is not a number counts as 0
      {{"2147483647"}, "2147483648"},
      {{"2147483647", "5"}, "2147483648"},
      {{"2147483648"}, "2147483649"},
      {{"-2147483648", "-7"}, "1"},
      {{"9223372036854775807"}, "9223372036854775807"},  // no number beyond: the largest stays
      {{"99999999999999999999"}, "9223372036854775807"},
  };
  for (const auto& c : cases) {
    TreeGuard root(new KeyValues("root"));
    for (const char* name : c.children) root->CreateKey(name);
    EXPECT_STREQ(root->CreateNewKey()->GetName(), c.next) << c.next;
  }
}

TEST(KeyValuesTree, ValueTextsOfEveryLengthRoundTrip) {
  // Across the size classes of short texts and beyond them, set over each other and copied.
  TreeGuard root(new KeyValues("root"));
  for (size_t n = 0; n < 200; ++n) {
    std::string text(n, char('a' + n % 26));
    root->SetString("t", text.c_str());
    ASSERT_EQ(root->GetString("t"), text);
    root->SetString(("k" + std::to_string(n)).c_str(), text.c_str());
  }
  TreeGuard copy(root->MakeCopy());
  for (size_t n = 0; n < 200; n += 7)
    EXPECT_EQ(copy->GetString(("k" + std::to_string(n)).c_str()), std::string(n, char('a' + n % 26)));
}
