// The command line: every option's reading, the refusals, and --help describing every option of the
// synopsis. A refusal and the synopsis as the operator sees them are in the scenarios server/bad_option*,
// --version in server/version_option.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "options.h"

namespace {

bool Parse(std::vector<std::string> words, ServerOptions& out, std::string& error) {
  words.insert(words.begin(), "tidewright-server");
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  return ParseServerOptions(int(argv.size()), argv.data(), out, error);
}

TEST(ServerOptions, EachOptionSetsItsField) {
  ServerOptions o;
  std::string error;
  ASSERT_TRUE(Parse({"--game", "/srv/mod/", "--plugin", "p.so", "--map", "de_x", "--maxplayers", "64", "--tickrate",
                     "33", "--without", "A,,B", "--listen", "--no-plugin", "--cbuf-size", "100", "+echo", "a b", "x",
                     "+quit"},
                    o, error))
      << error;
  EXPECT_EQ(o.config.gameDir, "/srv/mod");
  EXPECT_EQ(o.pluginPath, "p.so");
  EXPECT_EQ(o.config.map, "de_x");
  EXPECT_EQ(o.config.maxPlayers, 64);
  EXPECT_EQ(o.config.tickrate, 33);
  EXPECT_EQ(o.config.without, (std::vector<std::string>{"A", "B"}));
  EXPECT_TRUE(o.config.listen);
  EXPECT_TRUE(o.noPlugin);
  EXPECT_EQ(o.config.cbufCapacity, 100u);
  EXPECT_EQ(o.config.startupCommands, (std::vector<std::string>{"echo \"a b\" x", "quit"}));
  EXPECT_EQ(o.action, ServerAction::Run);
}

TEST(ServerOptions, DefaultsHelpVersionAndRefusals) {
  ServerOptions o;
  std::string error;
  ASSERT_TRUE(Parse({}, o, error));
  EXPECT_EQ(o.config.gameDir, TW_DEFAULT_GAME_DIR);
  EXPECT_EQ(o.config.maxPlayers, STANDIN_DEFAULT_MAXPLAYERS);
  for (auto [word, action] : {std::pair{"--help", ServerAction::Help}, std::pair{"-h", ServerAction::Help},
                              std::pair{"--version", ServerAction::Version}}) {
    ServerOptions h;
    EXPECT_TRUE(Parse({word}, h, error));
    EXPECT_EQ(h.action, action) << word;
  }
  ServerOptions init;
  EXPECT_TRUE(Parse({"--init", "/srv/new"}, init, error));
  EXPECT_EQ(init.action, ServerAction::Init);
  EXPECT_EQ(init.initRoot, "/srv/new");
  struct Bad {
    std::vector<std::string> words;
    const char* error;
  } bad[] = {
      {{"--maxplayers", "65"}, "bad option or value: --maxplayers 65"},
      {{"--tickrate", "x"}, "bad option or value: --tickrate x"},
      {{"--cbuf-size", "0"}, "bad option or value: --cbuf-size 0"},
      {{"--bogus", "1"}, "bad option or value: --bogus"},
      {{"-game", "x"}, "bad option or value: -game"},
  };
  for (const Bad& b : bad) {
    ServerOptions r;
    std::string e;
    EXPECT_FALSE(Parse(b.words, r, e)) << b.error;
    EXPECT_EQ(e, b.error);
  }
}

TEST(ServerOptions, HelpDescribesEveryOptionOfTheSynopsis) {
  std::string usage = ServerUsage();
  std::string help = ServerHelp();
  EXPECT_EQ(help.rfind(usage, 0), 0u);
  for (size_t at = usage.find("[--"); at != std::string::npos; at = usage.find("[--", at + 1)) {
    std::string spelled = usage.substr(at + 1, usage.find(']', at) - at - 1);
    EXPECT_NE(help.find("\n  " + spelled), std::string::npos) << spelled;
  }
  EXPECT_NE(help.find("Default: " + std::string(TW_DEFAULT_GAME_DIR) + "."), std::string::npos);
  for (size_t start = 0, end; (end = help.find('\n', start)) != std::string::npos; start = end + 1)
    EXPECT_LE(end - start, 100u) << help.substr(start, end - start);
}

}  // namespace
