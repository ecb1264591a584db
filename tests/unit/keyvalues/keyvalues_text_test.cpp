// The KeyValues text format: value types, comments, malformed input, #include, and save/load round trips.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "memfs.h"
#include "output_capture.h"

namespace {

KeyValues* Parse(const char* text, MemoryFileSystem* fs = nullptr, const char* name = "test.txt") {
  KeyValues* kv = new KeyValues("top");
  EXPECT_TRUE(kv->LoadFromBuffer(name, text, fs));
  return kv;
}

std::string Save(KeyValues* kv) {
  MemoryFileSystem fs;
  EXPECT_TRUE(kv->SaveToFile(&fs, "out.txt"));
  return fs.files["out.txt"];
}

// Developer messages on, so that parse errors can be seen.
struct DevMessages {
  int previous = GetDeveloperLevel();
  DevMessages() { SetDeveloperLevel(1); }
  ~DevMessages() { SetDeveloperLevel(previous); }
};

}  // namespace

TEST(KeyValuesText, ValueTypesFollowTheWholeToken) {
  TreeGuard kv(Parse(R"("s" { "i" "5" "f" "5.5" "t" "5a" "dot" ".5" "e" "" "z" "007" "x" "0x10" "big" "99999999999"
                       "exp" "1e3" "neg" "-3" })"));
  EXPECT_STREQ(kv->GetName(), "s");
  EXPECT_EQ(kv->GetDataType("i"), KeyValues::TYPE_INT);
  EXPECT_EQ(kv->GetDataType("f"), KeyValues::TYPE_FLOAT);
  EXPECT_EQ(kv->GetDataType("t"), KeyValues::TYPE_STRING);
  EXPECT_EQ(kv->GetDataType("dot"), KeyValues::TYPE_FLOAT);
  EXPECT_EQ(kv->GetDataType("e"), KeyValues::TYPE_STRING);
  EXPECT_EQ(kv->GetDataType("z"), KeyValues::TYPE_INT);
  EXPECT_EQ(kv->GetInt("z"), 7);  // numbers lose their text
  EXPECT_EQ(kv->GetDataType("x"), KeyValues::TYPE_STRING);
  EXPECT_EQ(kv->GetDataType("big"), KeyValues::TYPE_STRING);  // beyond 32 bits: the text is kept
  EXPECT_STREQ(kv->GetString("big"), "99999999999");
  EXPECT_EQ(kv->GetDataType("exp"), KeyValues::TYPE_FLOAT);
  EXPECT_FLOAT_EQ(kv->GetFloat("exp"), 1000.0f);
  EXPECT_EQ(kv->GetInt("neg"), -3);
}

TEST(KeyValuesText, UnquotedTokensAndNesting) {
  TreeGuard kv(Parse("players\n{\n  42\n  {\n    name Foo\n    kills 3\n  }\n}\n"));
  EXPECT_STREQ(kv->GetString("42/name"), "Foo");
  EXPECT_EQ(kv->GetInt("42/kills"), 3);
}

TEST(KeyValuesText, CommentsOnlyBetweenTokens) {
  TreeGuard kv(Parse("\"a\" // comment { \"x\" \"y\" }\n{ \"k\" a//b \"k2\" \"v\"/ comment right behind a quote\n"
                     "\"k3\" \"v3\" }"));
  EXPECT_STREQ(kv->GetName(), "a");
  EXPECT_STREQ(kv->GetString("k"), "a//b");
  EXPECT_STREQ(kv->GetString("k2"), "v");
  EXPECT_STREQ(kv->GetString("k3"), "v3");
}

TEST(KeyValuesText, OnlyCommentsLeaveTheNodeAsItWas) {
  TreeGuard kv(Parse("// nothing here\n   // nor here"));
  EXPECT_STREQ(kv->GetName(), "top");
  EXPECT_EQ(kv->GetFirstSubKey(), nullptr);
}

TEST(KeyValuesText, SingleSlashIsACommentOnlyRightAtTheStartOfARead) {
  // At the very start a single '/' opens a comment; behind white space it starts a plain token.
  TreeGuard a(Parse("/x\n\"s\" { \"k\" \"v\" }"));
  EXPECT_STREQ(a->GetName(), "s");
  TreeGuard b(Parse("  /x { \"k\" \"v\" }"));
  EXPECT_STREQ(b->GetName(), "/x");
}

