// Commands that act on entities: the game's cheat commands run in a player's name through their wrappers
// (give, ent_fire, ent_create, setpos...), tw_trick and tw_remove, and the small direct operations on
// entities and the level (money, entity index, precaching, light styles). The wrappers themselves, which
// open the cheat gate for one call, belong to the command language.
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "edict.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "language/wrappers.h"
#include "world/playerarg.h"
#include "world/players.h"

namespace {

// ---- the wrapped game commands ----

// Arms a wrapper to act for the player whose userid is Argv(1) and runs it with the rest of the raw line
// behind the userid. A userid of 0 or below, or a line with nothing behind the userid, arms nothing.
void RunForPlayer(bool expand, CommandWrapper which) {
  ArgView args(expand);
  const int userid = UseridArg(args, 1);
  if (userid <= 0) return;
  const int index = LookupIndexByUserid(userid);
  const char* blank = strchr(args.Args(), ' ');
  CCmdWrap* wrapper = GetCommandWrapper(which);
  if (!blank || !wrapper) return;
  wrapper->Arm(index, blank + 1);
}

void Fire_h(bool expand, bool) { RunForPlayer(expand, WRAP_FIRE); }
void Give_h(bool expand, bool) { RunForPlayer(expand, WRAP_GIVE); }
void EntCreate_h(bool expand, bool) { RunForPlayer(expand, WRAP_CREATEENTITY2); }
void PropDynamicCreate_h(bool expand, bool) { RunForPlayer(expand, WRAP_PROP_DYNAMIC_CREATE); }
void PropPhysicsCreate_h(bool expand, bool) { RunForPlayer(expand, WRAP_PROP_PHYSICS_CREATE); }
void EntSetName_h(bool expand, bool) { RunForPlayer(expand, WRAP_ENTSETNAME); }
void SetPos_h(bool expand, bool) { RunForPlayer(expand, WRAP_SETPOS); }
void SetAng_h(bool expand, bool) { RunForPlayer(expand, WRAP_SETANG); }

// Removes an entity without a client: the whole raw line goes to ent_remove.
void Remove_h(bool expand, bool) {
  ArgView args(expand);
  if (args.Argc() < 2) {
    DbgMsg(0, "Syntax: tw_xremove <entity>\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  if (CCmdWrap* wrapper = GetCommandWrapper(WRAP_REMOVE)) wrapper->Arm(0, args.Args());
}

void TrickGreenBlock(const ArgView& args) {
  const int userid = UseridArg(args, 2);
  CCmdWrap* wrapper = GetCommandWrapper(WRAP_ENTBLOCK);
  if (args.Argc() > 2 && userid > 0 && wrapper) wrapper->Arm(LookupIndexByUserid(userid), "");
}

void TrickEntity(const ArgView& args) {
  if (CCmdWrap* wrapper = GetCommandWrapper(WRAP_CREATEENTITY)) wrapper->Arm(0, args.Argv(2));
}

void TrickDispatchEffect(const ArgView& args) {
  const int userid = UseridArg(args, 2);
  CCmdWrap* wrapper = GetCommandWrapper(WRAP_DISPATCHEFFECT);
  if (userid <= 0 || !wrapper) return;
  TextBuf values;
  for (int i = 3; i <= 6; ++i) {
    if (i > 3) values.Append(' ');
    values.Append(args.Argv(i));
  }
  if (values.Overflowed()) {
    ReportScriptError(0, "tw_trick: The effect's values are too long.\n");
    SetLastErrorText("Resulting string too long.");
    return;
  }
  wrapper->Arm(LookupIndexByUserid(userid), values.c_str());
}

void Trick_h(bool expand, bool) {
  ArgView args(expand);
  const char* operation = args.Argv(1);
  if (strcasecmp(operation, "greenblock") == 0)
    TrickGreenBlock(args);
  else if (strcasecmp(operation, "entity") == 0)
    TrickEntity(args);
  else if (strcasecmp(operation, "dispatcheffect") == 0)
    TrickDispatchEffect(args);
}

// tw_xgetplayerprop with the money's path, run as a line of its own.
void GetMoney_h(bool expand, bool) {
  ArgView args(expand);
  TextBuf line("tw_xgetplayerprop ");
  if (!line.Append(args.Args()) || !line.Append(" CCSPlayer.m_iAccount\n")) {
    ReportScriptError(0, "tw_getmoney: The command line is too long.\n");
    SetLastErrorText("Resulting string too long.");
    return;
  }
  DbgMsg(2, "tw_xgetmoney executing: %s\n", line.c_str());
  ImmediateExecuteCommand(line.c_str());
}

// ---- entities and the level ----

// The lowest index whose entity has that class name (case ignored), or -1. The entity count is asked again
// at each step.
int FindEntityIndex(const char* className) {
  for (int index = 0; index < engine->GetEntityCount(); ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (!edict || !edict->GetUnknown() || !edict->GetNetworkable()) continue;
    const char* name = edict->GetNetworkable()->GetClassName();
    if (name && name[0] && strcasecmp(name, className) == 0) return index;
  }
  return -1;
}

void GetEntityIndex_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnInt(fromConsole, args.Argv(1), FindEntityIndex(args.Argv(fromConsole ? 2 : 1)));
}

// tw_precachemodel and tw_precachedecal: [var] <path> at the console (no variable with one argument),
// <path> from Python. The engine's index is the value.
void Precache(bool expand, bool fromConsole, int (IVEngineServer::*precache)(const char*, bool)) {
  ArgView args(expand);
  const bool stores = fromConsole && args.Argc() > 2;
  if (!fromConsole && args.Argc() < 2) {
    ReportScriptError(0, "ERROR: Syntax error.\n");
    SetLastErrorText("Syntax error");
    return;
  }
  const char* path = args.Argv(stores ? 2 : 1);
  const int index = (engine->*precache)(path, false);
  DbgMsg(1, "Precaching: %s\n", path);
  if (stores || !fromConsole) ReturnInt(fromConsole, args.Argv(1), index);
}

void PrecacheModel_h(bool expand, bool fromConsole) { Precache(expand, fromConsole, &IVEngineServer::PrecacheModel); }
void PrecacheDecal_h(bool expand, bool fromConsole) { Precache(expand, fromConsole, &IVEngineServer::PrecacheDecal); }

void LightStyle_h(bool expand, bool) {
  ArgView args(expand);
  const int style = atoi(args.Argv(1));
  engine->LightStyle(style, args.Argv(2));
  DbgMsg(1, "Setting lightstyle: %d, %s\n", style, args.Argv(2));
}

const CommandRow kEntityCommands[] = {
    {"fire", Fire_h, 3, "Syntax: %s <userid> <target> [action] [value] [delay]\n\n",
     "Fires an input at entities in a player's name (ent_fire).", DOORS_ALL},
    {"trick", Trick_h, 2, "Syntax: %s <operation> [parameters]\n\n",
     "Runs a game test command: greenblock <userid>, entity <classname>, dispatcheffect <userid> <values>.",
     DOORS_ALL},
    {"give", Give_h, 2, "Syntax: %s <userid> <entity>\n\n", "Gives a player an item (give).", DOORS_ALL},
    {"entcreate", EntCreate_h, 2, "Syntax: %s <userid> <entity>\n\n",
     "Makes an entity where a player stands (ent_create).", DOORS_ALL},
    {"prop_dynamic_create", PropDynamicCreate_h, 2, "Syntax: %s <userid> <model>\n\n",
     "Makes a dynamic prop of a model in a player's name.", DOORS_ALL},
    {"prop_physics_create", PropPhysicsCreate_h, 2, "Syntax: %s <userid> <model>\n\n",
     "Makes a physics prop of a model in a player's name.", DOORS_ALL},
    {"entsetname", EntSetName_h, 2, "Syntax: %s <userid> <name>\n\n",
     "Names the entity a player looks at (ent_setname).", DOORS_ALL},
    {"remove", Remove_h, 0, "Syntax: %s <entity>\n", "Removes entities by index, name or class (ent_remove).",
     DOORS_ALL},
    {"setpos", SetPos_h, 3, "Syntax: %s <userid> <x> <y> [z]\n\n", "Moves a player (setpos).", DOORS_ALL},
    {"setang", SetAng_h, 3, "Syntax: %s <userid> <pitch> <yaw> [roll]\n\n", "Turns a player (setang).",
     DOORS_ALL},
    {"getmoney", GetMoney_h, 3, "Syntax: %s <varname> <userid>\n", "Stores a player's money (CCSPlayer.m_iAccount).",
     DOORS_ALL},
    {"getentityindex", GetEntityIndex_h, 2, "Syntax: %s <variable> <entity-name>\n",
     "Stores the lowest index of an entity of that class, or -1.", DOORS_ALL},
    {"precachemodel", PrecacheModel_h, 2, "Syntax: %s [var] <modelpath>\n",
     "Precaches a model; with a variable, stores its index.", DOORS_ALL},
    {"precachedecal", PrecacheDecal_h, 2, "Syntax: %s [var] <modelpath>\n",
     "Precaches a decal; with a variable, stores its index.", DOORS_ALL},
    {"lightstyle", LightStyle_h, 3, "Syntax: %s <stylenum> <stylestring>\n", "Sets a light style of the level.",
     DOORS_ALL},
};
const CommandTable s_entityCommands(kEntityCommands);

}  // namespace
