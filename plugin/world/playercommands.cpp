// The player and property commands: the lookups, getters and counts of players.cpp and the property
// access of properties.cpp handed to scripts (a variable at the console doors) and to Python (the result
// slot, inputs one lower). They add nothing but their argument forms and their reports.
#include <cstdlib>
#include <memory>

#include "dt_send.h"
#include "edict.h"
#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iplayerinfo.h"
#include "language/doors.h"
#include "library/vectors.h"
#include "world/playerarg.h"
#include "world/players.h"
#include "world/properties.h"

namespace {

// The index of a value command's first input: behind the variable at the console doors.
int FirstInput(bool fromConsole) { return fromConsole ? 2 : 1; }

// ---- who and what ----

void GetUserid_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int input = FirstInput(fromConsole);
  ReturnInt(fromConsole, args.Argv(1), FindUserIDByString(args.Argc() > input ? args.Argv(input) : nullptr));
}

void GetPlayerName_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  int userid = UseridArg(args, FirstInput(fromConsole));
  if (userid < 1) {
    DbgMsg(0, "Invalid userid for getplayername.\n");
    SetLastErrorText("Invalid userid");
    return;
  }
  const char* name = GetPlayerName(userid);
  if (name)
    ReturnText(fromConsole, args.Argv(1), name);
  else
    ReturnInt(fromConsole, args.Argv(1), 0);
}

void GetPlayerSteamid_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnText(fromConsole, args.Argv(1), GetPlayerNetworkID(UseridArg(args, FirstInput(fromConsole))));
}

void GetPlayerTeam_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnInt(fromConsole, args.Argv(1), GetPlayerTeam(UseridArg(args, FirstInput(fromConsole))));
}

void IsBot_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  edict_t* edict = PlayerArg(args, FirstInput(fromConsole), kSilentMiss);
  if (!edict) return;
  int answer = -1;
  if (playerinfomanager) {
    IPlayerInfo* info = playerinfomanager->GetPlayerInfo(edict);
    answer = info && info->IsFakeClient() ? 1 : 0;
  }
  ReturnInt(fromConsole, args.Argv(1), answer);
}

void GetPlayerHandle_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnInt(fromConsole, args.Argv(1), LookupHandleByUserid(UseridArg(args, FirstInput(fromConsole))));
}

// ---- where and how ----

// The three variables of a command that gives three floats (console doors only).
struct ThreeVars {
  const char* names[3];
  explicit ThreeVars(const ArgView& args) : names{args.Argv(1), args.Argv(2), args.Argv(3)} {}
};

// The userid of a command with three result variables: behind them at the console doors.
int UseridBehindThree(const ArgView& args, bool fromConsole) { return UseridArg(args, fromConsole ? 4 : 1); }

void GetPlayerLocation_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  Vector location;
  int userid = UseridBehindThree(args, fromConsole);
  DbgMsg(3, "getloc, nUserid: %d\n", userid);
  if (userid < 1) {
    DbgMsg(0, "getplayerlocation, invalid userid\n");
    SetLastErrorText("Invalid userid");
    return;
  }
  GetPlayerLocation(userid, location);
  ReturnFloats(fromConsole, ThreeVars(args).names, location);
}

void GetPlayerMovement_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  std::unique_ptr<CBotCmd> last = GetPlayerLastCommand(UseridBehindThree(args, fromConsole));
  if (!last) return;
  ReturnFloats(fromConsole, ThreeVars(args).names, Vector(last->forwardmove, last->sidemove, last->upmove));
}

const PlayerMiss kClientVarMiss = {nullptr, "Userid not valid", false};

void GetClientVar_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int input = FirstInput(fromConsole);
  edict_t* edict = PlayerArg(args, input, kClientVarMiss);
  if (!edict) {
    ReportScriptError(0, "ERROR: userid not found: %s\n", args.Argv(input));
    return;
  }
  int index = engine->IndexOfEdict(edict);
  if (index < 1) return;
  const char* value = engine->GetClientConVarValue(index, args.Argv(input + 1));
  DbgMsg(1, "pValue: %d, pEdict: %d, nIndex: %d, UserID: %d\n", value ? 1 : 0, 1, index, UseridArg(args, input));
  ReturnText(fromConsole, args.Argv(1), value ? value : "");
}

