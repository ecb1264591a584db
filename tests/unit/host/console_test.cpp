// Console objects and the variable operations: value setting and its callbacks, clamping, the cache in
// front of the engine, creation on demand, the rule for 0, cheat variables, and the configuration table.
#include <gtest/gtest.h>

#include <string>

#include "host_fakes.h"
#include "output_capture.h"

namespace {

int g_callbacks = 0;
std::string g_oldSeen, g_newSeen;
int g_intSeen = 0;

void CountChange(ConVar* var, const char* old) {
  ++g_callbacks;
  g_oldSeen = old;
  g_newSeen = var->GetString();
  g_intSeen = var->GetInt();
}

class ConsoleTest : public ::testing::Test {
protected:
  void SetUp() override {
    world = &ConnectFakeWorld();
    g_callbacks = 0;
    world->engine.dedicated = true;
  }
  // Console objects live as long as the process, as the engine's chain expects.
  static ConVar* MakeVar(const char* name, const char* value, int flags = 0, FnChangeCallback cb = nullptr) {
    return new ConVar(name, value, flags, "test variable", cb);
  }
  static ConVar* MakeClamped(const char* name, const char* value, float min, float max) {
    return new ConVar(name, value, 0, "clamped", true, min, true, max, CountChange);
  }
  FakeWorld* world = nullptr;
  VarRestorer restoreAutocreate{tidewright_autocreate};
  VarRestorer restoreLastError{tidewright_lasterror};
};

// ---- construction and registration ----

TEST_F(ConsoleTest, NewVariableReadsItsDefaultAsNumbers) {
  ConVar* v = MakeVar("hs_ctor_a", "3.7");
  EXPECT_STREQ(v->GetString(), "3.7");
  EXPECT_FLOAT_EQ(v->GetFloat(), 3.7f);
  EXPECT_EQ(v->GetInt(), 3);
  ConVar* n = MakeVar("hs_ctor_b", "-2.9");
  EXPECT_EQ(n->GetInt(), -2);  // cut toward zero
  ConVar* w = MakeVar("hs_ctor_c", "abc");
  EXPECT_EQ(w->GetInt(), 0);
  EXPECT_STREQ(w->GetDefault(), "abc");
}

TEST_F(ConsoleTest, ObjectMadeAfterConnectingRegistersAtOnceAsThePlugins) {
  ConVar* v = MakeVar("hs_reg_a", "1");
  EXPECT_TRUE(v->IsRegistered());
  EXPECT_TRUE(v->IsBitSet(FCVAR_PLUGIN));
  EXPECT_TRUE(world->cvar.Holds(v));
  EXPECT_EQ(world->cvar.head, v);
}

TEST_F(ConsoleTest, ConnectingAgainRegistersNothingTwice) {
  MakeVar("hs_reg_c", "1");
  std::vector<std::string> before = world->cvar.Names();
  ConnectConsole(&FakeWorld::EngineFactory);
  EXPECT_EQ(world->cvar.Names(), before);
}

// ---- setting values ----

TEST_F(ConsoleTest, IntegerSetToItsPresentValueDoesNothing) {
  ConVar* v = MakeVar("hs_int_same", "5abc", 0, CountChange);
  ASSERT_EQ(v->GetInt(), 5);
  v->SetValue(5);
  EXPECT_STREQ(v->GetString(), "5abc");
  EXPECT_EQ(g_callbacks, 0);
}

TEST_F(ConsoleTest, FloatSetToItsPresentValueDoesNothing) {
  ConVar* v = MakeVar("hs_float_same", "2.5x", 0, CountChange);
  v->SetValue(2.5f);
  EXPECT_STREQ(v->GetString(), "2.5x");
  EXPECT_EQ(g_callbacks, 0);
}

TEST_F(ConsoleTest, NumericSettersPrintTheirForms) {
  ConVar* v = MakeVar("hs_forms", "0");
  v->SetValue(2.5f);
  EXPECT_STREQ(v->GetString(), "2.500000");
  v->SetValue(-42);
  EXPECT_STREQ(v->GetString(), "-42");
  EXPECT_FLOAT_EQ(v->GetFloat(), -42.0f);
}

TEST_F(ConsoleTest, CallbackSeesNewValuesAndOldText) {
  ConVar* v = MakeVar("hs_cb", "old", 0, CountChange);
  v->SetValue("12.5");
  EXPECT_EQ(g_callbacks, 1);
  EXPECT_EQ(g_oldSeen, "old");
  EXPECT_EQ(g_newSeen, "12.5");
  EXPECT_EQ(g_intSeen, 12);
}

TEST_F(ConsoleTest, StringBlockGrowsForLongerTextAndKeepsItsSizeForShorter) {
  ConVar* v = MakeVar("hs_block", "ab");
  EXPECT_EQ(v->m_StringLength, 3);
  v->SetValue("a much longer text");
  EXPECT_EQ(v->m_StringLength, 19);
  v->SetValue("x");
  EXPECT_EQ(v->m_StringLength, 19);
  EXPECT_STREQ(v->GetString(), "x");
}

TEST_F(ConsoleTest, SettingAVariableToItsOwnTextIsSafe) {
  ConVar* v = MakeVar("hs_self", "same text");
  v->SetValue(v->GetString());
  EXPECT_STREQ(v->GetString(), "same text");
}

TEST_F(ConsoleTest, ClampedTextStoresTheLimitInSixDecimals) {
  ConVar* v = MakeClamped("hs_clamp_text", "5", 0.0f, 10.0f);
  v->SetValue("25");
  EXPECT_STREQ(v->GetString(), "10.000000");
  EXPECT_EQ(v->GetInt(), 10);
  v->SetValue("-3");
  EXPECT_STREQ(v->GetString(), "0.000000");
  v->SetValue("7");
  EXPECT_STREQ(v->GetString(), "7");
}

TEST_F(ConsoleTest, ClampedIntegerAndFloatStoreTheLimit) {
  ConVar* v = MakeClamped("hs_clamp_num", "5", 0.0f, 10.0f);
  v->SetValue(50);
  EXPECT_EQ(v->GetInt(), 10);
  EXPECT_STREQ(v->GetString(), "10");
  v->SetValue(-1.5f);
  EXPECT_FLOAT_EQ(v->GetFloat(), 0.0f);
  EXPECT_STREQ(v->GetString(), "0.000000");
}

TEST_F(ConsoleTest, NeverAsStringReadsTheFlagNameAndSettersLeaveTheText) {
  ConVar* v = MakeVar("hs_never", "3", FCVAR_NEVER_AS_STRING, CountChange);
  EXPECT_STREQ(v->GetString(), "FCVAR_NEVER_AS_STRING");
  v->SetValue("8");
  v->SetValue(9);
  v->SetValue(9.5f);
  EXPECT_FLOAT_EQ(v->GetFloat(), 9.5f);
  EXPECT_EQ(v->GetInt(), 9);
  EXPECT_STREQ(v->m_pszString, "3");
  EXPECT_EQ(g_callbacks, 0);
}

TEST_F(ConsoleTest, ChildReadsAndWritesThroughItsParent) {
  ConVar* parent = MakeVar("hs_parent", "1");
  ConVar* child = new ConVar("hs_child", "", FCVAR_UNREGISTERED);
  child->m_pParent = parent;
  child->SetValue("77");
  EXPECT_STREQ(parent->GetString(), "77");
  EXPECT_EQ(child->GetInt(), 77);
  child->AddFlags(FCVAR_PROTECTED);
  EXPECT_TRUE(parent->IsBitSet(FCVAR_PROTECTED));
}

// ---- the cache ----

TEST_F(ConsoleTest, CacheHitNeverAsksTheEngine) {
  ConVar* v = MakeVar("hs_cache_a", "1");
  EXPECT_EQ(FindServerVar("hs_cache_a"), v);
  int asked = world->cvar.findVarCalls;
  EXPECT_EQ(FindServerVar("hs_cache_a"), v);
  EXPECT_EQ(world->cvar.findVarCalls, asked);
}

TEST_F(ConsoleTest, OtherCaseFindsTheSameVariableThroughASecondEntry) {
  ConVar* v = MakeVar("hs_case_x", "1");
  EXPECT_EQ(FindServerVar("hs_case_x"), v);
  int asked = world->cvar.findVarCalls;
  EXPECT_EQ(FindServerVar("HS_CASE_X"), v);
  EXPECT_EQ(world->cvar.findVarCalls, asked + 1);
  EXPECT_EQ(FindServerVar("HS_CASE_X"), v);
  EXPECT_EQ(world->cvar.findVarCalls, asked + 1);
}

TEST_F(ConsoleTest, MissIsNotRemembered) {
  EXPECT_EQ(FindServerVar("hs_later"), nullptr);
  ConVar* v = MakeVar("hs_later", "1");
  EXPECT_EQ(FindServerVar("hs_later"), v);
  EXPECT_EQ(FindServerVar(nullptr), nullptr);
}

// ---- creation on demand ----

TEST_F(ConsoleTest, MissingVariableWithoutAutocreateReports) {
  tidewright_autocreate.SetValue("0");
  OutputCapture out;
  EXPECT_EQ(FindOrCreateServerVar("hs_missing_a", "h", false), nullptr);
  EXPECT_TRUE(out.Contains("ERROR: Variable does not exist.\n"));
  EXPECT_STREQ(tidewright_lasterror.GetString(), "Variable does not exist.");
}

TEST_F(ConsoleTest, ForcedCreationMakesAnEmptyVariableWithTheHelp) {
  ConVar* v = FindOrCreateServerVar("hs_forced", "my help", true);
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetString(), "");
  EXPECT_STREQ(v->GetHelpText(), "my help");
  EXPECT_EQ(v->GetFlagsRaw(), FCVAR_PLUGIN);
  EXPECT_EQ(FindServerVar("hs_forced"), v);
}

