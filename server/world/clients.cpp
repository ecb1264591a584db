// Clients: connecting through the plugin callbacks and events in the engine's order, leaving, the player
// state that the game changes (names, teams, deaths, spawns), client consoles, and the engine's and the
// game's views of a client (IPlayerInfo, INetChannelInfo, the engine's player operations).
#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "standin.h"
#include "tier0.h"
#include "tier1/tokenize.h"
#include "vstdlib.h"
#include "world/sim_world.h"

namespace {

constexpr int kStartMoney = 800;
constexpr size_t kRejectBytes = 256;

const char* TeamModel(int team) {
  switch (team) {
    case TEAM_T: return "models/player/t_phoenix.mdl";
    case TEAM_CT: return "models/player/ct_urban.mdl";
    default: return "models/player.mdl";
  }
}

// A network id for a client that brought none, the same for the same userid.
std::string MadeNetworkId(int userid) {
  return "STEAM_0:" + std::to_string(userid & 1) + ":" + std::to_string(100000 + userid / 2);
}

// Splits a console line into commands at ';' and line feeds outside double quotes.
std::vector<std::string> SplitCommands(const char* text) {
  std::vector<std::string> commands;
  std::string current;
  bool quoted = false;
  for (const char* p = text; *p; ++p) {
    if (*p == '"') quoted = !quoted;
    if (!quoted && (*p == ';' || *p == '\n')) {
      commands.push_back(current);
      current.clear();
    } else {
      current += *p;
    }
  }
  commands.push_back(current);
  commands.erase(std::remove_if(commands.begin(), commands.end(),
                                [](const std::string& c) { return c.find_first_not_of(" \t\r") == std::string::npos; }),
                 commands.end());
  return commands;
}

// What a client console's echo prints: the raw text behind the command, as typed.
std::string EchoText(const char* rest) {
  if (!rest) return std::string();
  while (*rest == ' ' || *rest == '\t') ++rest;
  return rest;
}

}  // namespace

const char* ClientVar(const CClient& client, const char* name) {
  auto it = name ? client.vars.find(name) : client.vars.end();
  return it == client.vars.end() ? "" : it->second.c_str();
}

// ---- finding clients ----

CClient* CSimWorld::ClientBySlot(int slot) const {
  return slot >= 1 && slot < int(m_clients.size()) ? m_clients[size_t(slot)].get() : nullptr;
}

CClient* CSimWorld::ClientByUserid(int userid) const {
  auto it = m_slotOfUserid.find(userid);
  return it == m_slotOfUserid.end() ? nullptr : ClientBySlot(it->second);
}

CClient* CSimWorld::ClientOfEdict(const edict_t* edict) const {
  if (m_edicts.empty() || edict < m_edicts.data() || edict >= m_edicts.data() + m_edicts.size()) return nullptr;
  CClient* client = ClientBySlot(int(edict - m_edicts.data()));
  return client && client->entity ? client : nullptr;
}

CClient* CSimWorld::CommandClient() const { return ClientBySlot(m_gameClients.CommandClient() + 1); }

std::vector<CClient*> CSimWorld::Clients() const {
  std::vector<CClient*> found;
  for (const auto& c : m_clients)
    if (c) found.push_back(c.get());
  return found;
}

int CSimWorld::UseridOfIndex(int index) const {
  CClient* client = ClientBySlot(index);
  return client ? client->userid : 0;
}

// ---- connecting and leaving ----

void CSimWorld::MakePlayerEntity(CClient& client) {
  auto entity = std::make_unique<CEntity>(&m_edicts[size_t(client.slot)], *FindEntityType("player"));
  client.entity = entity.get();
  EntityFields& f = entity->fields;
  f.health = PLAYER_FULL_HEALTH;
  f.lifeState = LIFE_ALIVE;
  f.flags = FL_ONGROUND | (client.fake ? FL_FAKECLIENT : 0);
  f.account = kStartMoney;
  AttachEntity(client.slot, std::move(entity));
  client.entity->SetModel(PrecacheModel(client.model.c_str(), false));
}