// ---- counting ----

// Both counts: exactly the variable means all teams, one more argument a team; more is refused. The
// Python form counts as if it had the variable.
void CountPlayers(bool expand, bool fromConsole, bool livingOnly) {
  ArgView args(expand);
  const int count = args.Argc() + (fromConsole ? 0 : 1);
  if (count > 3) {
    DbgMsg(0, "Syntax: tw_xgetplayercount <var> [team number]\n");
    ReportErrorLocation();
    SetLastErrorText("Not enough arguments.");
    return;
  }
  int team = count == 3 ? atoi(args.Argv(args.Argc() - 1)) : -1;
  ReturnInt(fromConsole, args.Argv(1), GetPlayerCount(team, livingOnly));
}

void GetPlayerCount_h(bool expand, bool fromConsole) { CountPlayers(expand, fromConsole, false); }
void GetLivingPlayerCount_h(bool expand, bool fromConsole) { CountPlayers(expand, fromConsole, true); }

void GetMaxPlayerCount_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  ReturnInt(fromConsole, args.Argv(1), MaxClients);
}

// ---- properties ----

void ReportUnsupportedType(int type) {
  if (type >= DPT_String && type <= DPT_DataTable)
    ReportScriptError(0, "ERROR: Property type not yet supported.\n");
  else
    ReportScriptError(0, "ERROR: Property type unknown.\n");
}

// Reads the property at `path` of the entity and gives it by its type; a path not found or a failed read
// is silent and leaves the variable as it was.
void ReturnProperty(bool fromConsole, const char* varName, edict_t* edict, const char* path) {
  int offset = 0, type = 0;
  if (!FindEntityProperty(edict, path, offset, type)) return;
  int number = 0;
  float real = 0;
  Vector vector;
  switch (type) {
    case DPT_Int:
      if (ReadPropertyInt(offset, edict, number)) ReturnInt(fromConsole, varName, number);
      return;
    case DPT_Float:
      if (ReadPropertyFloat(offset, edict, real)) ReturnFloat(fromConsole, varName, real);
      return;
    case DPT_Vector:
      if (ReadPropertyVector(offset, edict, vector)) ReturnText(fromConsole, varName, VectorToString(vector).text);
      return;
    default:
      ReportUnsupportedType(type);
  }
}

void GetPlayerProp_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int input = FirstInput(fromConsole);
  if (UseridArg(args, input) <= 0) {
    ReportScriptError(0, "ERROR: Userid must be greater than 0.\n");
    SetLastErrorText("Invalid arguments");
    return;
  }
  edict_t* edict = LookupEdictByUserid(UseridArg(args, input));
  if (!edict) {
    DbgMsg(0, "Entity doesn't exist.\n");
    return;
  }
  ReturnProperty(fromConsole, args.Argv(1), edict, args.Argv(input + 1));
}

void GetIndexProp_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const int input = FirstInput(fromConsole);
  edict_t* edict = engine->PEntityOfEntIndex(atoi(args.Argv(input)));
  if (!IsUsableEdict(edict)) {
    DbgMsg(0, "Entity doesn't exist.\n");
    return;
  }
  ReturnProperty(fromConsole, args.Argv(1), edict, args.Argv(input + 1));
}

// Writes the text `value` into the property at `path`, read by the property's type.
void WriteProperty(edict_t* edict, const char* path, const char* value) {
  int offset = 0, type = 0;
  if (!IsUsableEdict(edict) || !FindEntityProperty(edict, path, offset, type)) return;
  bool written = false;
  switch (type) {
    case DPT_Int: written = WritePropertyInt(offset, edict, atoi(value)); break;
    case DPT_Float: written = WritePropertyFloat(offset, edict, float(atof(value))); break;
    case DPT_Vector: written = WritePropertyVector(offset, edict, AllocVectorFromString(value)); break;
    default: ReportUnsupportedType(type); return;
  }
  if (written) return;
  ReportScriptError(0, "ERROR: Unable to set property. It might be read-only.\n");
  SetLastErrorText("Invalid parameter");
}

