// The checks of lines and sections. Severity: a mistake that makes a line or section do something else
// than written (an unknown name, a missing block or event, a broken condition, a section of a name taken)
// is an error; a line that is only ignored or suspicious is a warning.
#include "checks.h"

#include <strings.h>

#include <cstring>

#include "commandwalk.h"
#include "doortext.h"
#include "nearest.h"
#include "script/conditionals.h"

namespace {

// What stands for a server_var() or event_var() value in a condition that expands.
const char kValue[] = "<value>";

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

bool IsOneOf(const std::string& name, std::initializer_list<const char*> names) {
  for (const char* n : names)
    if (name == n) return true;
  return false;
}

std::string Hint(const std::string& nearest) { return nearest.empty() ? "" : "; did you mean " + Quoted(nearest) + "?"; }

// ---- the minimum counts of the plugin's doors ----

// By lower-case door name, from the command tables.
const std::unordered_map<std::string, DoorText>& DoorMinimums() {
  static const std::unordered_map<std::string, DoorText> minimums = [] {
    std::unordered_map<std::string, DoorText> m;
    for (const CommandTableInfo& table : CommandTables())
      for (size_t i = 0; i < table.count; ++i) {
        if (table.prefixRows) {
          const PrefixTwinRow& row = table.prefixRows[i];
          m[Folded(row.name)] = {row.name, row.minArgc, FormatUsage("%s", row.usage), false};
        }
        if (table.rows && table.rows[i].usage)
          for (const DoorText& door : ConsoleDoors(table.rows[i])) m[Folded(door.name)] = door;
      }
    return m;
  }();
  return minimums;
}

// ---- gathering what the scripts make ----

void GatherCommand(const WalkedCommand& c, ScriptFacts& facts) {
  const bool makesName = IsOneOf(c.name, {"alias", "tw_regcmd", "tw_xregcmd", "tw_regsaycmd", "tw_xregsaycmd",
                                          "tw_regclientcmd", "tw_xregclientcmd", "pycmd_register", "tw_set", "tw_xset",
                                          "tw_setinfo", "tw_xsetinfo", "setinfo"});
  const bool isRegistering = c.name.rfind("tw_", 0) == 0;
  const bool expands = c.expanded || (isRegistering && c.name.rfind("tw_x", 0) != 0);
  if (makesName && c.args.Argc() > 1 && !(expands && StartsVariableForm(c.args, 1))) {
    const std::string name = c.args.Argv(1);
    if (facts.names.insert(Folded(name)).second) facts.nameList.push_back(name);
  }
  if ((c.name == "tw_loadevents" || c.name == "tw_xloadevents") && c.args.Argc() > 1)
    facts.eventFiles.push_back(c.args.Argv(c.args.Argc() > 2 ? 2 : 1));
}

// ---- checking one command ----

class LineChecker {
public:
  LineChecker(const ScannedScript& script, int line, const ScriptFacts& facts, const ServerKnowledge& known,
              Findings& out)
      : m_script(script), m_line(line), m_facts(facts), m_known(known), m_out(out) {}

  void Command(const WalkedCommand& c) {
    if (c.expanded && StartsVariableForm(c.args, 0)) return;
    const std::string name = c.args.Argv(0);
    if (!m_known.IsName(name) && !m_facts.names.count(Folded(name))) {
      std::string nearest = NearestName(name, m_known.Names());
      const std::string own = NearestName(name, m_facts.nameList);
      if (nearest.empty() || (!own.empty() && NameDistance(name, own) < NameDistance(name, nearest))) nearest = own;
      return Error("unknown command " + Quoted(name) + Hint(nearest));
    }
    if (IsOneOf(c.name, {"tw_doblock", "tw_xdoblock"})) BlockArgument(c, 1, c.name == "tw_doblock");
    if (IsOneOf(c.name, {"tw_regcmd", "tw_regsaycmd", "tw_regclientcmd"})) BlockArgument(c, 2, true);
    if (IsOneOf(c.name, {"tw_xregcmd", "tw_xregsaycmd", "tw_xregclientcmd"})) BlockArgument(c, 2, false);
    if (c.name == "tw_xif" || c.name == "if") return Condition(c);
    if (c.name == "ifx") return Ifx(c);
    Count(c);
  }

private:
  void Error(std::string text) { m_out.Error(m_script.fileIndex, m_script.path, m_line, std::move(text)); }

