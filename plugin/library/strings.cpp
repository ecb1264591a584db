// The string commands: tw_xstring and tw_xtoken with their prefix twins tw_string and tw_token (engine
// tokens, no binder), and strcmp, strlen, format, formatv, formatqv with three doors each. Every one works on
// the text of a server variable; none keeps state between calls.
#include "library/strings.h"

#include <sqlite3.h>
#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "library/numbers.h"
#include "vstdlib.h"

// ---- format passes ----

FormatText::FormatText(const char* format) {
  snprintf(m_work, sizeof m_work, "%s", format);
  m_out[0] = '\0';
}

void FormatText::Substitute(const char* match, const char* replacement) {
  Q_StrSubst(m_work, match, replacement, m_out, STRING_BUFFER_SIZE, false);
  memcpy(m_work, m_out, strlen(m_out) + 1);
}

void FormatText::Fill(int number, const char* value) {
  char placeholder[16];
  snprintf(placeholder, sizeof placeholder, "%%%d", number);
  Substitute(placeholder, value);
}

const char* FormatText::Finish() {
  Substitute("%%", "%");
  return m_out;
}

namespace {

const char* Argv(int i) {
  const char* text = engine->Cmd_Argv(i);
  return text ? text : "";
}

// Stores an edited text in the variable and shows it at level 1.
void StoreEdited(ConVar* var, const char* text) {
  if (CanSetVar(var)) var->SetValue(text);
  DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

// ---- tw_xstring ----

// Replaces every `match` in the variable's text, ignoring case. A result that had to be cut is stored cut.
void ReplaceIn(ConVar* var, const char* match, const char* replacement) {
  char out[STRING_BUFFER_SIZE];
  if (!Q_StrSubst(var->GetString(), match, replacement, out, sizeof out, false)) {
    ReportScriptError(0, "ERROR: resulting replaced string too long. Copied as much as we could.\n");
    SetLastErrorText("Resulting string too long.");
  }
  StoreEdited(var, out);
}

// The text of the variable a replacev names; null when it is missing (FindOrCreateServerVar reported it).
const char* NamedVarText(const char* name) {
  ConVar* var = FindOrCreateServerVar(name, "", false);
  return var ? var->GetString() : nullptr;
}

void Section(ConVar* var, const char* first, const char* last) {
  char out[STRING_BUFFER_SIZE];
  Q_StrSlice(var->GetString(), ParseScriptInt(first), ParseScriptInt(last), out, sizeof out);
  StoreEdited(var, out);
}

// Three words: replace and replacev remove; any other operator does nothing, silently.
void EditWithOneValue(ConVar* var, const char* op) {
  if (strcasecmp(op, "replace") == 0) {
    ReplaceIn(var, Argv(3), "");
  } else if (strcasecmp(op, "replacev") == 0) {
    if (const char* match = NamedVarText(Argv(3))) ReplaceIn(var, std::string(match).c_str(), "");
  }
}

void EditWithTwoValues(ConVar* var, const char* op) {
  if (strcasecmp(op, "replace") == 0) {
    ReplaceIn(var, Argv(3), Argv(4));
  } else if (strcasecmp(op, "replacev") == 0) {
    const char* match = NamedVarText(Argv(3));
    if (!match) return;
    // Copies: the texts belong to variables, and either may be the one being edited.
    std::string matchText(match);
    const char* replacement = NamedVarText(Argv(4));
    if (replacement) ReplaceIn(var, matchText.c_str(), std::string(replacement).c_str());
  } else if (strcasecmp(op, "section") == 0) {
    Section(var, Argv(3), Argv(4));
  } else {
    DbgMsg(0, "Incorrect number of parameter or bad operation\n");
    SetLastErrorText("Incorrect number of parameters");
  }
}

void XString_f() {
  if (!*Argv(1)) {
    DbgMsg(0, "Specify a var !\n");
    DbgMsg(0, "Syntax: tw_xstring <variable> <operator> <value1> [value2]\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* var = FindServerVar(Argv(1));
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be found\n", Argv(1));
    return;
  }
  switch (engine->Cmd_Argc()) {
    case 4:
      EditWithOneValue(var, Argv(2));
      break;
    case 5:
      EditWithTwoValues(var, Argv(2));
      break;
    default:
      DbgMsg(0, "Incorrect number of parameters.\n");
      SetLastErrorText("Incorrect number of parameters");
  }
}

// ---- tw_xtoken ----

// The separator is one string, not a set of characters: "ab" cuts only where both stand in a row.
const char* TokenSeparator(int argc) {
  if (argc == 5) return Argv(4);
  return argc == 4 ? " " : "";
}

void XToken_f() {
  const int argc = engine->Cmd_Argc();
  if (argc > 5 || argc < 3) {
    DbgMsg(0, "Incorrect number of parameters\n    Syntax: tw_xtoken <variable> <string> <token#> [tokenchars]\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  const char* separator = TokenSeparator(argc);
  DbgMsg(2, "tw_token, cSeps: \"%s\", iSeps: %d\n", separator, int(strlen(separator)));
  std::vector<std::string> tokens;
  Q_SplitString(Argv(2), separator, tokens);
  const char* name = Argv(1);
  if (!*name) {
    DbgMsg(0, "Specify a var !\n");
    SetLastErrorText("Not enough arguments.");
    return;
  }
  ConVar* var = nullptr;
  if (strcmp(Argv(3), "0") == 0) {
    var = SetVarInt(name, int(tokens.size()), false);
  } else {
    const int number = ParseScriptInt(Argv(3));
    if (number < 1 || size_t(number) > tokens.size()) {
      DbgMsg(0, "The specified token number %d doesn't exist\n", number);
      SetLastErrorText("Specified token doesn't exist.");
      return;
    }
    var = SetVarText(name, tokens[size_t(number) - 1].c_str(), false);
  }
  if (!var)
    DbgMsg(0, "The var \"%s\" could not be set.\n", name);
  else
    DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

// ---- comparing and measuring ----

// Stores with force true, except that 0 is never forced (SetVarInt's rule).
void StoreMeasure(const char* name, int value) {
  ConVar* var = SetVarInt(name, value, true);
  if (!var) {
    DbgMsg(0, "The var \"%s\" could not be set.\n", name);
    SetLastErrorText("Variable could not be set.");
    return;
  }
  DbgMsg(1, "%s = \"%s\"\n", var->GetName(), var->GetString());
}

// Bytes compare as unsigned values, with regard to case; the result is exactly -1, 0 or 1.
void StrCmp_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  int value = 0;
  if (args.Argc() > 2) {
    const int order = strcmp(args.Argv(2), args.Argv(3));
    value = (order > 0) - (order < 0);
  }
  StoreMeasure(args.Argv(1), value);
}

void StrLen_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  StoreMeasure(args.Argv(1), args.Argc() > 1 ? int(strlen(args.Argv(2))) : 0);
}

// ---- the format family ----

// Where a format command takes the values of its placeholders: the arguments behind the format as they
// stand, the texts of the variables they name, or those texts quoted for SQL.
enum class FormatValues { Arguments, Variables, QuotedVariables };

// What SQLite's quoting reports when it gives no text; the pass goes on with the placeholder left in place.
void ReportMissingValue() {
  ReportScriptError(0, "ERROR: You did not provide enough parameters for the string you specified.\n");
  SetLastErrorText("Not enough arguments.");
}

// Fills one placeholder from the variable `name`; false, after the report, when it is missing, and the
// command then stores nothing.
bool FillFromVariable(FormatText& text, int number, const char* name, bool quoted) {
  ConVar* var = FindOrCreateServerVar(name, "", false);
  if (!var) {
    ReportScriptError(0, "ERROR: variable %s does not exist.\n", name);
    SetLastErrorText("Variable does not exist");
    return false;
  }
  if (!quoted) {
    text.Fill(number, var->GetString());
    return true;
  }
  char* escaped = sqlite3_mprintf("%q", var->GetString());
  if (!escaped) {
    ReportMissingValue();
    return true;
  }
  text.Fill(number, escaped);
  sqlite3_free(escaped);
  return true;
}

void Format(bool expand, FormatValues values) {
  ArgView args(expand);
  FormatText text(args.Argv(2));
  for (int i = 1; i <= args.Argc() - 3; ++i) {
    const char* argument = args.Argv(i + 2);
    if (values == FormatValues::Arguments)
      text.Fill(i, argument);
    else if (!FillFromVariable(text, i, argument, values == FormatValues::QuotedVariables))
      return;
  }
  SetVarText(args.Argv(1), text.Finish(), true);
}

void Format_h(bool expand, bool fromConsole) { Format(expand, FormatValues::Arguments); }
void FormatVars_h(bool expand, bool fromConsole) { Format(expand, FormatValues::Variables); }
void FormatQuotedVars_h(bool expand, bool fromConsole) { Format(expand, FormatValues::QuotedVariables); }

const CommandRow kStringCommands[] = {
    {"strcmp", StrCmp_h, 3, "Syntax: %s <returnvar> <string1> <string2>\n",
     "Compares two strings with regard to case and stores -1, 0 or 1.", DOORS_ALL},
    {"strlen", StrLen_h, 1, "Syntax: %s <returnvar> \"string-to-measure\"\n\n",
     "Stores the length of a string in bytes.", DOORS_ALL},
    {"format", Format_h, 3, "Syntax: %s <variable> <format-string> [token1] [token2] [...] [tokenN]\n",
     "Fills the placeholders %1, %2, ... of a format string with the tokens that follow it; %% is a percent "
     "sign.",
     DOORS_ALL},
    {"formatv", FormatVars_h, 3, "Syntax: %s <variable> <format-string> [var1] [var2] [...] [varN]\n",
     "Fills the placeholders %1, %2, ... of a format string with the values of the variables that follow it.",
     DOORS_ALL},
    {"formatqv", FormatQuotedVars_h, 3, "Syntax: %s <variable> <format-string> [var1] [var2] [...] [varN]\n",
     "Fills the placeholders %1, %2, ... of a format string with the values of the variables that follow it, "
     "each single quote doubled for SQL.",
     DOORS_ALL},
};
const CommandTable s_stringCommands(kStringCommands);

const PlainCommandRow kStringPlainCommands[] = {
    {"tw_xstring", XString_f,
     "Edits a variable's text: replace <text> [with], replacev <var> [withvar], section <first> <last>."},
    {"tw_xtoken", XToken_f,
     "Stores token # of a string cut at a separator (a blank by default); token 0 stores the count."},
};
const CommandTable s_stringPlainCommands(kStringPlainCommands);

const PrefixTwinRow kStringPrefixTwins[] = {
    {"tw_string", 3, "tw tw_xstring ", "Syntax: tw_string <variable> <operator> <value1> [value2]\n",
     "tw_string executing: %s\n", 1,
     "Edits a variable's text: replace <text> [with], replacev <var> [withvar], section <first> <last>. Expands "
     "event and server variables."},
    {"tw_token", 3, "tw tw_xtoken ", "Syntax: tw_token <variable> <string> [token#] [tokenchar]\n",
     "tw_token executing: %s", 2,
     "Stores token # of a string cut at a separator (a blank by default); token 0 stores the count. Expands event "
     "and server variables."},
};
const CommandTable s_stringPrefixTwins(kStringPrefixTwins);

}  // namespace
