// Math: the shared expression parser with its variable bindings, mathparse, tw_xmath and tw_xrand with
// their prefix twins. The parser is muParser, whose value type here is double: each name an expression uses
// is bound to a double slot of stable address tied to its console variable, loaded from the variable's
// float before every evaluation and written back to it when `=` changed it.
#include "library/math.h"

#include <muParser.h>
#include <strings.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "library/numbers.h"
#include "tier0.h"
#include "vstdlib.h"

namespace {

// ---- the parser and its bindings ----

// A variable's slot: the parser reads and assigns `value`; `loaded` is what the variable held before the
// evaluation, so that only a slot that `=` changed is written back.
struct Binding {
  ConVar* var;
  double value;
  double loaded;
};

struct ExpressionParser {
  mu::Parser parser;
  std::deque<Binding> bindings;  // a deque keeps the slots' addresses while it grows
  double spare = 0.0;            // the slot of every name that has no variable
  std::string expression;        // the expression set last: an unchanged one keeps its compiled form
  bool expressionSet = false;
};

ExpressionParser& Shared() {
  static ExpressionParser& shared = *new ExpressionParser;  // kept to the process's end
  return shared;
}

// The parser asks for a slot while it compiles an expression, once per name until the bindings are cleared.
double* BindName(const char* name, void*) {
  ConVar* var = FindOrCreateServerVar(name, nullptr, false);
  if (!var) return &Shared().spare;
  const double now = double(var->GetFloat());
  Shared().bindings.push_back(Binding{var->GetParent(), now, now});
  return &Shared().bindings.back().value;
}

void LoadBindings() {
  for (Binding& binding : Shared().bindings) {
    TW_ASSERT(binding.var == binding.var->GetParent(), "a binding holds the variable whose values live in it");
    binding.value = binding.loaded = double(binding.var->m_fValue);
  }
}

// A changed slot goes to the variable's float only; its text stays as it was.
void StoreAssignments() {
  for (Binding& binding : Shared().bindings)
    if (memcmp(&binding.value, &binding.loaded, sizeof binding.value) != 0)
      binding.var->m_fValue = float(binding.value);
}

double Not(double value) { return value == 0.0 ? 1.0 : 0.0; }
double And(double a, double b) { return (a != 0.0 && b != 0.0) ? 1.0 : 0.0; }
double Or(double a, double b) { return (a != 0.0 || b != 0.0) ? 1.0 : 0.0; }
double Xor(double a, double b) { return ((a != 0.0) != (b != 0.0)) ? 1.0 : 0.0; }
double If(double condition, double whenTrue, double whenFalse) { return condition != 0.0 ? whenTrue : whenFalse; }

// ---- mathparse ----

// Beyond this a whole number has no "%ld" text.
constexpr float kLongLimit = 9.2233720e18f;

// A whole result is stored as integer text; any other one through SetValue(float). Whole numbers past the
// 64-bit range keep their full decimal text, infinities and NaN the float's.
void StoreResult(ConVar* var, float result) {
  if (!CanSetVar(var)) return;
  if (!std::isfinite(result) || result != std::trunc(result)) {
    var->SetValue(result);
    return;
  }
  char text[64];
  if (std::fabs(result) < kLongLimit)
    snprintf(text, sizeof text, "%ld", long(result));
  else
    snprintf(text, sizeof text, "%.0f", double(result));
  var->SetValue(text);
}

void MathParse_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ConVar* var = FindServerVar(args.Argv(1));
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be set\n", args.Argv(1));
    SetLastErrorText("Variable does not exist");
    return;
  }
  float result;
  if (Math_Evaluate(args.Argv(2), result)) StoreResult(var, result);
}

// ---- tw_xmath ----

const char* Argv(int i) {
  const char* text = engine->Cmd_Argv(i);
  return text ? text : "";
}

void ReportFloat(ConVar* var) { DbgMsg(1, "%s = \"%lf\"\n", var->GetName(), double(var->GetFloat())); }
void ReportInt(ConVar* var) { DbgMsg(1, "%s = \"%ld\"\n", var->GetName(), long(var->GetInt())); }

void StoreFloat(ConVar* var, float value) {
  var->SetValue(value);
  ReportFloat(var);
}

void StoreInt(ConVar* var, long long value) {
  var->SetValue(value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : int(value));
  ReportInt(var);
}

struct FloatFunction {
  const char* name;
  double (*function)(double);
};
const FloatFunction kFloatFunctions[] = {
    {"sin", std::sin}, {"cos", std::cos}, {"tan", std::tan}, {"atan", std::atan}, {"asin", std::asin}, {"acos", std::acos},
};