  void BlockArgument(const WalkedCommand& c, int index, bool expandedTwin) {
    if (c.args.Argc() <= index) return;  // the door prints its usage; no block to look for
    if ((expandedTwin || c.expanded) && StartsVariableForm(c.args, index)) return;
    const std::string block = c.args.Argv(index);
    if (m_known.IsBlock(block) || m_facts.blocks.count(block)) return;
    const size_t slash = block.rfind('/');
    if (slash != std::string::npos && m_known.IsPythonAddon(block.substr(0, slash))) return;
    std::vector<std::string> blocks = m_known.BlockNames();
    for (const auto& [name, place] : m_facts.blocks) blocks.push_back(name);
    Error("no block " + Quoted(block) + " in the checked scripts or the scripts loaded at start-up" +
          Hint(NearestName(block, blocks)));
  }

  // Below its minimum a door prints its usage and runs nothing. Where the line expands, a variable form
  // counts as the one word it becomes.
  void Count(const WalkedCommand& c) {
    const auto found = DoorMinimums().find(c.name);
    if (found == DoorMinimums().end()) return;
    const DoorText& door = found->second;
    int words = c.args.Argc();
    if (door.expands || c.expanded) {
      const std::unique_ptr<CommandArgs> expanded(Cmd_Tokenize(ReplaceVariableForms(c.text, kValue).c_str()));
      words = expanded->Argc();
    }
    if (words < door.minArgc)
      Error("too few words for " + Quoted(c.args.Argv(0)) + " (at least " + std::to_string(door.minArgc) +
            ", its name included): " + door.usage);
  }

  void Condition(const WalkedCommand& c) {
    const bool expands = c.expanded || c.name == "if";
    const std::string text = expands ? ReplaceVariableForms(c.text, kValue) : c.text;
    std::unique_ptr<CommandArgs> args(Cmd_Tokenize(text.c_str()));
    const char* word = args->Argv(0);
    const bool isDo = strcasecmp(args->Argv(args->Argc() - 1), "do") == 0 || strcasecmp(args->Argv(6), "do") == 0;
    std::string trap;
    if (!expands && ReplaceVariableForms(c.text, kValue) != c.text)
      trap += "; tw_xif doesn't expand server_var() and event_var(): write \"if\" or \"tw tw_xif\"";
    if (isDo) trap += "; a malformed condition lets the block behind it run";
    if (args->Argc() < CONDITION_MIN_TOKENS)
      return Error(std::string("condition too short: write \"") + word + " (LEFT OPERATOR RIGHT) then COMMAND\" or \"" +
                   word + " (LEFT OPERATOR RIGHT) do\"" + trap);
    switch (ConditionShapeError(args->Argv(1), args->Argv(5), args->Argv(6), args->Args() ? args->Args() : "")) {
      case 2:
        return Error("condition doesn't start with \"(\"" + trap);
      case 3:
        return Error("expected \")\" after the three words of the condition (LEFT OPERATOR RIGHT), found " +
                     Quoted(args->Argv(5)) + ": quote a value that holds blanks" + trap);
      case 4:
        return Error("expected \"then\" or \"do\" after the condition, found " + Quoted(args->Argv(6)) + trap);
      case 5:
        return Error(isDo ? "\") do\" isn't written as such: write \") do\" in lower case" + trap
                          : std::string("\") then \" isn't written as such: write \") then COMMAND\" in lower case, with "
                                        "the command behind it"));
    }
    const char* op = args->Argv(3);
    if (strcmp(op, kValue) != 0 && ConditionOperatorCode(op) == COMPARE_UNSUPPORTED) {
      static const std::vector<std::string> kSpellings = {
          "equalto", "=", "==", "notequalto", "!=", "greaterthan", ">", "lessthan", "<", "notlessthan", ">=", "=>",
          "notgreaterthan", "=<", "<=", "in", "notin"};
      Error("unsupported comparison operator " + Quoted(op) + Hint(NearestName(op, kSpellings)) +
            (isDo ? " (the condition counts as false)" : ""));
    }
  }

