// The stand-in's own commands for playing the clients' part: connecting people and bots, making them talk,
// type commands, kill, hurt and respawn, setting their state, listing them, and choosing what is shown
// (delivery lines, watched events). Each goes through the same world operations as the game's code.
#include <strings.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "KeyValues.h"
#include "gameevents.h"
#include "standin.h"
#include "tier0.h"
#include "tier1/tokenize.h"
#include "world/sim_world.h"

namespace {

IVEngineServer& Engine() { return g_standIn->Engine(); }
const char* Argv(int i) { return Engine().Cmd_Argv(i); }
int Argc() { return Engine().Cmd_Argc(); }

bool ParseInt(const char* text, int& out) {
  char* end = nullptr;
  errno = 0;
  long v = strtol(text, &end, 10);
  if (errno || end == text || *end || v < INT_MIN || v > INT_MAX) return false;
  out = int(v);
  return true;
}

// The client that argument `i` names by userid, or null after a message.
CClient* ClientArg(int i) {
  int userid = 0;
  CClient* client = ParseInt(Argv(i), userid) ? SimWorld().ClientByUserid(userid) : nullptr;
  if (!client) Msg("%s: no client has userid \"%s\"\n", Argv(0), Argv(i));
  return client;
}

// The raw text behind the first argument, as typed.
std::string RawAfterFirst() {
  char token[MAX_TOKEN_CHARS];
  const char* rest = ParseToken(Engine().Cmd_Args(), token, sizeof token);
  if (!rest) return std::string();
  while (*rest && (unsigned char)*rest <= ' ') ++rest;
  return rest;
}

// A text without the one pair of double quotes around the whole of it, if it has them.
std::string Unquoted(std::string text) {
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
  return text;
}

edict_t* EdictOf(CClient& client) { return Engine().PEntityOfEntIndex(client.slot); }

// ---- connecting ----

void SimConnect_f() {
  if (!Argv(1)[0]) {
    PrintConsoleUsage();
    return;
  }
  // The id is taken raw: its colons are break characters to the tokenizer.
  std::string networkId = Unquoted(RawAfterFirst());
  if (!networkId.empty() && (networkId.compare(0, 6, "STEAM_") != 0 || networkId.find_first_of(" \t") != std::string::npos)) {
    Msg("sim_connect: network id \"%s\" isn't of the form STEAM_x:y:z\n", networkId.c_str());
    return;
  }
  if (CClient* client = SimWorld().Connect(Argv(1), networkId.c_str(), false))
    Msg("Client \"%s\" connected as userid %d\n", client->name.c_str(), client->userid);
}

void SimAddBot_f() {
  if (!Argv(1)[0]) {
    PrintConsoleUsage();
    return;
  }
  edict_t* edict = Engine().CreateFakeClient(Argv(1));
  CClient* bot = SimWorld().ClientOfEdict(edict);
  if (bot) Msg("Bot \"%s\" connected as userid %d\n", bot->name.c_str(), bot->userid);
}

void SimDisconnect_f() {
  CClient* client = ClientArg(1);
  if (!client) return;
  std::string name = client->name;
  int userid = client->userid;
  const char* reason = Argc() > 2 ? Argv(2) : "Disconnect by user.";
  SimWorld().Disconnect(*client, reason);
  Msg("Client \"%s\" (userid %d) left: %s\n", name.c_str(), userid, reason);
}

// ---- talking and typing ----

void Chat(const char* command) {
  CClient* client = ClientArg(1);
  if (!client) return;
  std::string text = Unquoted(RawAfterFirst());
  std::string line = std::string(command) + " \"" + text + "\"";
  g_standIn->RunClientCommand(EdictOf(*client), line.c_str());
}

void SimSay_f() { Chat("say"); }
void SimSayTeam_f() { Chat("say_team"); }

void SimClient_f() {
  if (CClient* client = ClientArg(1)) SimWorld().ClientConsole(*client, Unquoted(RawAfterFirst()).c_str());
}

// ---- life and death ----

// The killer of sim_kill and sim_hurt: userid 0 is the world, given back as null with `ok` set.
bool AttackerArg(int i, CClient*& attacker) {
  attacker = nullptr;
  if (strcmp(Argv(i), "0") == 0) return true;
  attacker = ClientArg(i);
  return attacker != nullptr;
}

std::string DefaultWeapon(CClient* attacker) {
  if (!attacker || attacker->weapon.empty()) return "world";
  const std::string& w = attacker->weapon;
  return w.compare(0, 7, "weapon_") == 0 ? w.substr(7) : w;
}

bool Alive(CClient& client) {
  if (!client.entity->fields.pl.deadflag) return true;
  Msg("%s: \"%s\" is dead already\n", Argv(0), client.name.c_str());
  return false;
}

void SimKill_f() {
  CClient* attacker = nullptr;
  CClient* victim = nullptr;
  if (!AttackerArg(1, attacker) || !(victim = ClientArg(2)) || !Alive(*victim)) return;
  std::string weapon = Argc() > 3 ? Argv(3) : DefaultWeapon(attacker);
  SimWorld().Kill(*victim, attacker, weapon.c_str());
}

void SimHurt_f() {
  int damage = 0;
  if (!ParseInt(Argv(3), damage) || damage < 1) {
    PrintConsoleUsage();
    return;
  }
  CClient* attacker = nullptr;
  CClient* victim = nullptr;
  if (!AttackerArg(1, attacker) || !(victim = ClientArg(2)) || !Alive(*victim)) return;
  std::string weapon = Argc() > 4 ? Argv(4) : DefaultWeapon(attacker);
  SimWorld().Hurt(*victim, attacker, damage, weapon.c_str());
}

void SimSpawn_f() {
  CClient* client = ClientArg(1);
  if (!client) return;
  SimWorld().Spawn(*client);
  Msg("Client \"%s\" (userid %d) spawned with %d health\n", client->name.c_str(), client->userid,
      client->entity->fields.health);
}

// ---- setting state ----

bool ParseTriple(const char* text, float& a, float& b, float& c) {
  char tail = 0;
  return sscanf(text, "%f,%f,%f%c", &a, &b, &c, &tail) == 3;
}

// An integer field of sim_set; false for a value that isn't a number.
bool SetIntField(CClient& c, const char* field, int value) {
  EntityFields& f = c.entity->fields;
  if (strcasecmp(field, "health") == 0) f.health = value;
  else if (strcasecmp(field, "armor") == 0) f.armorValue = value;
  else if (strcasecmp(field, "money") == 0) f.account = value;
  else if (strcasecmp(field, "helmet") == 0) f.hasHelmet = value != 0;
  else if (strcasecmp(field, "frags") == 0) c.frags = value;
  else if (strcasecmp(field, "deaths") == 0) c.deaths = value;
  else if (strcasecmp(field, "team") == 0) SimWorld().ChangeTeam(c, value);
  else if (strcasecmp(field, "dead") == 0) SimWorld().SetDead(c, value != 0);
  else if (strcasecmp(field, "observer") == 0) c.observer = value != 0;
  else if (strcasecmp(field, "hltv") == 0) c.hltv = value != 0;
  else if (strcasecmp(field, "vehicle") == 0) c.inVehicle = value != 0;
  else if (strcasecmp(field, "latency") == 0) c.latency = float(value) / 1000.0f;
  else if (strcasecmp(field, "loss") == 0) c.loss = float(value) / 100.0f;
  else return false;
  c.entity->GetEdict()->StateChanged();
  return true;
}

bool IsIntField(const char* field) {
  static const char* const kFields[] = {"health", "armor", "money",  "helmet", "frags",   "deaths", "team",
                                        "dead",   "observer", "hltv", "vehicle", "latency", "loss"};
  for (const char* f : kFields)
    if (strcasecmp(f, field) == 0) return true;
  return false;
}

bool SetTextField(CClient& c, const char* field, const char* value) {
  float a = 0, b = 0, d = 0;
  if (strcasecmp(field, "name") == 0) {
    SimWorld().Rename(c, value);
  } else if (strcasecmp(field, "weapon") == 0) {
    c.weapon = value;
  } else if (strcasecmp(field, "model") == 0) {
    c.model = value;
    c.entity->SetModel(SimWorld().PrecacheModel(value, false));
  } else if (strncasecmp(field, "cvar:", 5) == 0 && field[5]) {
    SimWorld().SetClientVar(c, field + 5, value);
  } else if (!ParseTriple(value, a, b, d)) {
    return false;
  } else if (strcasecmp(field, "origin") == 0) {
    c.entity->fields.origin = Vector(a, b, d);
  } else if (strcasecmp(field, "angles") == 0) {
    c.entity->fields.angles = QAngle(a, b, d);
  } else if (strcasecmp(field, "move") == 0) {
    c.lastCommand.forwardmove = a;
    c.lastCommand.sidemove = b;
    c.lastCommand.upmove = d;
  } else {
    return false;
  }
  return true;
}

void SimSet_f() {
  // "cvar:NAME" reaches here as three tokens, the colon being a break character.
  std::string field = Argv(2);
  int valueArg = 3;
  if (Argc() > 4 && strcmp(Argv(3), ":") == 0) {
    field = field + ":" + Argv(4);
    valueArg = 5;
  }
  if (Argc() <= valueArg) {
    PrintConsoleUsage();
    return;
  }
  CClient* client = ClientArg(1);
  if (!client) return;
  const char* value = Argv(valueArg);
  int number = 0;
  if (IsIntField(field.c_str())) {
    if (!ParseInt(value, number)) Msg("sim_set: %s takes a whole number, not \"%s\"\n", field.c_str(), value);
    else SetIntField(*client, field.c_str(), number);
    return;
  }
  if (!SetTextField(*client, field.c_str(), value)) PrintConsoleUsage();
}

void SimPlayers_f() {
  std::vector<CClient*> clients = SimWorld().Clients();
  if (clients.empty()) Msg("No players\n");
  for (CClient* c : clients) {
    const EntityFields& f = c->entity->fields;
    Msg("#%d %s %s slot %d team %d health %d armor %d money %d frags %d deaths %d %s weapon %s origin %g,%g,%g\n",
        c->userid, EscapedText(c->name.c_str()).c_str(), c->networkId.c_str(), c->slot, f.teamNum, f.health,
        f.armorValue, f.account, c->frags, c->deaths, f.pl.deadflag ? "dead" : "alive",
        c->weapon.empty() ? "none" : c->weapon.c_str(), double(f.origin.x), double(f.origin.y), double(f.origin.z));
  }
}

// ---- physics and voice ----

std::string Triple(const Vector& v) {
  char text[96];
  snprintf(text, sizeof text, "%g,%g,%g", double(v.x), double(v.y), double(v.z));
  return text;
}

void SimPhysics_f() {
  const std::vector<CPhysicsObject*>& objects = SimWorld().Physics().Environment().Objects();
  if (objects.empty()) Msg("No physics objects\n");
  for (CPhysicsObject* o : objects) {
    Vector velocity;
    o->GetVelocity(&velocity, nullptr);
    CEntity& e = o->Entity();
    Msg("#%d %s %s origin %s velocity %s mass %g\n", e.Index(), e.GetClassName(), o->IsAsleep() ? "asleep" : "awake",
        Triple(e.fields.origin).c_str(), Triple(velocity).c_str(), double(o->GetMass()));
  }
}

void SimVoice_f() {
  CClient* speaker = ClientArg(1);
  if (!speaker) return;
  if (speaker->fake) {
    Msg("sim_voice: \"%s\" is a bot; bots don't talk\n", speaker->name.c_str());
    return;
  }
  SimWorld().Speak(*speaker);
}

// ---- what is shown ----

void SimMessages_f() {
  CSimWorld& world = SimWorld();
  if (Argc() > 1 && strcasecmp(Argv(1), "on") == 0) world.ShowDeliveries(true);
  else if (Argc() > 1 && strcasecmp(Argv(1), "off") == 0) world.ShowDeliveries(false);
  else if (Argc() > 1) PrintConsoleUsage();
  Msg("sim_messages is %s\n", world.DeliveriesShown() ? "on" : "off");
}

// Prints each watched event as it fires, with its keys in the order they were set.
class CEventWatcher final : public IGameEventListener2 {
public:
  void FireGameEvent(IGameEvent* event) override {
    std::string values;
    const KeyValues& data = static_cast<CGameEvent*>(event)->Data();
    for (KeyValues* k = data.GetFirstSubKey(); k; k = k->GetNextKey())
      values += std::string(" ") + k->GetName() + "=" + event->GetString(k->GetName());
    Msg("event %s:%s\n", event->GetName(), values.c_str());
  }
};

CEventWatcher g_watcher;

void SimWatch_f() {
  CGameEventManager& events = g_standIn->Events();
  if (Argc() == 2 && strcasecmp(Argv(1), "off") == 0) {
    events.RemoveListener(&g_watcher);
    Msg("sim_watch: no event is watched\n");
    return;
  }
  std::string watched;
  for (int i = 1; i < Argc(); ++i) {
    events.AddListener(&g_watcher, Argv(i), true);
    const EventDescriptor* d = events.FindDescriptor(Argv(i));
    watched += std::string(i > 1 ? ", " : " ") + Argv(i) + (d && !d->file.empty() ? "" : " (not declared yet)");
  }
  Msg("sim_watch: watching%s\n", watched.c_str());
}

const ConsoleCommandDef kCommands[] = {
    {"sim_connect", SimConnect_f, "A client connects: sim_connect <name> [STEAM_x:y:z]; prints its userid.", 0, 2,
     "Usage: sim_connect <name> [STEAM_x:y:z]: a client connects\n"},
    {"sim_addbot", SimAddBot_f, "A bot joins: sim_addbot <name>; prints its userid.", 0, 2,
     "Usage: sim_addbot <name>: a bot joins\n"},
    {"sim_disconnect", SimDisconnect_f, "A client leaves: sim_disconnect <userid> [reason].", 0, 2,
     "Usage: sim_disconnect <userid> [reason]: a client leaves\n"},
    {"sim_say", SimSay_f, "A client says a line: sim_say <userid> <text...>.", 0, 3,
     "Usage: sim_say <userid> <text...>: the client says a line\n"},
    {"sim_sayteam", SimSayTeam_f, "A client says a line to its team: sim_sayteam <userid> <text...>.", 0, 3,
     "Usage: sim_sayteam <userid> <text...>: the client says a line\n"},
    {"sim_client", SimClient_f, "A client types a console command: sim_client <userid> <command...>.", 0, 3,
     "Usage: sim_client <userid> <command...>: the client types a console command\n"},
    {"sim_kill", SimKill_f, "A player kills another: sim_kill <attacker, 0 for the world> <victim> [weapon].", 0, 3,
     "Usage: sim_kill <attacker userid, 0 for the world> <victim userid> [weapon]\n"},
    {"sim_hurt", SimHurt_f, "A player hurts another: sim_hurt <attacker, 0 for the world> <victim> <damage>.", 0, 4,
     "Usage: sim_hurt <attacker userid, 0 for the world> <victim userid> <damage, 1 or more> [weapon]\n"},
    {"sim_spawn", SimSpawn_f, "A player (re)spawns with full health: sim_spawn <userid>.", 0, 2,
     "Usage: sim_spawn <userid>: the player (re)spawns with full health\n"},
    {"sim_set", SimSet_f, "Sets a player's state: sim_set <userid> <field> <value>.", 0, 4,
     "Usage: sim_set <userid> <field> <value>; fields: name, team, health, armor, helmet, money, frags, deaths,\n"
     "  dead (0/1), weapon, model, origin/angles/move (\"x,y,z\"), observer, hltv, vehicle (0/1),\n"
     "  latency (ms), loss (%), cvar:<client variable>\n"},
    {"sim_players", SimPlayers_f, "Lists the players with their state.", 0},
    {"sim_physics", SimPhysics_f, "Lists the physics objects in order of making, awake or asleep, with their motion.",
     0},
    {"sim_voice", SimVoice_f, "A person talks over voice: sim_voice <userid>; shows who hears him.", 0, 2,
     "Usage: sim_voice <userid>: a person talks over voice\n"},
    {"sim_messages", SimMessages_f, "Shows (on) or hides (off) what reaches clients.", 0, 0,
     "Usage: sim_messages on|off: shows or hides what reaches clients\n"},
    {"sim_watch", SimWatch_f, "Prints the named events as they fire: sim_watch <event>... | off.", 0, 2,
     "Usage: sim_watch <event>... | off: prints the events named as they fire\n"},
};

}  // namespace

void RegisterSimCommands(CCvar& console) { console.AddCommands(kCommands, sizeof kCommands / sizeof kCommands[0]); }
