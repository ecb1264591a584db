// Console objects and the variable operations: value setting and its callbacks, clamping, the cache in
// front of the engine, creation on demand, the rule for 0, and the configuration variables. What the
// console shows of them, and cheat variables on a listen server, are scenarios (console_*).
#include <string>
#include <utility>

#include "host_fixture.h"

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

class ConsoleTest : public HostTest {
protected:
  void SetUp() override {
    HostTest::SetUp();
    g_callbacks = 0;
    tidewright_autocreate.SetValue("0");
  }
  // Console objects live as long as the process, as the engine's chain expects.
  static ConVar* MakeVar(const char* name, const char* value, int flags = 0, FnChangeCallback cb = nullptr) {
    return new ConVar(name, value, flags, "test variable", cb);
  }
  VarRestorer restoreAutocreate{tidewright_autocreate};
  VarRestorer restoreLastError{tidewright_lasterror};
};

TEST_F(ConsoleTest, NewVariableRegistersAtOnceAsThePluginsAndReadsItsDefault) {
  struct Row {
    const char* text;
    float f;
    int i;
  };
  for (const Row& row : {Row{"3.7", 3.7f, 3}, Row{"-2.9", -2.9f, -2}, Row{"abc", 0.0f, 0}}) {
    ConVar* v = MakeVar("hs_ctor", row.text);
    EXPECT_STREQ(v->GetDefault(), row.text);
    EXPECT_FLOAT_EQ(v->GetFloat(), row.f);
    EXPECT_EQ(v->GetInt(), row.i);  // cut toward zero
    EXPECT_TRUE(v->IsRegistered() && v->IsBitSet(FCVAR_PLUGIN));
    EXPECT_EQ(Standin().Console().GetCommands(), v);
  }
  ConnectConsole(&CStandIn::EngineFactory);  // connecting again registers nothing twice
  EXPECT_STREQ(Standin().Console().GetCommands()->GetName(), "hs_ctor");
}

TEST_F(ConsoleTest, SettersSkipThePresentValueAndTheCallbackSeesTheNewOne) {
  ConVar* v = MakeVar("hs_forms", "5abc", 0, CountChange);
  v->SetValue(5);
  v->SetValue(5.0f);
  EXPECT_STREQ(v->GetString(), "5abc");
  EXPECT_EQ(g_callbacks, 0);
  v->SetValue("12.5");
  EXPECT_EQ(g_callbacks, 1);
  EXPECT_EQ(g_oldSeen, "5abc");
  EXPECT_EQ(g_newSeen, "12.5");
  EXPECT_EQ(g_intSeen, 12);
  v->SetValue(2.5f);
  EXPECT_STREQ(v->GetString(), "2.500000");
  v->SetValue(-42);
  EXPECT_STREQ(v->GetString(), "-42");
  EXPECT_FLOAT_EQ(v->GetFloat(), -42.0f);
}

TEST_F(ConsoleTest, StringBlockGrowsForLongerTextOnlyAndTakesItsOwnText) {
  ConVar* v = MakeVar("hs_block", "ab");
  EXPECT_EQ(v->m_StringLength, 3);
  v->SetValue("a much longer text");
  EXPECT_EQ(v->m_StringLength, 19);
  v->SetValue("x");
  EXPECT_EQ(v->m_StringLength, 19);
  v->SetValue(v->GetString());
  EXPECT_STREQ(v->GetString(), "x");
}