// The operators that work on the variable's float whatever its text. False for any other word.
bool ApplyToFloatValue(ConVar* var, const char* op) {
  for (const FloatFunction& row : kFloatFunctions) {
    if (strcasecmp(op, row.name) != 0) continue;
    var->SetValue(float(row.function(double(var->GetFloat()))));
    return true;
  }
  if (strcasecmp(op, "float") == 0) {
    char text[64];
    snprintf(text, sizeof text, "%10.10f", double(var->GetFloat()));
    var->SetValue(0.001f);
    var->SetValue(text);
    return true;
  }
  if (strcasecmp(op, "int") == 0) {
    const int value = var->GetInt();
    var->SetValue(0);
    var->SetValue(float(value));
    return true;
  }
  return false;
}

enum class NumberClass { NotNumeric, Integer, Float };

// An integer text holds no "." and is all one decimal integer; a float text holds one and is all one number.
NumberClass Classify(const char* text) {
  if (!*text) return NumberClass::NotNumeric;
  char* end = nullptr;
  if (!strchr(text, '.')) {
    strtoll(text, &end, 10);
    return *end == '\0' ? NumberClass::Integer : NumberClass::NotNumeric;
  }
  strtod(text, &end);
  return *end == '\0' ? NumberClass::Float : NumberClass::NotNumeric;
}

// The variable's integer as its text reads, saturated to the int range.
long long IntegerOf(ConVar* var) { return ParseScriptInt(var->GetString()); }

enum class MathOp { Add, Subtract, Multiply, Divide, Set, Power, Root, Unknown };

struct OperatorName {
  const char* name;
  MathOp op;
};
const OperatorName kOperatorNames[] = {
    {"add", MathOp::Add},       {"+", MathOp::Add},      {"subtract", MathOp::Subtract}, {"-", MathOp::Subtract},
    {"multiply", MathOp::Multiply}, {"*", MathOp::Multiply}, {"divide", MathOp::Divide}, {"/", MathOp::Divide},
    {"set", MathOp::Set},       {"=", MathOp::Set},      {"power", MathOp::Power},     {"^", MathOp::Power},
    {"root", MathOp::Root},
};

MathOp OperatorOf(const char* word) {
  for (const OperatorName& row : kOperatorNames)
    if (strcasecmp(word, row.name) == 0) return row.op;
  return MathOp::Unknown;
}

// Integer arithmetic runs in 64 bits on operands of 32, so nothing overflows; the store saturates.
void ApplyToInteger(ConVar* var, MathOp op, const char* valueText) {
  const long long current = IntegerOf(var);
  const long long value = ParseScriptInt(valueText);
  switch (op) {
    case MathOp::Add: return StoreInt(var, current + value);
    case MathOp::Subtract: return StoreInt(var, current - value);
    case MathOp::Multiply: return StoreInt(var, current * value);
    case MathOp::Divide: return StoreFloat(var, var->GetFloat() / float(value));
    case MathOp::Set: return StoreInt(var, value);
    case MathOp::Power: return StoreInt(var, TruncateScriptInt(std::pow(double(current), double(value))));
    case MathOp::Root: return StoreInt(var, TruncateScriptInt(std::pow(double(current), 1.0 / double(value))));
    case MathOp::Unknown: break;
  }
  DbgMsg(0, "Bad operation\n");
  SetLastErrorText("Invalid operation");
}

void ApplyToFloat(ConVar* var, MathOp op, const char* valueText) {
  const float current = var->GetFloat();
  const float value = float(strtod(valueText, nullptr));
  const int whole = ParseScriptInt(valueText);
  switch (op) {
    case MathOp::Add: return StoreFloat(var, current + value);
    case MathOp::Subtract: return StoreFloat(var, current - value);
    case MathOp::Multiply: return StoreFloat(var, current * value);
    case MathOp::Divide: return StoreFloat(var, current / value);
    case MathOp::Set: return StoreFloat(var, value);
    case MathOp::Power: return StoreFloat(var, float(std::pow(double(current), double(whole))));
    case MathOp::Root: return StoreFloat(var, float(std::pow(double(current), 1.0 / double(whole))));
    case MathOp::Unknown: break;
  }
  DbgMsg(0, "Bad operation\n");
  SetLastErrorText("Bad operation");
}

// "abs" is the one operator without a value; a float is cut toward zero first and stored as an integer.
void ApplyWithoutValue(ConVar* var, NumberClass kind, const char* op) {
  if (strcasecmp(op, "abs") != 0) {
    DbgMsg(0, "Bad operation\n");
    SetLastErrorText("Invalid operation");
    return;
  }
  const long long value = kind == NumberClass::Integer ? IntegerOf(var) : TruncateScriptInt(var->GetFloat());
  var->SetValue(int(std::min<long long>(value < 0 ? -value : value, INT_MAX)));
  ReportFloat(var);
}

