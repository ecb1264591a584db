// Commands that act on players directly: forcing console commands on clients (tw_cexec, and tw_sexec on the
// server in a client's name), changing teams, moving a client's view, adding bots and setting their
// variables, fading a client's volume. Texts for clients always travel as data, never as a format.
#include <cstdlib>
#include <cstring>

#include "edict.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iplayerinfo.h"
#include "iserverplugin.h"
#include "language/doors.h"
#include "world/playerarg.h"
#include "world/players.h"

namespace {

// Bots never get a text that changes their team.
constexpr const char* kTeamCommand = "jointeam";

bool HoldsTeamCommand(const char* text) { return strstr(text, kTeamCommand) != nullptr; }

// The command text of tw_cexec and tw_sexec: one text argument as it is (a quoted text without its
// quotes), more as the raw text behind the userid. Null, after the report, when the userid can't be found
// in the raw text.
const char* TextBehindUserid(const ArgView& args) {
  if (args.Argc() == 3) return args.Argv(2);
  const char* raw = args.Args();
  const char* userid = strstr(raw, args.Argv(1));
  if (!userid) {
    Msg("Error with tw_cexec, should never happen!\n");
    SetLastErrorText("Internal error: tw_cexec");
    return nullptr;
  }
  const char* rest = userid + strlen(args.Argv(1));
  return *rest ? rest + 1 : rest;
}

// The command text of the _all forms: one argument as it is, more as the whole raw text.
const char* TextForAll(const ArgView& args) { return args.Argc() == 2 ? args.Argv(1) : args.Args(); }

// A client's console runs the text: a person through the engine, a bot (or anyone, when the player-info
// interface is missing) only when tidewright_bot-cexec is on and the text doesn't change teams.
void RunOnClient(edict_t* edict, IPlayerInfo* info, const char* text) {
  const bool bot = !playerinfomanager || (info && info->IsFakeClient());
  if (!bot) {
    engine->ClientCommand(edict, "%s", text);
    return;
  }
  if (tidewright_bot_cexec.GetInt() > 0 && !HoldsTeamCommand(text)) helpers->ClientCommand(edict, text);
}

// Calls `run(edict, info)` for each slot holding a player; nothing at all without the player-info
// interface.
template <class Run>
void ForEachPlayer(Run run) {
  if (!playerinfomanager) return;
  for (int index = 1; index <= MaxClients; ++index) {
    edict_t* edict = engine->PEntityOfEntIndex(index);
    if (IPlayerInfo* info = PlayerInfoOf(edict)) run(edict, info);
  }
}

void Cexec_h(bool expand, bool) {
  ArgView args(expand);
  const char* text = TextBehindUserid(args);
  if (!text) return;
  edict_t* edict = PlayerArg(args, 1, kSilentMiss);
  if (!edict) return;
  RunOnClient(edict, playerinfomanager ? playerinfomanager->GetPlayerInfo(edict) : nullptr, text);
}

void CexecAll_h(bool expand, bool) {
  ArgView args(expand);
  const char* text = TextForAll(args);
  ForEachPlayer([&](edict_t* edict, IPlayerInfo* info) { RunOnClient(edict, info, text); });
}

void Sexec_h(bool expand, bool) {
  ArgView args(expand);
  const char* text = TextBehindUserid(args);
  if (!text) return;
  if (HoldsTeamCommand(text)) {
    DbgMsg(0, "jointeam not supported on bots");
    return;
  }
  if (edict_t* edict = PlayerArg(args, 1, kSilentMiss)) helpers->ClientCommand(edict, text);
}

void SexecAll_h(bool expand, bool) {
  ArgView args(expand);
  const char* text = TextForAll(args);
  if (HoldsTeamCommand(text)) return;
  ForEachPlayer([&](edict_t* edict, IPlayerInfo*) { helpers->ClientCommand(edict, text); });
}

// ---- teams, views, bots ----

void ChangeTeam_h(bool expand, bool) {
  ArgView args(expand);
  const int userid = UseridArg(args, 1);
  edict_t* edict = PlayerArg(args, 1, PlayerMiss{"Player doesn't exist: %d\n", nullptr, false});
  if (!edict) return;
  if (!playerinfomanager) {
    DbgMsg(0, "playerinfomanager isn't ready yet.\n");
    return;
  }
  IPlayerInfo* info = PlayerInfoOf(edict);
  if (!info) {
    DbgMsg(0, "Userid isn't a player: %d\n", userid);
    return;
  }
  info->ChangeTeam(atoi(args.Argv(2)));
}

void SetView_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* player =
      PlayerArg(args, 1, PlayerMiss{"tw_xsetview: Couldn't find a player entity at that index.\n", "No such entity",
                                    false});
  if (!player) return;
  edict_t* view = args.Argc() > 2 ? engine->PEntityOfEntIndex(atoi(args.Argv(2))) : player;
  if (!view) {
    DbgMsg(0, "tw_xsetview: Couldn't find an entity at that index.\n");
    SetLastErrorText("No such entity");
    return;
  }
  engine->SetView(player, view);
}

