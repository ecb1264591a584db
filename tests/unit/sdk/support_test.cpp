// The support library that the engine and plugins share: output of any length, the key name table and the
// key nodes' memory, the Q_ text helpers, random numbers, and TW_ASSERT.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "output_capture.h"
#include "tier0.h"
#include "vstdlib.h"

TEST(SupportOutput, LongMessagesAreNotCut) {
  OutputCapture out;
  std::string big(5000, 'y');
  Msg("%s", big.c_str());
  EXPECT_EQ(out.Text(), big);
}

TEST(SupportText, AtoiReadsSignsHexAndGivesZeroForText) {
  EXPECT_EQ(Q_atoi("42"), 42);
  EXPECT_EQ(Q_atoi("-17abc"), -17);
  EXPECT_EQ(Q_atoi("0x1F"), 31);
  EXPECT_EQ(Q_atoi("abc"), 0);
  EXPECT_EQ(Q_atoi(""), 0);
  EXPECT_EQ(Q_atoi(nullptr), 0);
}

// Slices from the end and replacements, with their cut, are in the scenario library/strings; a range that
// ends before it starts is only reached here.
TEST(SupportText, ReversedSliceIsEmpty) {
  char out[32] = "left over";
  Q_StrSlice("abc", 2, 1, out, sizeof out);
  EXPECT_STREQ(out, "");
}

// Cutting at the whole separator, ignoring case, and dropping empty pieces are shown by the scenario
// library/strings; here the empty texts and separators.
TEST(SupportText, SplitOfEmptyTextsAndSeparators) {
  struct Case {
    const char* text;
    const char* separator;
    std::vector<std::string> pieces;
  };
  const Case cases[] = {
      {",,,", ",", {}},
      {"", ",", {}},
      {"one", "", {"one"}},
      {"", "", {}},
      {"abc", "abcd", {"abc"}},
  };
  for (const Case& c : cases) {
    std::vector<std::string> parts{"left over"};
    Q_SplitString(c.text, c.separator, parts);
    EXPECT_EQ(parts, c.pieces) << '"' << c.text << "\" by \"" << c.separator << '"';
  }
}

TEST(SupportText, SnprintfAlwaysEndsInsideTheBuffer) {
  char out[4];
  EXPECT_EQ(Q_snprintf(out, sizeof out, "%s", "abcdef"), 3);
  EXPECT_STREQ(out, "abc");
}

TEST(SupportRandom, SeededStreamsRepeatAndStayInRange) {
  RandomSeed(7);
  int a = RandomInt(1, 1000);
  RandomSeed(7);
  EXPECT_EQ(RandomInt(1, 1000), a);
  for (int i = 0; i < 1000; ++i) {
    int v = RandomInt(-3, 3);
    EXPECT_GE(v, -3);
    EXPECT_LE(v, 3);
  }
}

// Names made in a row and met again in that order are tried against the name made after the last one found
// before the hash: a longer or shorter name with the same start, or another case, must not be taken for it.
TEST(SupportKeyNames, TheNameMadeNextIsTriedFirstButOnlyAnEqualNameMatches) {
  IKeyValuesSystem* kvs = KeyValuesSystem();
  const char* made[] = {"SeqA", "SeqAB", "SeqABC", "Seq", "SeqB", "seqx"};
  HKeySymbol s[6];
  for (int i = 0; i < 6; ++i) s[i] = kvs->GetSymbolForString(made[i]);
  EXPECT_EQ(kvs->GetSymbolForString("SEQA"), s[0]);
  EXPECT_EQ(kvs->GetSymbolForString("seqab"), s[1]);    // next after SEQA is SeqAB: another case
  EXPECT_EQ(kvs->GetSymbolForString("SeqAB"), s[1]);    // next is SeqABC, longer
  EXPECT_EQ(kvs->GetSymbolForString("SeqABC"), s[2]);
  EXPECT_EQ(kvs->GetSymbolForString("SeqX"), s[5]);     // next is Seq, a prefix of it
  HKeySymbol se = kvs->GetSymbolForString("Se");         // after seqx nothing was made: a new name
  for (HKeySymbol other : s) EXPECT_NE(se, other);
  EXPECT_EQ(kvs->GetSymbolForString("SeqB"), s[4]);
  HKeySymbol seqbb = kvs->GetSymbolForString("SeqBB");  // next is seqx: same length, other text
  for (HKeySymbol other : s) EXPECT_NE(seqbb, other);
  EXPECT_STREQ(kvs->GetStringForSymbol(seqbb), "SeqBB");
}