TEST_F(ConsoleTest, AutocreateMakesWithoutForce) {
  tidewright_autocreate.SetValue("1");
  EXPECT_NE(FindOrCreateServerVar("hs_auto", "h", false), nullptr);
}

TEST_F(ConsoleTest, SetVarTextMakesACustomVariable) {
  ConVar* v = SetVarText("hs_custom", "1", true);
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetString(), "1");
  EXPECT_STREQ(v->GetDefault(), "");
  EXPECT_STREQ(v->GetHelpText(), "Custom server variable.");
  EXPECT_EQ(v->GetFlagsRaw(), FCVAR_PLUGIN);
}

TEST_F(ConsoleTest, HelpCountsOnlyWhenTheVariableIsMadeHere) {
  ConVar* v = SetVarTextWithHelp("hs_help", "a", "first help", true);
  SetVarTextWithHelp("hs_help", "b", "second help", true);
  EXPECT_STREQ(v->GetHelpText(), "first help");
  EXPECT_STREQ(v->GetString(), "b");
  EXPECT_STREQ(SetVarText("hs_help_null", nullptr, true)->GetString(), "");
}

// ---- the rule for 0 ----

TEST_F(ConsoleTest, WordSetToIntegerZeroHoldsZero) {
  ConVar* v = MakeVar("hs_word", "abc");
  EXPECT_EQ(SetVarInt("hs_word", 0, false), v);
  EXPECT_STREQ(v->GetString(), "0");
  v->SetValue("abc");
  v->SetValue(0);  // the object's own setter sees nothing to do
  EXPECT_STREQ(v->GetString(), "abc");
}