CClient* CSimWorld::NewClient(const char* name, const char* networkId, bool fake) {
  int slot = 1;
  while (slot <= m_maxClients && m_clients[size_t(slot)]) ++slot;
  if (slot > m_maxClients) {
    Msg("Server is full (%d slots); \"%s\" can't connect\n", m_maxClients, name);
    return nullptr;
  }
  auto client = std::make_unique<CClient>(*this, slot, m_nextUserid++);
  client->name.assign(name, std::min(strlen(name), CLIENT_MAX_NAME));
  client->fake = fake;
  client->networkId = fake ? "BOT" : networkId && networkId[0] ? networkId : MadeNetworkId(client->userid);
  client->address = fake ? "none" : "127.0.0.1:" + std::to_string(CLIENT_FIRST_PORT + client->userid);
  client->connectedAt = Now();
  client->model = TeamModel(TEAM_UNASSIGNED);
  client->vars = {{"name", client->name}, {"cl_language", "english"}, {"cl_cmdrate", "66"}, {"cl_updaterate", "66"},
                  {"rate", "30000"}};
  CClient* made = client.get();
  m_clients[size_t(slot)] = std::move(client);
  m_slotOfUserid[made->userid] = slot;
  MakePlayerEntity(*made);
  return made;
}

bool CSimWorld::AdmitClient(CClient& client) {
  IServerPluginCallbacks* plugin = Plugin();
  if (!plugin) return true;
  bool allow = true;
  char reject[kRejectBytes] = "";
  plugin->ClientConnect(&allow, &m_edicts[size_t(client.slot)], client.name.c_str(), client.address.c_str(), reject,
                        int(sizeof reject));
  if (allow) return true;
  reject[sizeof reject - 1] = '\0';
  Msg("\"%s\" was refused: %s\n", client.name.c_str(), reject[0] ? reject : "no reason given");
  return false;
}

// Putting a client in the game, in the engine's order. A new connection has its network id validated
// between ClientPutInServer and ClientActive; a client re-entering after a level change has it already.
void CSimWorld::EnterGame(CClient& client, bool validate) {
  edict_t* edict = &m_edicts[size_t(client.slot)];
  int userid = client.userid;
  if (IServerPluginCallbacks* plugin = Plugin()) plugin->ClientPutInServer(edict, client.name.c_str());
  if (validate && ClientByUserid(userid)) {
    if (IServerPluginCallbacks* plugin = Plugin())
      plugin->NetworkIDValidated(client.name.c_str(), client.networkId.c_str());
  }
  if (!ClientByUserid(userid)) return;
  if (IServerPluginCallbacks* plugin = Plugin()) plugin->ClientActive(edict);
  FireEvent("player_activate", [&](IGameEvent& e) { e.SetInt("userid", userid); });
}

CClient* CSimWorld::Connect(const char* name, const char* networkId, bool fake) {
  CClient* client = NewClient(name, networkId, fake);
  if (!client) return nullptr;
  if (!AdmitClient(*client)) {
    FreeClient(*client);
    return nullptr;
  }
  int userid = client->userid;
  FireEvent("player_connect", [&](IGameEvent& e) {
    e.SetString("name", client->name.c_str());
    e.SetInt("index", client->slot - 1);
    e.SetInt("userid", userid);
    e.SetString("networkid", client->networkId.c_str());
    e.SetString("address", client->address.c_str());
  });
  EnterGame(*client, true);
  return ClientByUserid(userid);
}

void CSimWorld::ReenterClients() {
  std::vector<int> userids;
  userids.swap(m_reentering);
  for (int userid : userids)
    if (CClient* client = ClientByUserid(userid)) EnterGame(*client, false);
}

void CSimWorld::Disconnect(CClient& client, const char* reason) {
  int userid = client.userid;
  FireEvent("player_disconnect", [&](IGameEvent& e) {
    e.SetInt("userid", userid);
    e.SetString("reason", reason);
    e.SetString("name", client.name.c_str());
    e.SetString("networkid", client.networkId.c_str());
  });
  if (IServerPluginCallbacks* plugin = Plugin()) plugin->ClientDisconnect(&m_edicts[size_t(client.slot)]);
  if (CClient* still = ClientByUserid(userid)) FreeClient(*still);
}

// The player's entity and the entities it owns go with it.
void CSimWorld::FreeClient(CClient& client) {
  int slot = client.slot;
  if (client.entity) {
    int owner = int(client.entity->GetRefEHandle().ToInt());
    for (int i = m_maxClients + 1; i < m_highWater; ++i)
      if (CEntity* e = EntityAt(i); e && e->fields.ownerEntity == owner) RemoveEntity(*e);
    FreeEdict(slot);
  }
  m_voice.ResetSlot(slot);
  m_slotOfUserid.erase(client.userid);
  m_clients[size_t(slot)].reset();
}

