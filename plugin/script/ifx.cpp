// ifx: the expression and truth conditions. `ifx parse(<expression>) do` tests an expression through the
// library's shared parser, `ifx true(<var>) do` and `ifx false(<var>) do` the truth of a variable's text.
// Only the do form exists; the result goes through the conditionals' ConditionTrue/ConditionFalse.
#include <strings.h>

#include <cstdlib>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "library/math.h"
#include "script/conditionals.h"

namespace {

// Tokens of the shortest form: the command, the mode, "(", the operand, ")".
constexpr int kIfxTokens = 4;

const char* Argv(int i) {
  const char* text = engine->Cmd_Argv(i);
  return text ? text : "";
}

const char* Args() {
  const char* text = engine->Cmd_Args();
  return text ? text : "";
}

// Empty: no text, or a text that reads whole as a number (a decimal integer or a float) whose value is 0.
// So "0", "0.0", "00" and "" are empty, while "abc" and "0x" are not.
bool IsEmptyValue(const char* text) {
  if (!*text) return true;
  char* end = nullptr;
  strtoll(text, &end, 10);
  const bool integer = *end == '\0';
  const double value = strtod(text, &end);
  return (integer || *end == '\0') && value == 0.0;
}

// Mode true holds for a variable that isn't empty, mode false for one that is; a missing variable fails both.
void TestVariable(const char* name, bool trueMode) {
  ConVar* var = FindServerVar(name);
  if (var && IsEmptyValue(var->GetString()) != trueMode)
    ConditionTrue(nullptr, true);
  else
    ConditionFalse(true);
}

// A refused expression ends the command: nothing is set, so the block behind runs.
void TestExpression(const char* expression) {
  float value;
  if (!Math_Evaluate(expression, value)) return;
  if (value != 0.0f || value != value)
    ConditionTrue(nullptr, true);
  else
    ConditionFalse(true);
}

void Ifx_f() {
  if (engine->Cmd_Argc() < kIfxTokens) {
    DbgMsg(0, "%s: Syntax error.\n\t%s", Argv(0), Args());
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
    return;
  }
  const char* mode = Argv(1);
  if (strcasecmp(mode, "parse") == 0) {
    TestExpression(Argv(3));
  } else if (strcasecmp(mode, "true") == 0) {
    TestVariable(Argv(3), true);
  } else if (strcasecmp(mode, "false") == 0) {
    TestVariable(Argv(3), false);
  } else {
    DbgMsg(0, "%s: Syntax error. Unsupported mode: %s\n\t%s", Argv(0), mode, Args());
    ReportErrorLocation();
    SetLastErrorText("Syntax error");
  }
}

const PlainCommandRow kIfxCommands[] = {
    {"ifx", Ifx_f,
     "Lets the nested block behind pass when a condition holds: ifx parse(<expression>) do, ifx true(<var>) do, "
     "ifx false(<var>) do."},
};
const CommandTable s_ifxCommands(kIfxCommands);

}  // namespace