void SetPlayerProp_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  edict_t* edict = PlayerArg(args, 1, kSilentMiss);
  if (edict) WriteProperty(edict, args.Argv(2), args.Argv(3));
}

void SetIndexProp_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  WriteProperty(engine->PEntityOfEntIndex(atoi(args.Argv(1))), args.Argv(2), args.Argv(3));
}

void FindOffset_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  int offset = GetOffsetOfProperty(args.Argv(1), args.Argv(2));
  DbgMsg(0, "%s offset for %s is %d\n", args.Argv(1), args.Argv(2), offset);
}

const CommandRow kPlayerCommands[] = {
    {"getuserid", GetUserid_h, 2, "Syntax: %s <variable> [string]\n",
     "Finds a player by userid, handle, steam id or (part of a) name and stores the userid.", DOORS_ALL},
    {"getplayername", GetPlayerName_h, 3, "Syntax: %s <var> <userid>\n", "Stores a player's name.", DOORS_ALL},
    {"getplayersteamid", GetPlayerSteamid_h, 3, "Syntax: %s <var> <userid>\n",
     "Stores a player's steam id (BOT for bots).", DOORS_ALL},
    {"getplayerteam", GetPlayerTeam_h, 3, "Syntax: %s <var> <userid>\n", "Stores a player's team number.",
     DOORS_ALL},
    {"isbot", IsBot_h, 3, "Syntax: %s <var> <userid>\n", "Stores 1 if the player is a bot, else 0.", DOORS_ALL},
    {"getplayerhandle", GetPlayerHandle_h, 2, "Syntax: %s <variable> <userid>\n",
     "Stores the entity handle of a player.", DOORS_ALL},
    {"getplayerlocation", GetPlayerLocation_h, 5, "Syntax: %s <var x> <var y> <var z> <userid>\n",
     "Stores a player's position in three variables.", DOORS_ALL},
    {"getplayermovement", GetPlayerMovement_h, 5,
     "Syntax: %s <var forwardmove> <var sidemove> <var upmove> <userid>\n",
     "Stores the movement of a player's last user command in three variables.", DOORS_ALL},
    {"getclientvar", GetClientVar_h, 4, "Syntax: %s <var> <userid> <varname>\n",
     "Stores the value of a console variable of a player's client.", DOORS_ALL},
    {"getplayercount", GetPlayerCount_h, 2, "Syntax: %s <var> [team number]\n",
     "Stores the number of players, of one team if given.", DOORS_ALL},
    {"getlivingplayercount", GetLivingPlayerCount_h, 2, "Syntax: %s <var> [team number]\n",
     "Stores the number of living players, of one team if given.", DOORS_ALL},
    {"getmaxplayercount", GetMaxPlayerCount_h, 2, "Syntax: %s <var>\n", "Stores the number of player slots.",
     DOORS_ALL},
    {"getplayerprop", GetPlayerProp_h, 3, "Syntax: %s <variable> <userid> <propertypath>\n",
     "Stores a networked property of a player, such as CCSPlayer.m_iAccount.", DOORS_ALL},
    {"setplayerprop", SetPlayerProp_h, 3, "Syntax: %s <userid> <propertypath> <value>\n",
     "Sets a networked property of a player.", DOORS_ALL},
    {"getindexprop", GetIndexProp_h, 3, "Syntax: %s <variable> <index> <propertypath>\n",
     "Stores a networked property of the entity at an index.", DOORS_ALL},
    {"setindexprop", SetIndexProp_h, 3, "Syntax: %s <index> <propertypath> <value>\n",
     "Sets a networked property of the entity at an index.", DOORS_ALL},
    {"_findoffset", FindOffset_h, 3, "Syntax: %s <classname> <propname>\n",
     "Prints the offset of a direct property of a server class.", DOORS_ALL},
};
const CommandTable s_playerCommands(kPlayerCommands);

}  // namespace