void CSimWorld::DropClientsAbove(int maxClients) {
  for (CClient* client : Clients()) {
    if (client->slot <= maxClients) continue;
    Msg("\"%s\" (userid %d) dropped: the new level has %d slots\n", client->name.c_str(), client->userid, maxClients);
    m_slotOfUserid.erase(client->userid);
    m_clients[size_t(client->slot)].reset();
  }
}

// ---- player state ----

void CSimWorld::Rename(CClient& client, const char* name) {
  std::string newName(name, std::min(strlen(name), CLIENT_MAX_NAME));
  if (newName.empty() || newName == client.name) return;
  std::string oldName = client.name;
  client.name = newName;
  client.vars["name"] = newName;
  FireEvent("player_changename", [&](IGameEvent& e) {
    e.SetInt("userid", client.userid);
    e.SetString("oldname", oldName.c_str());
    e.SetString("newname", newName.c_str());
  });
  if (IServerPluginCallbacks* plugin = Plugin()) plugin->ClientSettingsChanged(&m_edicts[size_t(client.slot)]);
}

void CSimWorld::SetClientVar(CClient& client, const char* name, const char* value) {
  if (strcasecmp(name, "name") == 0) {
    Rename(client, value);
    return;
  }
  auto it = client.vars.find(name);
  if (it == client.vars.end() && client.vars.size() >= CLIENT_MAX_VARS) {
    Msg("\"%s\" has %zu client variables already; %s not set\n", client.name.c_str(), CLIENT_MAX_VARS, name);
    return;
  }
  if (it != client.vars.end() && it->second == value) return;
  client.vars[name] = value;
  if (IServerPluginCallbacks* plugin = Plugin()) plugin->ClientSettingsChanged(&m_edicts[size_t(client.slot)]);
}

void CSimWorld::ChangeTeam(CClient& client, int team) {
  int old = client.entity->fields.teamNum;
  if (old == team) return;
  client.entity->fields.teamNum = team;
  client.model = TeamModel(team);
  client.entity->SetModel(PrecacheModel(client.model.c_str(), false));
  FireEvent("player_team", [&](IGameEvent& e) {
    e.SetInt("userid", client.userid);
    e.SetInt("team", team);
    e.SetInt("oldteam", old);
    e.SetBool("disconnect", false);
  });
}

void CSimWorld::SetDead(CClient& client, bool dead) {
  EntityFields& f = client.entity->fields;
  f.lifeState = dead ? LIFE_DEAD : LIFE_ALIVE;
  f.pl.deadflag = dead ? 1 : 0;
  if (dead) f.health = 0;
  else if (f.health <= 0) f.health = PLAYER_FULL_HEALTH;
}

// The victim is dead before the event fires; the score changes right after, as the game counts it:
// a kill +1, a suicide or a death by the world -1 for the victim, a team kill -1 for the killer.
void CSimWorld::Kill(CClient& victim, CClient* attacker, const char* weapon) {
  SetDead(victim, true);
  int victimId = victim.userid;
  int attackerId = attacker ? attacker->userid : 0;
  FireEvent("player_death", [&](IGameEvent& e) {
    e.SetInt("userid", victimId);
    e.SetInt("attacker", attackerId);
    e.SetString("weapon", weapon);
    e.SetBool("headshot", false);
  });
  CClient* v = ClientByUserid(victimId);
  CClient* a = attackerId ? ClientByUserid(attackerId) : nullptr;
  if (!v) return;
  ++v->deaths;
  if (!a || a == v) {
    --v->frags;
  } else if (a->entity->fields.teamNum >= TEAM_T && a->entity->fields.teamNum == v->entity->fields.teamNum) {
    --a->frags;
  } else {
    ++a->frags;
  }
}

void CSimWorld::Hurt(CClient& victim, CClient* attacker, int damage, const char* weapon) {
  EntityFields& f = victim.entity->fields;
  int taken = std::clamp(damage, 0, std::max(0, f.health));
  f.health -= taken;
  int victimId = victim.userid;
  int attackerId = attacker ? attacker->userid : 0;
  FireEvent("player_hurt", [&](IGameEvent& e) {
    e.SetInt("userid", victimId);
    e.SetInt("attacker", attackerId);
    e.SetInt("health", f.health);
    e.SetInt("armor", f.armorValue);
    e.SetString("weapon", weapon);
    e.SetInt("dmg_health", taken);
    e.SetInt("dmg_armor", 0);
    e.SetInt("hitgroup", 0);
  });
  CClient* v = ClientByUserid(victimId);
  if (v && v->entity->fields.health <= 0 && !v->entity->fields.pl.deadflag)
    Kill(*v, attackerId ? ClientByUserid(attackerId) : nullptr, weapon);
}