TEST_F(ConsoleTest, ZeroIsNeverForced) {
  tidewright_autocreate.SetValue("0");
  OutputCapture out;
  EXPECT_EQ(SetVarInt("hs_zero_missing", 0, true), nullptr);
  EXPECT_TRUE(out.Contains("ERROR: Variable does not exist.\n"));
  EXPECT_EQ(FindServerVar("hs_zero_missing"), nullptr);
  EXPECT_EQ(SetVarFloat("hs_zero_missing", 0.0f, true), nullptr);

  ConVar* v = SetVarInt("hs_zero_missing", 1, true);
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetString(), "1");
  EXPECT_STREQ(v->GetHelpText(), "Custom server variable.");
}

TEST_F(ConsoleTest, FloatSetterFollowsTheSameRule) {
  ConVar* v = SetVarFloat("hs_float_set", 1.25f, true);
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetString(), "1.250000");
  SetVarFloat("hs_float_set", 0.0f, true);
  EXPECT_STREQ(v->GetString(), "0");
}

// ---- cheat variables ----

TEST_F(ConsoleTest, CheatVariablesAreSetOnlyOnADedicatedServer) {
  ConVar* cheat = MakeVar("hs_cheat", "0", FCVAR_CHEAT);
  ConVar* lookalike = MakeVar("hs_sv_cheats", "0");
  ConVar* svCheats = FindServerVar("sv_cheats");
  if (!svCheats) svCheats = MakeVar("sv_cheats", "0");
  ConVar* plain = MakeVar("hs_plain", "0");
  EXPECT_TRUE(CanSetVar(cheat));
  EXPECT_TRUE(CanSetVar(svCheats));

  world->engine.dedicated = false;
  EXPECT_FALSE(CanSetVar(cheat));
  EXPECT_FALSE(CanSetVar(svCheats));
  EXPECT_TRUE(CanSetVar(plain));
  EXPECT_TRUE(CanSetVar(lookalike));

  OutputCapture out;
  EXPECT_EQ(SetVarText("SV_CHEATS", "1", true), svCheats);
  EXPECT_EQ(SetVarInt("hs_cheat", 1, true), cheat);
  EXPECT_STREQ(svCheats->GetString(), "0");
  EXPECT_STREQ(cheat->GetString(), "0");
  EXPECT_EQ(out.Text(), "");
}

