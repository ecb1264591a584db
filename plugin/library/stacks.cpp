// The stack table and the `stack` command: create, delete, push, pop, save and restore a server variable,
// getlength. The command has one form and reads the engine's tokens; `tw stack ...` expands its arguments.
// Reports follow each operation's own wording: some name the script line, some don't.
#include "library/stacks.h"

#include <strings.h>

#include <utility>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "language/doors.h"

namespace {

NameTable<NamedStack>& Table() {
  static auto* table = new NameTable<NamedStack>(true);  // kept to the process's end, as stacks are
  return *table;
}

// ---- operations ----
// Each takes the engine's second and third tokens, whose meaning differs by operation: push, save and
// restore name the stack first, pop and getlength the variable first.

void Create(const char* name, const char*) {
  if (!Stacks_Create(name)) ReportScriptError(0, "The stack %s already exists.\n", name);
}

void Delete(const char* name, const char*) { Stacks_Delete(name); }

void Push(const char* name, const char* value) {
  NamedStack* stack = Stacks_Find(name);
  if (!stack) {
    DbgMsg(0, "The stack %s couldn't be found.\n", name);
    return;
  }
  stack->emplace_back(value);
}

void Save(const char* name, const char* varName) {
  ConVar* var = FindOrCreateServerVar(varName, "", false);
  if (!var) {
    ReportScriptError(0, "The variable %s does not exist.\n", varName);
    return;
  }
  NamedStack* stack = Stacks_Find(name);
  if (!stack) {
    ReportScriptError(0, "The stack %s couldn't be found.\n", name);
    return;
  }
  stack->emplace_back(var->GetString());
}

// Takes the top entry off; it is gone whatever becomes of it.
std::string TakeTop(NamedStack& stack) {
  std::string top = std::move(stack.back());
  stack.pop_back();
  return top;
}

void Restore(const char* name, const char* varName) {
  NamedStack* stack = Stacks_Find(name);
  if (!stack) {
    ReportScriptError(0, "The stack %s couldn't be found.\n", name);
    return;
  }
  if (stack->empty()) {
    ReportScriptError(0, "stack: ERROR: Pop attempt when stack empty: %s\n", name);
    return;
  }
  // The report names the command's second token, which for restore is the stack, as the variable.
  if (!SetVarText(varName, TakeTop(*stack).c_str(), false))
    ReportScriptError(0, "The var \"%s\" could not be set\n", engine->Cmd_Argv(2));
}

void Pop(const char* varName, const char* name) {
  NamedStack* stack = Stacks_Find(name);
  if (!stack) {
    DbgMsg(0, "The stack %s couldn't be found.\n", name);
    return;
  }
  if (stack->empty()) {
    DbgMsg(0, "stack: ERROR: Pop attempt when stack empty.\n");
    return;
  }
  if (!SetVarText(varName, TakeTop(*stack).c_str(), false)) DbgMsg(0, "The var \"%s\" could not be set\n", varName);
}

void GetLength(const char* varName, const char* name) {
  NamedStack* stack = Stacks_Find(name);
  if (!stack) {
    DbgMsg(0, "The stack %s couldn't be found.\n", name);
    return;
  }
  if (!SetVarInt(varName, int(stack->size()), false)) DbgMsg(0, "The var \"%s\" could not be set\n", varName);
}

struct StackOperation {
  const char* name;
  void (*run)(const char* second, const char* third);
};
const StackOperation kStackOperations[] = {
    {"create", Create}, {"delete", Delete}, {"save", Save},           {"restore", Restore},
    {"push", Push},     {"pop", Pop},       {"getlength", GetLength},
};

// An unknown operation does nothing, silently.
void Stack_f() {
  const char* operation = engine->Cmd_Argv(1);
  for (const StackOperation& row : kStackOperations)
    if (strcasecmp(operation, row.name) == 0) {
      row.run(engine->Cmd_Argv(2), engine->Cmd_Argv(3));
      return;
    }
}

const PlainCommandRow kStackCommands[] = {
    {"stack", Stack_f,
     "Allows you to do various stack operations with a named stack. Supports create, delete, pop, push, "
     "getlength.\n"},
};
const CommandTable s_stackCommands(kStackCommands);

}  // namespace

NamedStack* Stacks_Find(const char* name) { return Table().FindValue(name); }

NamedStack* Stacks_Create(const char* name) {
  NameTable<NamedStack>& table = Table();
  if (table.Find(name) != NameTable<NamedStack>::kNotFound) return nullptr;
  return table.Get(table.Insert(name, NamedStack()));
}

void Stacks_Delete(const char* name) { Table().Remove(Table().Find(name)); }

size_t Stacks_Count() { return Table().Count(); }