// Console form [var] <botname>: with one argument no variable. Python form <botname>, the userid returned.
void CreateBot_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const bool stores = fromConsole && args.Argc() > 2;
  edict_t* bot = engine->CreateFakeClient(args.Argv(stores ? 2 : 1));
  if (bot && (stores || !fromConsole)) ReturnInt(fromConsole, args.Argv(1), engine->GetPlayerUserId(bot));
}

const PlayerMiss kBotValueMiss = {"SetFakeClientConvarValue: Unable to find player\n", "Invalid userid", false};

void BotSetValue_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* edict = PlayerArg(args, 1, kBotValueMiss);
  if (!edict) return;
  engine->SetFakeClientConVarValue(edict, args.Argv(2), args.Argv(3));
  DbgMsg(1, "Set client var: %d, %s = %s\n", UseridArg(args, 1), args.Argv(2), args.Argv(3));
}

const PlayerMiss kFadeMiss = {"FadeClientVolume: Unable to find player\n", "Invalid userid", false};

void FadeVolume_h(bool expand, bool) {
  ArgView args(expand);
  edict_t* edict = PlayerArg(args, 1, kFadeMiss);
  if (!edict) return;
  engine->FadeClientVolume(edict, float(atof(args.Argv(2))), float(atof(args.Argv(3))), float(atof(args.Argv(4))),
                           float(atof(args.Argv(5))));
  DbgMsg(1, "Fading client volume: %d\n", UseridArg(args, 1));
}

const CommandRow kPlayerActions[] = {
    {"cexec", Cexec_h, 3, "Syntax: %s <userid> <commandstring>\n",
     "Runs a command on a player's client console.", DOORS_ALL},
    {"cexec_all", CexecAll_h, 2, "Syntax: %s <commandstring>\n", "Runs a command on every client's console.",
     DOORS_ALL},
    {"sexec", Sexec_h, 3, "Syntax: %s <userid> <commandstring>\n",
     "Runs a command on the server as if a player had sent it.", DOORS_ALL},
    {"sexec_all", SexecAll_h, 2, "Syntax: %s <commandstring>\n",
     "Runs a command on the server as if every player had sent it.", DOORS_ALL},
    {"changeteam", ChangeTeam_h, 2, "Syntax: %s <userid> <teamnum>\n", "Moves a player to a team.", DOORS_ALL},
    {"setview", SetView_h, 0, "Syntax: %s <userid> [entity-index]\n",
     "Makes a player look through an entity; without an index, through his own eyes again.", DOORS_ALL},
    {"createbot", CreateBot_h, 2, "Syntax: %s [var] <botname>\n", "Adds a bot; with a variable, stores its userid.",
     DOORS_ALL},
    {"botsetvalue", BotSetValue_h, 4, "Syntax: %s <userid> <convar-name> \"<convar-value>\"\n",
     "Sets a console variable of a bot.", DOORS_ALL},
    {"fadevolume", FadeVolume_h, 5, "Syntax: %s <userid> <percent> <fadetime> <holdtime> <fadeintime>\n",
     "Fades a player's sound volume out and in again.", DOORS_ALL},
};
const CommandTable s_playerActions(kPlayerActions);

}  // namespace
