// Sounds, effects and network string tables: each command puts a script's wish straight through to the
// engine's sound interface, the game's effects interface or the string-table container, adding only its
// fixed values (channel, pitch, flags) and reading its vectors as "x,y,z" text. A vector that doesn't read
// is 0,0,0 and the command goes on. The interfaces are required at Load, so they are always there.
#include <strings.h>

#include <cstdlib>
#include <cstring>

#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "iservices.h"
#include "language/doors.h"
#include "library/vectors.h"
#include "messaging/usermessages.h"
#include "world/players.h"

namespace {

// The fixed arguments of every sound this file plays.
constexpr int kSoundChannel = CHAN_AUTO;
constexpr int kSoundFlags = 0;
constexpr int kSoundPitch = PITCH_NORM;
constexpr float kPlaySoundAttenuation = 1.0f;
// Tokens of a full "beam", the command name included.
constexpr int kBeamArgc = 18;

int Int(const ArgView& args, int i) { return atoi(args.Argv(i)); }
float Float(const ArgView& args, int i) { return float(atof(args.Argv(i))); }
Vector Vec(const ArgView& args, int i) { return AllocVectorFromString(args.Argv(i)); }
// The low byte of an integer argument, as the engine takes byte-sized values.
unsigned char Byte(const ArgView& args, int i) { return (unsigned char)atoi(args.Argv(i)); }

void PlayFrom(MRecipientFilter& filter, int index, const char* sample, float volume, float attenuation) {
  enginesound->EmitSound(filter, index, kSoundChannel, sample, volume, attenuation, kSoundFlags, kSoundPitch,
                         nullptr, nullptr, nullptr, true, 0.0f, -1);
}

// ---- sounds ----

void EmitSound_h(bool expand, bool) {
  ArgView args(expand);
  const char* sample = args.Argv(3);
  enginesound->PrecacheSound(sample, false);
  int index = 0;
  if (strcasecmp(args.Argv(1), "player") == 0)
    index = LookupIndexByUserid(Int(args, 2));
  else if (strcasecmp(args.Argv(1), "entity") == 0)
    index = Int(args, 2);
  else
    return;
  if (index == 0) return;
  MRecipientFilter filter;
  filter.AddAllPlayers(MaxClients, playerinfomanager);
  PlayFrom(filter, index, sample, Float(args, 4), Float(args, 5));
}

void PlaySound_h(bool expand, bool) {
  ArgView args(expand);
  const char* sample = args.Argv(2);
  enginesound->PrecacheSound(sample, false);
  const int userid = Int(args, 1);
  const int index = userid > 0 ? LookupIndexByUserid(userid) : 0;
  if (index == 0) return;
  MRecipientFilter filter;
  filter.AddRecipientByUserid(userid, MaxClients, playerinfomanager);
  PlayFrom(filter, index, sample, Float(args, 3), kPlaySoundAttenuation);
}

void PrecacheSound_h(bool expand, bool) {
  ArgView args(expand);
  if (args.Argc() < 2) return;
  enginesound->PrecacheSound(args.Argv(1), false);
  DbgMsg(1, "Precaching: %s\n", args.Argv(1));
}

void StopSound_h(bool expand, bool) {
  ArgView args(expand);
  const int userid = Int(args, 1);
  const int index = LookupIndexByUserid(userid);
  if (index > 0) {
    enginesound->StopSound(index, kSoundChannel, args.Argv(2));
    return;
  }
  DbgMsg(0, "StopSound: Unable to find player %d\n", userid);
  SetLastErrorText("Invalid userid");
}

// ---- effects ----

void Sparks(const ArgView& args) {
  const Vector position = Vec(args, 2);
  if (args.Argc() > 5) {
    const Vector direction = Vec(args, 5);
    effects->Sparks(position, Int(args, 3), Int(args, 4), &direction);
  } else {
    effects->Sparks(position, Int(args, 3), Int(args, 4), nullptr);
  }
}

void Beam(const ArgView& args) {
  const Vector start = Vec(args, 2);
  const Vector end = Vec(args, 3);
  if (args.Argc() < kBeamArgc) {
    DbgMsg(1, "Incorrect syntax for tw_effect beam.\n");
    return;
  }
  effects->Beam(start, end, Int(args, 4), Int(args, 5), Byte(args, 6), Byte(args, 7), Float(args, 8), Byte(args, 9),
                Byte(args, 10), Byte(args, 11), Byte(args, 12), Byte(args, 13), Byte(args, 14), Byte(args, 15),
                Byte(args, 16), Byte(args, 17));
  DbgMsg(1, "Beam sent!\n");
}

void Effect_h(bool expand, bool) {
  ArgView args(expand);
  const char* mode = args.Argv(1);
  if (strcasecmp(mode, "sparks") == 0) {
    Sparks(args);
  } else if (strcasecmp(mode, "smoke") == 0) {
    effects->Smoke(Vec(args, 2), Int(args, 3), Float(args, 4), Float(args, 5));
  } else if (strcasecmp(mode, "beam") == 0) {
    Beam(args);
  } else if (strcasecmp(mode, "dust") == 0) {
    const Vector position = Vec(args, 2);
    effects->Dust(position, Vec(args, 3), Float(args, 4), Float(args, 5));
  } else if (strcasecmp(mode, "energysplash") == 0) {
    const Vector position = Vec(args, 2);
    effects->EnergySplash(position, Vec(args, 3), Int(args, 4) != 0);
  }
}

// ---- string tables ----

// Adds `text` to a table, opening the locked tables for the one add and closing them as they were.
bool AddTableString(const char* tableName, const char* text) {
  INetworkStringTable* table = networkstringtable->FindTable(tableName);
  if (!table) return false;
  if (table->FindStringIndex(text) != INVALID_STRING_INDEX) return true;
  const bool wasLocked = engine->LockNetworkStringTables(false);
  table->AddString(text, int(strlen(text)) + 1, nullptr);
  engine->LockNetworkStringTables(wasLocked);
  return true;
}

void StringTable_h(bool expand, bool) {
  ArgView args(expand);
  if (AddTableString(args.Argv(1), args.Argv(2)))
    DbgMsg(1, "Added string: %s to table %s\n", args.Argv(2), args.Argv(1));
  else
    DbgMsg(0, "Could not add strings: %s to table %s\n", args.Argv(2), args.Argv(1));
}

void DumpStringTable_h(bool expand, bool) {
  ArgView args(expand);
  INetworkStringTable* table = networkstringtable->FindTable(args.Argv(1));
  const int index = table ? table->FindStringIndex(args.Argv(2)) : INVALID_STRING_INDEX;
  if (index == INVALID_STRING_INDEX) return;
  DbgMsg(0, "Data:\n%s\n", table->GetString(index));
  // User data is bytes of the length the table gives, and may be null: printed as text up to that length.
  int length = 0;
  const void* data = table->GetStringUserData(index, &length);
  DbgMsg(0, "Data:\n%.*s\n", data && length > 0 ? length : 0, data ? static_cast<const char*>(data) : "");
}

void DumpStringTables_f() {
  for (int id = 0; id < networkstringtable->GetNumTables(); ++id) {
    INetworkStringTable* table = networkstringtable->GetTable(id);
    if (!table) continue;
    DbgMsg(0, "StringTable: %s\n", table->GetTableName());
    for (int i = 0; i < table->GetNumStrings(); ++i) DbgMsg(0, " --- \"%s\"\n", table->GetString(i));
  }
}

const CommandRow kSoundCommands[] = {
    {"emitsound", EmitSound_h, 5, "Syntax: %s <emitter-type> <id> <sound> <volume> <attenuation>\n",
     "Plays a sound to every player from a player (emitter-type player, id a userid) or an entity (entity, "
     "id an index).",
     DOORS_ALL},
    {"playsound", PlaySound_h, 4, "Syntax: %s <userid> <sound> [volume]\n",
     "Plays a sound to one player alone, from that player.", DOORS_ALL},
    {"stopsound", StopSound_h, 3, "Syntax: %s <userid> <soundname>\n", "Stops a sound playing from a player.",
     DOORS_ALL},
    {"precachesound", PrecacheSound_h, 0, "Syntax: %s <soundpath>\n",
     "Precaches a sound: <soundpath>. Without a path it does nothing.", DOORS_ALL},
    {"effect", Effect_h, 2, "Syntax: %s <mode> [options]\n",
     "Shows an effect: sparks <position> <magnitude> <trail> [direction]; smoke <position> <model> <scale> "
     "<framerate>; beam <start> <end> <model> <halo> <framestart> <framerate> <life> <width> <endwidth> <fade> "
     "<noise> <r> <g> <b> <brightness> <speed>; dust <position> <direction> <size> <speed>; energysplash "
     "<position> <direction> <explosive>.",
     DOORS_ALL},
    {"stringtable", StringTable_h, 2, "Syntax: %s <tablename> <string>\n",
     "Adds a string to a network string table, such as downloadables.", DOORS_ALL},
    {"dumpstringtable", DumpStringTable_h, 2, "Syntax: %s <tablename> <string>\n",
     "Prints a string of a network string table and its user data.", DOORS_ALL},
};
const CommandTable s_soundCommands(kSoundCommands);

const PlainCommandRow kSoundPlainCommands[] = {
    {"tw_dumpstringtables", DumpStringTables_f, "Lists every network string table with its strings."},
};
const CommandTable s_soundPlainCommands(kSoundPlainCommands);

}  // namespace
