// The library's parsers, each behind the command an operator or a script reaches it with. The fuzzed texts
// go into server variables, so that they reach the parser whole, whatever quotes or separators they hold;
// the commands take them through expansion. Inputs are cut into texts at byte 0x01.
//   mathparse   an expression: tw_mathparse, and ifx parse() inside a block
//   regex       expression, subject, start, range: tw_regex match, search and matchformat
//   format      a format string and its tokens: tw_format
//   sql         statements into an open database: tw_sql queryvalue and query
//   properties  property path, value, class and property name: the property commands on a bot and index 0
#include <filesystem>
#include <fstream>

#include "fuzz_server.h"
#include "fuzz_target.h"

namespace {

std::vector<std::string> Texts(const uint8_t* data, size_t size, size_t count) {
  std::vector<std::string> texts = FuzzSplit(data, size, '\x01', count);
  texts.resize(count);
  return texts;
}

// A script whose one block tests an expression held in fz_expr with ifx.
void LoadIfxScript() {
  static bool loaded = [] {
    std::filesystem::path dir = std::filesystem::path(FuzzServer().GameDir()) / "addons/tidewright/fzifx";
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "tw_fzifx.txt") << "block test\n{\n  ifx parse(server_var(fz_expr)) do\n  {\n"
                                           "    tw_set fz_out 1\n  }\n}\n";
    FuzzRunLines("tw_load fzifx");
    return true;
  }();
  (void)loaded;
}

}  // namespace

TW_FUZZ_TARGET(mathparse) {
  LoadIfxScript();
  FuzzSetVar("fz_expr", std::string(reinterpret_cast<const char*>(data), size));
  FuzzRunLines("tw_mathparse fz_out server_var(fz_expr)\ntw_doblock fzifx/test");
}

TW_FUZZ_TARGET(regex) {
  std::vector<std::string> t = Texts(data, size, 4);
  FuzzSetVar("fz_re", t[0]);
  FuzzSetVar("fz_str", t[1]);
  FuzzSetVar("fz_start", t[2]);
  FuzzSetVar("fz_range", t[3]);
  FuzzRunLines(
      "tw_regex match fz_out server_var(fz_re) server_var(fz_str) server_var(fz_start) server_var(fz_range)\n"
      "tw_regex search fz_out server_var(fz_re) server_var(fz_str) server_var(fz_start)\n"
      "tw_regex matchformat fz_out server_var(fz_re) server_var(fz_str)\n");
}

TW_FUZZ_TARGET(format) {
  std::vector<std::string> t = Texts(data, size, 4);
  FuzzSetVar("fz_f", t[0]);
  FuzzSetVar("fz_t1", t[1]);
  FuzzSetVar("fz_t2", t[2]);
  FuzzSetVar("fz_t3", t[3]);
  FuzzRunLines("tw_format fz_out server_var(fz_f) server_var(fz_t1) server_var(fz_t2) server_var(fz_t3)\n"
               "tw_format fz_out server_var(fz_f)\n");
}

TW_FUZZ_TARGET(sql) {
  static bool opened = [] {
    FuzzRunLines("tw_sql open fzdb\ntw_sql queryvalue fzdb fz_out \"create table if not exists t(a, b)\"");
    return true;
  }();
  (void)opened;
  for (const std::string& statement : FuzzSplit(data, size, '\x01', 4)) {
    FuzzSetVar("fz_sql", statement);
    FuzzRunLines("tw_sql queryvalue fzdb fz_out server_var(fz_sql)\ntw_sql query fzdb fz_rows server_var(fz_sql)\n"
                 "tw_keygroupdelete fz_rows");
  }
}

TW_FUZZ_TARGET(properties) {
  static bool joined = [] {
    FuzzRunLines("sim_addbot fuzzbot\ntw_getuserid fz_bot fuzzbot");
    return true;
  }();
  (void)joined;
  std::vector<std::string> t = Texts(data, size, 4);
  FuzzSetVar("fz_path", t[0]);
  FuzzSetVar("fz_value", t[1]);
  FuzzSetVar("fz_class", t[2]);
  FuzzSetVar("fz_prop", t[3]);
  FuzzRunLines("tw_getindexprop fz_out 1 server_var(fz_path)\ntw_getindexprop fz_out 0 server_var(fz_path)\n"
               "tw_setindexprop 1 server_var(fz_path) server_var(fz_value)\n"
               "tw_getplayerprop fz_out server_var(fz_bot) server_var(fz_path)\n"
               "tw__findoffset server_var(fz_class) server_var(fz_prop)\n"
               "tw_setindexprop 1 server_var(fz_path) 100\n");
}