  void Ifx(const WalkedCommand& c) {
    const char* kForms = ": write \"ifx parse(EXPRESSION) do\", \"ifx true(VARIABLE) do\" or \"ifx false(VARIABLE) do\"";
    if (c.args.Argc() < 4) return Error(std::string("ifx condition too short") + kForms);
    const char* mode = c.args.Argv(1);
    if (strcasecmp(mode, "parse") != 0 && strcasecmp(mode, "true") != 0 && strcasecmp(mode, "false") != 0)
      Error("unsupported ifx mode " + Quoted(mode) + kForms);
  }

  const ScannedScript& m_script;
  int m_line;
  const ScriptFacts& m_facts;
  const ServerKnowledge& m_known;
  Findings& m_out;
};

// A do-form condition decides about the block on the next line; a line that is no "{" takes its place.
bool IsDoLine(const std::string& text) {
  bool isDo = false;
  WalkCommands(text, [&](const WalkedCommand& c) {
    const int last = c.args.Argc() - 1;
    isDo = isDo || (IsOneOf(c.name, {"tw_xif", "if", "ifx"}) && strcasecmp(c.args.Argv(last), "do") == 0) ||
           (IsOneOf(c.name, {"tw_xelse", "else"}) && strcasecmp(c.args.Argv(1), "do") == 0);
  });
  return isDo;
}

void CheckSections(const ScannedScript& script, ScriptFacts::Place first, const ScannedSection& section,
                   Findings& out) {
  const std::string where = " (first at " + first.file + ":" + std::to_string(first.line) + ")";
  out.Error(script.fileIndex, script.path, section.line,
            section.isEvent ? "a second event section " + Quoted(section.name) + " in script " +
                                  Quoted(script.scriptName) + where + ": the first runs twice and this one never"
                            : "duplicate block " + Quoted(section.fullName) + where + ": tw_doblock finds only the first");
}

void CheckEvents(const ScannedScript& script, const ServerKnowledge& known, Findings& out) {
  for (const ScannedSection& section : script.sections)
    if (section.isEvent && !section.name.empty() && !known.IsEvent(section.name))
      out.Error(script.fileIndex, script.path, section.line,
                "no resource file of the game tree declares the event " + Quoted(section.name) +
                    ": this section never runs" + Hint(NearestName(section.name, known.EventNames())));
}

}  // namespace

ScriptFacts GatherFacts(const std::vector<ScannedScript>& scripts) {
  ScriptFacts facts;
  for (const ScannedScript& script : scripts) {
    for (const ScannedSection& section : script.sections)
      facts.blocks.insert({section.fullName, {script.path, section.line}});
    for (const ScannedLine& line : script.lines)
      if (line.kind == ScannedLine::Text) WalkCommands(line.text, [&](const WalkedCommand& c) { GatherCommand(c, facts); });
  }
  return facts;
}

void CheckScripts(const std::vector<ScannedScript>& scripts, const ScriptFacts& facts, const ServerKnowledge& known,
                  Findings& out) {
  std::unordered_map<std::string, ScriptFacts::Place> seen;
  for (const ScannedScript& script : scripts) {
    for (const ScannedSection& section : script.sections) {
      auto [at, inserted] = seen.insert({section.fullName, {script.path, section.line}});
      if (!inserted) CheckSections(script, at->second, section, out);
    }
    CheckEvents(script, known, out);
    for (size_t i = 0; i < script.lines.size(); ++i) {
      const ScannedLine& line = script.lines[i];
      if (line.kind != ScannedLine::Text) continue;
      LineChecker checker(script, line.line, facts, known, out);
      WalkCommands(line.text, [&](const WalkedCommand& c) { checker.Command(c); });
      if (IsDoLine(line.text) && (i + 1 == script.lines.size() || script.lines[i + 1].kind != ScannedLine::Open))
        out.Warning(script.fileIndex, script.path, line.line,
                    "\"do\" without a nested block on the next line: the condition decides about the next block that "
                    "runs, wherever it comes from");
    }
    for (const TopLevelText& text : script.topLevel) {
      bool command = false;
      WalkCommands(text.text, [&](const WalkedCommand& c) {
        if (c.depth == 0 && (known.IsName(c.args.Argv(0)) || facts.names.count(Folded(c.args.Argv(0))))) command = true;
      });
      if (command) out.Warning(script.fileIndex, script.path, text.line, "command outside any section is ignored");
    }
  }
}