TEST(KeyValuesText, MalformedInputKeepsWhatWasRead) {
  DevMessages dev;
  OutputCapture out;
  TreeGuard kv(Parse("\"g\" { \"a\" \"1\" \"b\" { \"c\" \"2\" } \"d\" }"));
  EXPECT_EQ(kv->GetInt("a"), 1);
  EXPECT_EQ(kv->GetInt("b/c"), 2);
  // "d" was created before its value turned out to be "}": it stays, with type none.
  EXPECT_NE(kv->FindKey("d"), nullptr);
  EXPECT_EQ(kv->GetDataType("d"), KeyValues::TYPE_NONE);
  EXPECT_TRUE(out.Contains("RecursiveLoadFromBuffer:  got } in key"));
  EXPECT_TRUE(out.Contains("in file test.txt"));
}

TEST(KeyValuesText, StrayClosingBraceAtTopLevelIsASectionName) {
  DevMessages dev;
  OutputCapture out;
  TreeGuard kv(Parse("}"));
  EXPECT_TRUE(out.Contains("LoadFromBuffer: missing {"));
}

TEST(KeyValuesText, SeveralSectionsBecomePeers) {
  TreeGuard kv(Parse("\"one\" { \"a\" \"1\" } \"two\" { \"b\" \"2\" }"));
  EXPECT_STREQ(kv->GetName(), "one");
  ASSERT_NE(kv->GetNextKey(), nullptr);
  EXPECT_STREQ(kv->GetNextKey()->GetName(), "two");
  EXPECT_EQ(kv->GetNextKey()->GetInt("b"), 2);
}

TEST(KeyValuesText, IncludeAppendsTheFileBehindThePeers) {
  MemoryFileSystem fs;
  fs.files["dir/inc.txt"] = "\"inc\" { \"x\" \"9\" }";
  TreeGuard kv(Parse("#INCLUDE \"inc.txt\"\n\"main\" { \"a\" \"1\" }", &fs, "dir/main.txt"));
  EXPECT_STREQ(kv->GetName(), "main");
  ASSERT_NE(kv->GetNextKey(), nullptr);
  EXPECT_STREQ(kv->GetNextKey()->GetName(), "inc");
  EXPECT_EQ(kv->GetNextKey()->GetInt("x"), 9);
}

TEST(KeyValuesText, MissingIncludeIsReported) {
  DevMessages dev;
  OutputCapture out;
  MemoryFileSystem fs;
  TreeGuard kv(Parse("#include \"nope.txt\" \"s\" { }", &fs));
  EXPECT_TRUE(out.Contains("Couldn't load included keyvalue file nope.txt"));
  EXPECT_EQ(kv->GetNextKey(), nullptr);
}

TEST(KeyValuesText, DeepNestingIsRefusedNotRecursedWithoutBound) {
  std::string text = "\"s\" {";
  for (int i = 0; i < 100000; ++i) text += " \"k\" {";
  TreeGuard kv(Parse(text.c_str()));
  EXPECT_NE(kv->FindKey("k"), nullptr);
}

TEST(KeyValuesText, RoundTripKeepsStructureAndDropsEmptyValues) {
  TreeGuard kv(Parse("\"g\" { \"k1\" { \"name\" \"Foo Bar\" \"kills\" \"3\" \"ratio\" \"0.5\" \"empty\" \"\" }"
                     " \"bare\" { } }"));
  std::string text = Save(kv.kv);
  EXPECT_EQ(text,
            "\"g\"\n{\n\t\"k1\"\n\t{\n\t\t\"name\"\t\t\"Foo Bar\"\n\t\t\"kills\"\t\t\"3\"\n"
            "\t\t\"ratio\"\t\t\"0.500000\"\n\t}\n}\n");
  TreeGuard back(Parse(text.c_str()));
  EXPECT_STREQ(back->GetString("k1/name"), "Foo Bar");
  EXPECT_EQ(back->GetInt("k1/kills"), 3);
  EXPECT_EQ(back->FindKey("k1/empty"), nullptr);
  EXPECT_EQ(back->FindKey("bare"), nullptr);
}