// ---- the configuration variables ----

struct ConfigRow {
  const char* name;
  const char* value;
  int flags;
  bool cached;
};

const ConfigRow kConfig[] = {
    {"brannock_tidewright", "1", FCVAR_NOTIFY | FCVAR_REPLICATED, true},
    {"brannock_python", "1", 0, true},
    {"tidewright_noisy", "0", 0, true},
    {"tidewright_debug", "0", 0, true},
    {"tidewright_scripttrace", "0", 0, true},
    {"tidewright_debuglog", "0", 0, true},
    {"tidewright_eiface", "1", 0, true},
    {"tidewright_frametimecheck", "0", 0, true},
    {"tidewright_defaultevents", "1", 0, true},
    {"tidewright_subdirectory", "", 0, false},
    {"tidewright_datadirectory", "cfg", 0, false},
    {"tidewright_escapechars", "; {}()':", 0, false},
    {"tidewright_cflags", "902", 0, false},
    {"tidewright_timeformat", "%Y-%m-%d %H:%M:%S (%Z)", 0, false},
    {"tidewright_currentmap", "", 0, false},
    {"tidewright_lastgive", "", 0, false},
    {"tidewright_deadflag", "1", 0, false},
    {"tidewright_cmdprefixes", "!", 0, false},
    {"tidewright_exec-cmd", "exec", 0, false},
    {"tidewright_lasterror", "", 0, false},
    {"tidewright_lasterrornum", "0", 0, false},
    {"tidewright_ver", "2.0.0.248", FCVAR_NOTIFY | FCVAR_REPLICATED, false},
    {"tidewright_autocreate", "", 0, false},
    {"tidewright_protectrcon", "1", 0, false},
    {"tidewright_bot-cexec", "0", 0, false},
    {"tidewright_serverdll", "", 0, false},
    {"tidewright_chatevent", "1", 0, false},
    {"tidewright_maphandler", "1", 0, false},
    {"tidewright_maxmsg", "28", 0, false},
    {"tidewright_quote", "\"", 0, false},
    {"tidewright_nextmapoverride", "", 0, false},
    {"tidewright_addondir", "", 0, false},
    {"tidewright_gamedir", "", 0, false},
    {"tidewright_language", "english", 0, false},
};

TEST_F(ConsoleTest, ConfigurationVariablesStandInTheChainWithTheirDefaults) {
  ASSERT_EQ(sizeof kConfig / sizeof kConfig[0], 34u);
  for (const ConfigRow& row : kConfig) {
    SCOPED_TRACE(row.name);
    ConVar* v = FindServerVar(row.name);
    ASSERT_NE(v, nullptr);
    EXPECT_STREQ(v->GetDefault(), row.value);
    EXPECT_EQ(v->GetFlagsRaw() & ~FCVAR_PLUGIN, row.flags);
    EXPECT_TRUE(v->IsBitSet(FCVAR_PLUGIN));
    EXPECT_EQ(v->m_fnChangeCallback != nullptr, row.cached);
  }
}

TEST_F(ConsoleTest, CachedSwitchesFollowTheirVariables) {
  struct Pair {
    ConVar& var;
    int CachedSwitches::*field;
  };
  const Pair pairs[] = {
      {brannock_tidewright, &CachedSwitches::brannock},   {brannock_python, &CachedSwitches::python},
      {tidewright_noisy, &CachedSwitches::noisy},         {tidewright_debug, &CachedSwitches::debug},
      {tidewright_scripttrace, &CachedSwitches::scripttrace}, {tidewright_debuglog, &CachedSwitches::debuglog},
      {tidewright_eiface, &CachedSwitches::eiface},       {tidewright_frametimecheck, &CachedSwitches::frametimecheck},
      {tidewright_defaultevents, &CachedSwitches::defaultevents},
  };
  for (const Pair& p : pairs) {
    SCOPED_TRACE(p.var.GetName());
    EXPECT_EQ(g_cached.*p.field, p.var.GetInt());  // the initial cached value is the default
    VarRestorer restore(p.var);
    OutputCapture quiet;
    p.var.SetValue("-5");
    EXPECT_EQ(g_cached.*p.field, -5);
  }
}

}  // namespace