TEST(SupportKeyNames, ManyNamesLongNamesAndBytesAboveAscii) {
  IKeyValuesSystem* kvs = KeyValuesSystem();
  std::vector<HKeySymbol> symbols;
  for (int i = 0; i < 20000; ++i)  // the table grows several times on the way
    symbols.push_back(kvs->GetSymbolForString(("SupportGrowth" + std::to_string(i)).c_str()));
  for (int i = 0; i < 20000; i += 997) {
    EXPECT_EQ(kvs->GetSymbolForString(("supportgrowth" + std::to_string(i)).c_str()), symbols[size_t(i)]);
    EXPECT_EQ(kvs->GetStringForSymbol(symbols[size_t(i)]), "SupportGrowth" + std::to_string(i));
  }
  // Longer than a piece of the name arena, and names differing only past the first words.
  std::string huge(100000, 'h');
  HKeySymbol h = kvs->GetSymbolForString(huge.c_str());
  EXPECT_EQ(kvs->GetStringForSymbol(h), huge);
  huge.back() = 'H';
  EXPECT_EQ(kvs->GetSymbolForString(huge.c_str()), h);
  huge.back() = 'x';
  EXPECT_NE(kvs->GetSymbolForString(huge.c_str()), h);
  // Only A-Z fold: bytes of 0x80 and above, and neighbours of the letters, are themselves.
  const char* const distinct[] = {"SupportFold\xc3\x89", "SupportFold\xc3\xa9", "SupportFold@", "SupportFold`",
                                  "SupportFold[", "SupportFold{", "SupportFold\x7f", "SupportFold\xff"};
  std::vector<HKeySymbol> seen;
  for (const char* name : distinct) {
    HKeySymbol s = kvs->GetSymbolForString(name);
    for (HKeySymbol other : seen) EXPECT_NE(s, other) << name;
    seen.push_back(s);
  }
  EXPECT_EQ(kvs->GetSymbolForString("SUPPORTFOLD\xc3\x89"), seen[0]);
  EXPECT_EQ(kvs->GetSymbolForString(""), kvs->GetSymbolForString(""));
  // Symbols nobody was given name nothing.
  EXPECT_STREQ(kvs->GetStringForSymbol(-1), "");
  EXPECT_STREQ(kvs->GetStringForSymbol(1 << 30), "");
}

TEST(SupportKeyNodes, PoolSlotsAndLargerBlocksKeepTheirBytes) {
  IKeyValuesSystem* kvs = KeyValuesSystem();
  std::vector<void*> blocks;
  for (int i = 0; i < 10000; ++i) {
    int size = i % 10 == 0 ? 500 : 72;  // a tenth larger than a pool slot
    auto* block = static_cast<unsigned char*>(kvs->AllocKeyValuesMemory(size));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 8, 0u);
    memset(block, i & 0xFF, size_t(size));
    blocks.push_back(block);
  }
  for (size_t i = 0; i < blocks.size(); ++i) {
    auto* block = static_cast<unsigned char*>(blocks[i]);
    EXPECT_EQ(block[0], i & 0xFF);
    EXPECT_EQ(block[i % 10 == 0 ? 499 : 71], i & 0xFF);
  }
  for (void* block : blocks) kvs->FreeKeyValuesMemory(block);
  kvs->FreeKeyValuesMemory(nullptr);
}

// TW_ASSERT checks in the sanitizer build and aborts with its message; in release it evaluates nothing.
TEST(SupportAssert, LiveOnlyInTheSanitizerBuild) {
  int evaluated = 0;
  auto holds = [&] {
    ++evaluated;
    return true;
  };
  TW_ASSERT(holds(), "never broken");
#ifdef TW_SANITIZE
  EXPECT_EQ(evaluated, 1);
  EXPECT_DEATH(TW_ASSERT(evaluated == 2, "one evaluation"), "invariant broken: one evaluation \\(evaluated == 2\\)");
#else
  EXPECT_EQ(evaluated, 0);
#endif
}