TEST(KeyValuesText, IntegerReadAsTextStillSavesItsText) {
  TreeGuard kv(Parse("\"g\" { \"n\" \"5\" }"));
  EXPECT_STREQ(kv->GetString("n"), "5");
  EXPECT_NE(Save(kv.kv).find("\"n\"\t\t\"5\""), std::string::npos);
}

TEST(KeyValuesText, QuoteInValueIsEscapedOnSaveAndFallsOutOfStepOnRead) {
  TreeGuard kv(new KeyValues("g"));
  kv->SetString("q", "say \"hi\"");
  std::string text = Save(kv.kv);
  EXPECT_NE(text.find("\"say \\\"hi\\\"\""), std::string::npos);
  TreeGuard back(Parse(text.c_str()));
  EXPECT_STREQ(back->GetString("q"), "say \\");
}

TEST(KeyValuesText, SaveFailureIsReported) {
  DevMessages dev;
  OutputCapture out;
  MemoryFileSystem fs;
  fs.failWrites = true;
  TreeGuard kv(new KeyValues("g"));
  EXPECT_FALSE(kv->SaveToFile(&fs, "x.txt"));
  EXPECT_TRUE(out.Contains("KeyValues::SaveToFile: couldn't open file \"x.txt\" in path \"NULL\"."));
}

TEST(KeyValuesText, MissingFileGivesFalseWithoutAReport) {
  DevMessages dev;
  OutputCapture out;
  MemoryFileSystem fs;
  TreeGuard kv(new KeyValues("g"));
  EXPECT_FALSE(kv->LoadFromFile(&fs, "none.txt"));
  EXPECT_EQ(out.Text(), "");
}

TEST(KeyValuesText, SelfIncludingFileStopsAtTheLoadsBound) {
  // One section, then eight includes of itself: unbounded, that is 8^8 loads.
  MemoryFileSystem fs;
  std::string self = "\"s\" { \"a\" \"1\" }\n";
  for (int i = 0; i < 8; ++i) self += "#include \"self.txt\"\n";
  fs.files["self.txt"] = self;
  OutputCapture out;
  TreeGuard kv(new KeyValues("top"));
  EXPECT_TRUE(kv->LoadFromFile(&fs, "self.txt"));
  EXPECT_EQ(out.Text(),
            "KeyValues: loading self.txt stopped: its #include files pass 256 files or 16 MB. What was read "
            "before is kept.\n");
  // What was read stays: this file's section and the 256 included ones, each with its value.
  int sections = 0;
  for (KeyValues* k = kv.kv; k; k = k->GetNextKey(), ++sections) EXPECT_EQ(k->GetInt("a"), 1);
  EXPECT_EQ(sections, 257);

  // The next load has a bound of its own.
  OutputCapture again;
  TreeGuard second(new KeyValues("top"));
  EXPECT_TRUE(second->LoadFromFile(&fs, "self.txt"));
  EXPECT_TRUE(again.Contains("loading self.txt stopped"));
}

TEST(KeyValuesText, IncludedBytesAreBoundedToo) {
  // Each include is a comment of exactly 1 MB; the seventeenth passes 16 MB.
  MemoryFileSystem fs;
  fs.files["big.txt"] = "//" + std::string((1 << 20) - 2, 'c');
  std::string main;
  for (int i = 0; i < 17; ++i) main += "#include \"big.txt\"\n\"s" + std::to_string(i) + "\" { }\n";
  fs.files["main.txt"] = main;
  OutputCapture out;
  TreeGuard kv(new KeyValues("top"));
  EXPECT_TRUE(kv->LoadFromFile(&fs, "main.txt"));
  EXPECT_TRUE(out.Contains("loading main.txt stopped"));
  // Sections s0 to s15 were read before the seventeenth include; the rest of the file is not.
  int sections = 0;
  for (KeyValues* k = kv.kv; k; k = k->GetNextKey()) sections += k->GetName()[0] == 's';
  EXPECT_EQ(sections, 16);
}