void CSimWorld::Spawn(CClient& client) {
  client.entity->fields.health = PLAYER_FULL_HEALTH;
  SetDead(client, false);
  FireEvent("player_spawn", [&](IGameEvent& e) { e.SetInt("userid", client.userid); });
}

// ---- client consoles and commands ----

void CSimWorld::ClientConsole(CClient& client, const char* text) {
  int userid = client.userid;
  std::vector<std::string> commands = SplitCommands(text);
  if (commands.size() > size_t(WORLD_MAX_CLIENT_COMMANDS)) {
    Msg("Client %d: %zu commands in one line; only the first %d run\n", userid, commands.size(),
        WORLD_MAX_CLIENT_COMMANDS);
    commands.resize(size_t(WORLD_MAX_CLIENT_COMMANDS));
  }
  for (const std::string& command : commands) {
    CClient* c = ClientByUserid(userid);
    if (!c) return;
    char name[MAX_TOKEN_CHARS];
    char value[MAX_TOKEN_CHARS];
    const char* rest = ParseToken(command.c_str(), name, sizeof name);
    if (strcasecmp(name, "disconnect") == 0 || strcasecmp(name, "quit") == 0) {
      Disconnect(*c, "Disconnect by user.");
      return;
    }
    if (strcasecmp(name, "echo") == 0) {
      Deliver("echo", std::to_string(userid), EscapedText(EchoText(rest).c_str()));
      continue;
    }
    if (c->vars.count(name)) {
      if (rest && ParseToken(rest, value, sizeof value)) SetClientVar(*c, name, value);
      continue;
    }
    g_standIn->RunClientCommand(&m_edicts[size_t(c->slot)], command.c_str());
  }
}

void CSimWorld::RunPendingClientText() {
  std::deque<PendingClientText> due;
  due.swap(m_clientText);
  for (const PendingClientText& t : due)
    if (CClient* client = ClientByUserid(t.userid)) ClientConsole(*client, t.text.c_str());
}

// What the game does with client commands that no console command took: teams and suicide act, the rest
// (menuselect and the like) is only shown as received.
void CSimWorld::GameClientCommand(edict_t* edict) {
  CClient* client = ClientOfEdict(edict);
  if (!client) return;
  IVEngineServer& engine = *m_setup.engine;
  const char* command = engine.Cmd_Argv(0);
  if (m_showDeliveries) {
    std::string line = command;
    if (engine.Cmd_Args()[0]) line += std::string(" ") + engine.Cmd_Args();
    Msg("< command from %d: %s\n", client->userid, EscapedText(line.c_str()).c_str());
  }
  if (strcasecmp(command, "jointeam") == 0) {
    int team = atoi(engine.Cmd_Argv(1));
    if (team >= TEAM_SPECTATOR && team <= TEAM_CT) ChangeTeam(*client, team);
  } else if (strcasecmp(command, "kill") == 0 && !client->entity->fields.pl.deadflag) {
    Kill(*client, client, "world");
  }
}

// ---- voice ----

// What the game's voice code does when a person talks: everybody human who hears him gets his voice.
void CSimWorld::Speak(CClient& speaker) {
  std::string recipients;
  for (CClient* c : Clients()) {
    if (c == &speaker || c->fake || !m_voice.GetClientListening(c->slot, speaker.slot)) continue;
    recipients += (recipients.empty() ? "" : ",") + std::to_string(c->userid);
  }
  Deliver("voice", recipients, "from " + std::to_string(speaker.userid));
}

// ---- the engine's operations on players ----

int CSimWorld::GetPlayerUserId(const edict_t* edict) {
  CClient* client = ClientOfEdict(edict);
  return client ? client->userid : -1;
}

const char* CSimWorld::GetPlayerNetworkIDString(const edict_t* edict) {
  CClient* client = ClientOfEdict(edict);
  return client ? client->networkId.c_str() : "";
}

INetChannelInfo* CSimWorld::GetPlayerNetInfo(int playerIndex) {
  CClient* client = ClientBySlot(playerIndex);
  return client && !client->fake ? &client->net : nullptr;
}

const char* CSimWorld::GetClientConVarValue(int clientIndex, const char* name) {
  CClient* client = ClientBySlot(clientIndex);
  return client ? ClientVar(*client, name) : "";
}

void CSimWorld::SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) {
  CClient* client = ClientOfEdict(edict);
  if (!client || !client->fake || !name || !name[0]) {
    Warning("SetFakeClientConVarValue: not a bot, or no variable name; nothing set\n");
    return;
  }
  SetClientVar(*client, name, value ? value : "");
}