void XMath_f() {
  const char* name = Argv(1);
  if (!*name) {
    DbgMsg(0, "Specify a var !\n");
    DbgMsg(0, "Syntax: tw_xmath <variable> <operator> <value1> [value2]\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* var = FindServerVar(name);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", name);
    return;
  }
  if (!CanSetVar(var)) return;
  const int argc = engine->Cmd_Argc();
  if (argc == 3 && ApplyToFloatValue(var, Argv(2))) return;
  const NumberClass kind = Classify(var->GetString());
  if (kind == NumberClass::NotNumeric) {
    DbgMsg(0, "Math function called on a non-numeric value.\n");
    SetLastErrorText("Math function called on a non-numeric value.");
  } else if (argc == 3) {
    ApplyWithoutValue(var, kind, Argv(2));
  } else if (argc == 4) {
    if (kind == NumberClass::Integer)
      ApplyToInteger(var, OperatorOf(Argv(2)), Argv(3));
    else
      ApplyToFloat(var, OperatorOf(Argv(2)), Argv(3));
  } else {
    DbgMsg(0, "Incorrect number of parameter\n");
    SetLastErrorText("Incorrect number of parameters");
  }
}

// ---- tw_xrand ----

void XRand_f() {
  if (engine->Cmd_Argc() != 4) {
    DbgMsg(0, "Syntax: tw_xrand <cvar> <minimum> <maximum>\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  const char* name = Argv(1);
  if (!*name) {
    DbgMsg(0, "Specify a var !\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* var = SetVarInt(name, RandomInt(ParseScriptInt(Argv(2)), ParseScriptInt(Argv(3))), false);
  if (!var)
    DbgMsg(0, "The var \"%s\" could not be set\n", name);
  else
    DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

const CommandRow kMathCommands[] = {
    {"mathparse", MathParse_h, 2, "Syntax: %s <var> <math-expression>\n",
     "Evaluates a math expression, with server variables as its variables, into a variable.", DOORS_ALL},
};
const CommandTable s_mathCommands(kMathCommands);

const PlainCommandRow kMathPlainCommands[] = {
    {"tw_xmath", XMath_f,
     "Changes a numeric variable in place: add, subtract, multiply, divide, set, power, root with a value; abs, "
     "sin, cos, tan, atan, asin, acos, float, int without."},
    {"tw_xrand", XRand_f, "Stores a random integer from minimum to maximum, both included."},
};
const CommandTable s_mathPlainCommands(kMathPlainCommands);

const PrefixTwinRow kMathPrefixTwins[] = {
    {"tw_math", 3, "tw tw_xmath ", "Syntax: tw_math <variable> <operator> <value1> [value2]\n",
     "tw_math executing: %s\n", 2,
     "Changes a numeric variable in place: add, subtract, multiply, divide, set, power, root with a value; abs, "
     "sin, cos, tan, atan, asin, acos, float, int without. Expands event and server variables."},
    {"tw_rand", 4, "tw tw_xrand ", "Syntax: tw_rand <cvar> <minimum> <maximum>\n", "tw_rand executing: %s", 1,
     "Stores a random integer from minimum to maximum, both included. Expands event and server variables."},
};
const CommandTable s_mathPrefixTwins(kMathPrefixTwins);

}  // namespace

// ---- the parser's life ----

void Math_OnLoad() {
  mu::Parser& parser = Shared().parser;
  try {
    parser.DefineInfixOprt("!", Not, 1);
    parser.SetVarFactory(BindName, nullptr);
    parser.EnableOptimizer(true);
    parser.DefineOprt("and", And, mu::prLOGIC, mu::oaLEFT, true);
    parser.DefineOprt("or", Or, mu::prLOGIC, mu::oaLEFT, true);
    parser.DefineOprt("xor", Xor, mu::prLOGIC, mu::oaLEFT, true);
    parser.DefineFun("if", If, true);
  } catch (const mu::ParserError& error) {
    DbgMsg(0, "[Tidewright] The expression parser could not be set up: %s\n", error.GetMsg().c_str());
  }
}

void Math_OnLevelInit() {
  Shared().parser.ClearVar();
  Shared().bindings.clear();
}

bool Math_Evaluate(const char* expression, float& result) {
  ExpressionParser& shared = Shared();
  try {
    if (!shared.expressionSet || shared.expression != expression) {
      shared.parser.SetExpr(expression);
      shared.expression = expression;
      shared.expressionSet = true;
    }
    LoadBindings();
    const double value = shared.parser.Eval();
    StoreAssignments();
    result = float(value);
    return true;
  } catch (const mu::ParserError& error) {
    DbgMsg(0, "Exception: %s!\n", error.GetMsg().c_str());
    return false;
  }
}
