// The order of the engine's console chain. The engine finds a command by walking its chain, so the
// commands that every script line passes through are moved behind the chain's head, in the order of
// how often they run.
#include <strings.h>

#include "convar.h"
#include "host/console.h"
#include "host/engine_surface.h"
#include "icvar.h"

namespace {

// Table order is chain order after a reordering; the empty name ends the table.
constexpr const char* kBusiestCommands[] = {
    "tw__ip",         "tw__sb",           "tw__eb",
    "tw__db",         "tw_xgetargv",      "tw",
    "twnq",           "tw_xsetinfo",      "tw_setinfo",
    "tw_xset",        "tw_set",           "tw_xif",
    "tw_xdoblock",    "else",             "if",
    "tw_xgetargs",    "tw_xformatv",      "ifx",
    "tw__ep",         "_foreachval",      "_foreachkey",
    "tw_xgetargc",    "tw_getcmduserid",  "tw_doblock",
    "tw_xfire",       "tw_fire",          "tw_xdbgmsg",
    "tw_dbgmsg",      "tw_xdelayed",      "stack",
    "tw_xkeysetvalue", "tw_keysetvalue",  "tw_xkeygetvalue",
    "tw_keygetvalue", "tw_xsetindexprop", "tw_xsetplayerprop",
    "tw_xcreateentitylist", "tw_xcreateplayerlist", "",
};

bool SameName(const char* a, const char* b) { return a && b && strcasecmp(a, b) == 0; }

}  // namespace

void MoveCommandAfter(const char* name, ConCommandBase* node) {
  if (!cvar || !node) return;
  ConCommandBase* previous = nullptr;
  ConCommandBase* found = cvar->GetCommands();
  while (found && !(found->IsCommand() && SameName(found->GetName(), name))) {
    previous = found;
    found = found->GetNext();
  }
  // The head has no predecessor to unlink it from; a node already in place, or the node itself, stays.
  if (!found || !previous || found == node || found == node->GetNext()) return;
  previous->SetNext(found->GetNext());
  found->SetNext(node->GetNext());
  node->SetNext(found);
}

void ReorderConsoleChain() {
  if (!cvar) return;
  ConCommandBase* node = cvar->GetCommands();
  for (const char* const* name = kBusiestCommands; node && **name; ++name) {
    ConCommandBase* next = node->GetNext();
    if (!next || !SameName(next->GetName(), *name)) MoveCommandAfter(*name, node);
    node = node->GetNext();
  }
}