edict_t* CSimWorld::CreateFakeClient(const char* name) {
  if (!name || !name[0]) return nullptr;
  CClient* bot = Connect(name, "BOT", true);
  return bot ? &m_edicts[size_t(bot->slot)] : nullptr;
}

void CSimWorld::SetView(const edict_t* client, const edict_t* viewEnt) {
  CClient* c = ClientOfEdict(client);
  CEntity* view = EntityAt(IndexOfEdict(viewEnt));
  if (!c || !view) {
    Warning("SetView: not a client, or no entity to look through; view unchanged\n");
    return;
  }
  Deliver("view", std::to_string(c->userid), "entity " + std::to_string(view->Index()) + " (" + view->GetClassName() + ")");
}

void CSimWorld::ClientCommand(edict_t* edict, const char* text) {
  CClient* client = ClientOfEdict(edict);
  if (!client || client->fake) return;  // bots have no console to run it
  Deliver("cexec", std::to_string(client->userid), EscapedText(text));
  m_clientText.push_back(PendingClientText{client->userid, text});
}

void CSimWorld::FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                                 float fadeInSeconds) {
  CClient* client = ClientOfEdict(edict);
  if (!client) return;
  char text[160];
  snprintf(text, sizeof text, "%.0f%% out %.2f hold %.2f in %.2f", double(fadePercent), double(fadeOutSeconds),
           double(holdTime), double(fadeInSeconds));
  Deliver("fadevolume", std::to_string(client->userid), text);
}

// ---- player info and net channel ----

const char* CPlayerInfo::GetName() { return m_client.name.c_str(); }
int CPlayerInfo::GetUserID() { return m_client.userid; }
const char* CPlayerInfo::GetNetworkIDString() { return m_client.networkId.c_str(); }
int CPlayerInfo::GetTeamIndex() { return m_client.entity->fields.teamNum; }
void CPlayerInfo::ChangeTeam(int team) { m_world.ChangeTeam(m_client, team); }
int CPlayerInfo::GetFragCount() { return m_client.frags; }
int CPlayerInfo::GetDeathCount() { return m_client.deaths; }
int CPlayerInfo::GetArmorValue() { return m_client.entity->fields.armorValue; }
bool CPlayerInfo::IsHLTV() { return m_client.hltv; }
bool CPlayerInfo::IsFakeClient() { return m_client.fake; }
bool CPlayerInfo::IsDead() { return m_client.entity->fields.pl.deadflag != 0; }
bool CPlayerInfo::IsInAVehicle() { return m_client.inVehicle; }
bool CPlayerInfo::IsObserver() { return m_client.observer; }
const Vector CPlayerInfo::GetAbsOrigin() { return m_client.entity->fields.origin; }
const QAngle CPlayerInfo::GetAbsAngles() { return m_client.entity->fields.angles; }
const char* CPlayerInfo::GetWeaponName() { return m_client.weapon.c_str(); }
const char* CPlayerInfo::GetModelName() { return m_client.model.c_str(); }
int CPlayerInfo::GetHealth() { return m_client.entity->fields.health; }
int CPlayerInfo::GetMaxHealth() { return PLAYER_FULL_HEALTH; }
CBotCmd CPlayerInfo::GetLastUserCommand() { return m_client.lastCommand; }

const char* CNetChannel::GetName() const { return m_client.name.c_str(); }
const char* CNetChannel::GetAddress() const { return m_client.address.c_str(); }
float CNetChannel::GetTimeConnected() const {
  return g_standIn ? float(g_standIn->Clock().Now() - m_client.connectedAt) : 0.0f;
}
float CNetChannel::GetAvgLatency(int) const { return m_client.latency; }
float CNetChannel::GetAvgLoss(int) const { return m_client.loss; }

// ---- status ----

void CSimWorld::PrintStatus() {
  Msg("# userid name uniqueid connected ping loss state adr\n");
  for (CClient* c : Clients()) {
    if (c->fake) {
      Msg("# %d \"%s\" BOT active\n", c->userid, c->name.c_str());
      continue;
    }
    int seconds = int(c->net.GetTimeConnected());
    Msg("# %d \"%s\" %s %02d:%02d %d %d active %s\n", c->userid, c->name.c_str(), c->networkId.c_str(), seconds / 60,
        seconds % 60, int(std::lround(c->latency * 1000.0f)), int(std::lround(c->loss * 100.0f)), c->address.c_str());
  }
}