TEST_F(ConsoleTest, ClampedValuesStoreTheLimit) {
  ConVar* v = new ConVar("hs_clamp", "5", 0, "clamped", true, 0.0f, true, 10.0f, CountChange);
  v->SetValue("25");
  EXPECT_STREQ(v->GetString(), "10.000000");  // the printed limit, not the text given
  EXPECT_EQ(v->GetInt(), 10);
  v->SetValue("7");
  EXPECT_STREQ(v->GetString(), "7");
  v->SetValue(50);
  EXPECT_STREQ(v->GetString(), "10");
  v->SetValue(-1.5f);
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

TEST_F(ConsoleTest, CacheHitNeverAsksTheEngineAndAMissIsNotRemembered) {
  EXPECT_EQ(FindServerVar("hs_cache"), nullptr);
  ConVar* first = MakeVar("hs_cache", "1");
  EXPECT_EQ(FindServerVar("hs_cache"), first);
  ConVar* second = MakeVar("hs_cache", "2");  // the engine gives this one for the name from now on
  EXPECT_EQ(FindServerVar("hs_cache"), first);
  EXPECT_EQ(FindServerVar("HS_CACHE"), second);  // another case is another entry, found by asking
  EXPECT_EQ(FindServerVar(nullptr), nullptr);
}

TEST_F(ConsoleTest, MissingVariableIsMadeOnlyWhenForcedOrAutocreated) {
  OutputCapture out;
  EXPECT_EQ(FindOrCreateServerVar("hs_missing", "h", false), nullptr);
  EXPECT_EQ(out.Take(), "ERROR: Variable does not exist.\n  Error source (console): (no script)\n");
  EXPECT_STREQ(tidewright_lasterror.GetString(), "Variable does not exist.");

  ConVar* forced = FindOrCreateServerVar("hs_forced", "my help", true);
  ASSERT_NE(forced, nullptr);
  EXPECT_STREQ(forced->GetString(), "");
  EXPECT_STREQ(forced->GetHelpText(), "my help");
  EXPECT_EQ(forced->GetFlagsRaw(), FCVAR_PLUGIN);
  EXPECT_EQ(FindServerVar("hs_forced"), forced);

  tidewright_autocreate.SetValue("1");
  EXPECT_NE(FindOrCreateServerVar("hs_auto", "h", false), nullptr);
}

TEST_F(ConsoleTest, SettersMakeCustomVariablesAndHelpCountsOnlyWhenMadeHere) {
  ConVar* v = SetVarText("hs_custom", "1", true);
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(v->GetDefault(), "");
  EXPECT_STREQ(v->GetHelpText(), "Custom server variable.");
  SetVarTextWithHelp("hs_custom", "b", "other help", true);
  EXPECT_STREQ(v->GetHelpText(), "Custom server variable.");
  EXPECT_STREQ(v->GetString(), "b");
  EXPECT_STREQ(SetVarText("hs_custom", nullptr, true)->GetString(), "");
  EXPECT_STREQ(SetVarFloat("hs_custom", 1.25f, true)->GetString(), "1.250000");
}

TEST_F(ConsoleTest, ZeroGoesThroughTheTextSetterAndIsNeverForced) {
  ConVar* word = MakeVar("hs_word", "abc");
  EXPECT_EQ(SetVarInt("hs_word", 0, false), word);
  EXPECT_STREQ(word->GetString(), "0");
  word->SetValue("abc");
  EXPECT_EQ(SetVarFloat("hs_word", 0.0f, false), word);
  EXPECT_STREQ(word->GetString(), "0");

  OutputCapture out;
  EXPECT_EQ(SetVarInt("hs_zero", 0, true), nullptr);
  EXPECT_EQ(SetVarFloat("hs_zero", 0.0f, true), nullptr);
  EXPECT_TRUE(out.Contains("ERROR: Variable does not exist.\n"));
  EXPECT_EQ(FindServerVar("hs_zero"), nullptr);
  ASSERT_NE(SetVarInt("hs_zero", 1, true), nullptr);
  EXPECT_STREQ(FindServerVar("hs_zero")->GetString(), "1");
}

// Only the two public variables are announced to clients; the cached switches follow their variables.
TEST_F(ConsoleTest, PublicFlagsAndCachedSwitches) {
  for (ConVar* open : {&brannock_tidewright, &tidewright_ver})
    EXPECT_EQ(open->GetFlagsRaw(), FCVAR_PLUGIN | FCVAR_NOTIFY | FCVAR_REPLICATED) << open->GetName();
  EXPECT_EQ(tidewright_lasterror.GetFlagsRaw(), FCVAR_PLUGIN);
  const std::pair<ConVar*, int*> cached[] = {
      {&brannock_tidewright, &g_cached.brannock}, {&brannock_python, &g_cached.python},
      {&tidewright_noisy, &g_cached.noisy},       {&tidewright_debug, &g_cached.debug},
      {&tidewright_scripttrace, &g_cached.scripttrace}, {&tidewright_debuglog, &g_cached.debuglog},
      {&tidewright_eiface, &g_cached.eiface},     {&tidewright_frametimecheck, &g_cached.frametimecheck},
      {&tidewright_defaultevents, &g_cached.defaultevents},
  };
  for (const auto& [var, value] : cached) {
    SCOPED_TRACE(var->GetName());
    EXPECT_EQ(*value, var->GetInt());
    OutputCapture quiet;
    VarRestorer restore(*var);
    var->SetValue("-5");
    EXPECT_EQ(*value, -5);
  }
}

}  // namespace
