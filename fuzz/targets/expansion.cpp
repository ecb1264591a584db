// Expansion of server and event variables and the conditionals, on console lines. Each input line is
// wrapped by the command its first byte picks (an expanding log, a variable assignment, if/then, if/do,
// the expanded twin of if); variables that hold blanks, quotes and names of other variables are set first.
#include "fuzz_server.h"
#include "fuzz_target.h"
#include "script/conditionals.h"

namespace {

const char* const kWrappers[] = {"tw tw_xlogq ", "tw_set fz_out ", "if (", "tw if (", "if (server_var(fz_var) "};
const char* const kEnds[] = {"", "", ") then tw_set fz_if 1", ") do", ") then tw_set fz_if 1"};
const char* const kOperators[] = {"=", "!=", ">", "<", ">=", "<=", "in", "notin"};

}  // namespace

TW_FUZZ_TARGET(expansion) {
  FuzzSetVar("fz_var", "value with \"blanks\" ; // and server_var(fz_ref)");
  FuzzSetVar("fz_ref", "fz_var");
  std::string lines;
  for (const std::string& line : FuzzSplit(data, size, '\n', FUZZ_MAX_LINES)) {
    if (line.empty()) continue;
    size_t pick = uint8_t(line[0]) % std::size(kWrappers);
    lines += kWrappers[pick] + line.substr(1) + kEnds[pick] + "\n";
    std::vector<std::string> sides = FuzzSplit(reinterpret_cast<const uint8_t*>(line.data()), line.size(), ' ', 2);
    for (const char* op : kOperators)
      CompareTokens(sides[0].c_str(), ConditionOperatorCode(op), sides.size() > 1 ? sides[1].c_str() : "");
  }
  FuzzRunLines(lines);
}
