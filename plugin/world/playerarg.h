// The prologue of a command that names a player by userid: the argument read as a number, the player's
// edict looked up, and the command's own report when nobody has that userid. Commands of the world,
// messaging and library subsystems share it, so each keeps only its message.
#pragma once

class ArgView;
struct edict_t;

// How a command reports a userid that names no player (a userid of 0 or below names nobody).
struct PlayerMiss {
  const char* message;    // printed at level 0, with the userid for a %d in it; null: the command is silent
  const char* lastError;  // null: the last error stays as it was
  bool withPlace;         // reported with the script's place (ReportScriptError)
};

inline constexpr PlayerMiss kSilentMiss = {nullptr, nullptr, false};

// The userid in argument `i` of a command, as atoi reads it.
int UseridArg(const ArgView& args, int i);
// The edict of the player whose userid is argument `i`, or null after the report that `miss` describes.
edict_t* PlayerArg(const ArgView& args, int i, const PlayerMiss& miss);
