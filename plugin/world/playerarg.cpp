// The userid prologue shared by the commands that act on one player.
#include "world/playerarg.h"

#include <cstdlib>

#include "host/diagnostics.h"
#include "language/doors.h"
#include "world/players.h"

int UseridArg(const ArgView& args, int i) { return atoi(args.Argv(i)); }

edict_t* PlayerArg(const ArgView& args, int i, const PlayerMiss& miss) {
  int userid = UseridArg(args, i);
  edict_t* edict = userid > 0 ? LookupEdictByUserid(userid) : nullptr;
  if (edict) return edict;
  if (miss.message) {
    if (miss.withPlace)
      ReportScriptError(0, miss.message, userid);
    else
      DbgMsg(0, miss.message, userid);
  }
  if (miss.lastError) SetLastErrorText("%s", miss.lastError);
  return nullptr;
}