TEST(KeyValuesText, FloatValuesAreWhatStrtofReads) {
  std::vector<std::string> numbers = {"0.0",        "-0.0",        "12.500000",  "0.1",      "16777216.0",
                                      "16777217.0", "16777217.5",  "1.00000001", ".3",       "3.",
                                      "-7.25",      "+1.5",        "1e3",        "2.5E-3",   "0.0000000001",
                                      "123456.789", "9999999.999", "1.17549435e-38", "3.4028235e38",
                                      "340282350000000000000000000000000000000.0"};
  uint64_t state = 0x5EED;
  for (int i = 0; i < 3000; ++i) {  // random digits on both sides of the point, with trailing zeros
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    std::string whole = std::to_string((state >> 20) % 100000000);
    std::string fraction = std::to_string((state >> 8) % 1000) + std::string((state >> 4) % 6, '0');
    numbers.push_back((state & 1 ? "-" : "") + whole + "." + fraction);
  }
  std::string text = "\"f\" {";
  for (size_t i = 0; i < numbers.size(); ++i) text += " \"k" + std::to_string(i) + "\" \"" + numbers[i] + "\"";
  TreeGuard kv(Parse((text + " }").c_str()));
  for (size_t i = 0; i < numbers.size(); ++i) {
    std::string key = "k" + std::to_string(i);
    ASSERT_EQ(kv->GetDataType(key.c_str()), KeyValues::TYPE_FLOAT) << numbers[i];
    float expected = strtof(numbers[i].c_str(), nullptr);
    float actual = kv->GetFloat(key.c_str());
    EXPECT_EQ(memcmp(&expected, &actual, sizeof expected), 0) << numbers[i];
  }
}

TEST(KeyValuesText, TokensOfEveryLengthUpToTheEndOfTheText) {
  // The reader takes several bytes at a time where the text surely holds them; near its end it must not
  // read past it, and tokens of every length must come out whole.
  for (size_t n = 1; n < 40; ++n) {
    std::string word(n, 'w');
    for (const std::string& text : {"\"s\" { \"k\" \"" + word + "\" }", "\"s\" { \"k\" " + word + " }",
                                    "\"s\" { \"" + word + "\" \"v\" }", "s { k " + word + "}"}) {
      auto* copy = new char[text.size() + 1];  // exactly as long as the text, for the sanitizers
      memcpy(copy, text.c_str(), text.size() + 1);
      TreeGuard kv(Parse(copy));
      delete[] copy;
      const char* found = kv->FindKey("k") ? kv->GetString("k") : kv->GetString(word.c_str());
      EXPECT_TRUE(found == word || std::string(found) == "v") << text;
    }
    DevMessages dev;
    OutputCapture out;
    std::string open = "\"s\" { \"k\" \"" + word;  // ends inside the quotes
    TreeGuard kv(Parse(open.c_str()));
    EXPECT_TRUE(out.Contains("ReadToken unexpected EOF in quoted string")) << n;
  }
}

TEST(KeyValuesText, TheTokenLimitCountsEveryLostByte) {
  for (size_t n : {1022u, 1023u, 1024u, 1025u, 1031u, 1040u}) {
    DevMessages dev;
    OutputCapture out;
    std::string text = "\"s\" { \"k\" \"" + std::string(n, 'x') + "\" \"p\" " + std::string(n, 'y') + " }";
    TreeGuard kv(Parse(text.c_str()));
    EXPECT_EQ(strlen(kv->GetString("k")), std::min<size_t>(n, 1023)) << n;
    EXPECT_EQ(strlen(kv->GetString("p")), std::min<size_t>(n, 1023)) << n;
    size_t reports = 0;
    for (size_t at = out.Text().find("ReadToken overflow"); at != std::string::npos;
         at = out.Text().find("ReadToken overflow", at + 1))
      ++reports;
    EXPECT_EQ(reports, 2 * (n > 1023 ? n - 1023 : 0)) << n;
  }
}

TEST(KeyValuesText, AByteAboveAsciiEndsACommentWhereverItStands) {
  for (size_t at = 0; at < 20; ++at) {
    std::string comment(20, 'c');
    comment[at] = at % 2 ? '\x80' : '\xc3';
    DevMessages dev;
    OutputCapture out;
    TreeGuard kv(Parse(("\"s\" { \"k\" \"v\" //" + comment + "\n \"k2\" \"v2\" }").c_str()));
    EXPECT_STREQ(kv->GetString("k"), "v");
    EXPECT_EQ(kv->FindKey("k2"), nullptr) << at;  // the high byte starts an empty key name
    EXPECT_TRUE(out.Contains("got empty keyname")) << at;
  }
}
