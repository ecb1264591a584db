// The stand-in's game world: the level's edicts and the entities in them, the clients in the player slots,
// the game's and the engine's services around them, and the lines that show what reaches clients. One
// object owns all of it; its operations are split over files by concern:
//   sim_world.cpp  edicts, entities, lifecycle, interfaces, frames;
//   clients.cpp    connecting, leaving, player state, client consoles, player info;
//   messages.cpp   user messages, dialogs and every delivery line;
//   services.cpp   sounds, effects, string tables, voice, physics, helpers, the game's interfaces;
//   sim_messaging.cpp  the clients' open menus and last dialogs, and the commands that answer them;
//   game_commands.cpp, sim_commands.cpp  the console commands of the game and of the stand-in.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "bitbuf.h"
#include "console.h"
#include "igameevents.h"
#include "world.h"
#include "world/clients.h"
#include "world/entities.h"
#include "world/services.h"

// Edict slots of a level: the world, the player slots and every other entity.
constexpr int WORLD_MAX_ENTITIES = 2048;
// Bytes of one user message, as the engine sends them.
constexpr int WORLD_USER_MESSAGE_BYTES = 255;
// Client commands that one client console line may hold.
constexpr int WORLD_MAX_CLIENT_COMMANDS = 64;

// An input that ent_fire gave with a delay, waiting for its frame.
struct PendingInput {
  long long dueFrame;
  uint32_t target;  // entity handle value
  std::string action;
  std::string value;
};

// A user message as MessageEnd delivers it, for a tap (tests): the recipients' userids in filter order and
// the payload's bytes.
struct SentUserMessage {
  int id;
  std::vector<int> userids;
  std::vector<unsigned char> bytes;
  bool overflowed;
};
using UserMessageTap = std::function<void(const SentUserMessage&)>;

// Text that a client console runs on a later frame, as a real client answers.
struct PendingClientText {
  int userid;
  std::string text;
};

class CSimWorld final : public IServerWorld {
public:
  CSimWorld();
  ~CSimWorld() override;

  // ---- IServerWorld ----
  void Init(const WorldSetup& setup) override;
  void LevelStart(const char* mapName, int maxClients) override;
  void LevelEnd() override;
  void Frame() override;
  void PrintStatus() override;
  bool Busy() const override;
  void SetCommandClient(int client) override { m_gameClients.SetCommandClient(client); }
  void GameClientCommand(edict_t* edict) override;
  edict_t* EdictList() override { return m_edicts.data(); }
  int MaxEntities() const override { return int(m_edicts.size()); }
  int MaxClients() const override { return m_maxClients; }
  void* FindGameInterface(const char* name) override;
  void* FindEngineInterface(const char* name) override;

  bool IsMapValid(const char* name) override;
  int PrecacheModel(const char* name, bool preload) override;
  int PrecacheDecal(const char* name, bool preload) override;
  int GetPlayerUserId(const edict_t* edict) override;
  const char* GetPlayerNetworkIDString(const edict_t* edict) override;
  int GetEntityCount() override { return m_highWater; }
  int IndexOfEdict(const edict_t* edict) override;
  edict_t* PEntityOfEntIndex(int index) override;
  INetChannelInfo* GetPlayerNetInfo(int playerIndex) override;
  const char* GetClientConVarValue(int clientIndex, const char* name) override;
  void SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) override;
  edict_t* CreateFakeClient(const char* name) override;
  void SetView(const edict_t* client, const edict_t* viewEnt) override;
  void ClientCommand(edict_t* edict, const char* text) override;
  void FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                        float fadeInSeconds) override;
  void LightStyle(int style, const char* value) override;
  bf_write* UserMessageBegin(IRecipientFilter* filter, int msgType) override;
  void MessageEnd() override;
  bool LockNetworkStringTables(bool lock) override { return m_stringTables.Lock(lock); }

  // ---- the setup the core gave ----
  const WorldSetup& Setup() const { return m_setup; }
  IServerPluginCallbacks* Plugin() const { return m_setup.plugin ? m_setup.plugin() : nullptr; }
  // Seconds on the server's clock, and frames run by the world.
  double Now() const;
  long long FrameNumber() const { return m_frame; }
  // Frames that `seconds` of game time take.
  long long FramesFor(float seconds) const;

  // ---- entities (sim_world.cpp) ----
  // Makes an entity of that type in the lowest free slot above the player slots; null when all are taken.
  CEntity* CreateEntity(const EntityType& type, const Vector& origin);
  void RemoveEntity(CEntity& entity);
  // The live entity at an index, or null.
  CEntity* EntityAt(int index) const;
  // The live entity that an entity handle value names, or null for a stale or forged one.
  CEntity* EntityOfHandle(uint32_t handle) const;
  // Every live entity whose index (as digits), target name or class name is `target`, in index order.
  std::vector<CEntity*> FindTargets(const char* target) const;
  // Fires an input at an entity: shown, and acted on where the game knows the input.
  void FireInput(CEntity& entity, const char* action, const char* value);
  void QueueInput(CEntity& entity, const char* action, const char* value, float delay);

  // ---- clients (clients.cpp) ----
  CClient* ClientBySlot(int slot) const;
  CClient* ClientByUserid(int userid) const;
  CClient* ClientOfEdict(const edict_t* edict) const;
  // The player the game's commands act for (IServerGameClients::SetCommandClient), or null.
  CClient* CommandClient() const;
  // Connects a client through all the engine's steps; null when refused (the reason is printed).
  CClient* Connect(const char* name, const char* networkId, bool fake);
  void Disconnect(CClient& client, const char* reason);
  void Rename(CClient& client, const char* name);
  void SetClientVar(CClient& client, const char* name, const char* value);
  void ChangeTeam(CClient& client, int team);
  void SetDead(CClient& client, bool dead);
  void Kill(CClient& victim, CClient* attacker, const char* weapon);
  void Hurt(CClient& victim, CClient* attacker, int damage, const char* weapon);
  void Spawn(CClient& client);
  // The client types a line on its console: its own variables are set there, everything else goes to the
  // server as client commands.
  void ClientConsole(CClient& client, const char* text);
  // A person talks over voice: "> voice to R1,R2: from USERID" for the humans who hear him.
  void Speak(CClient& speaker);
  // Client slots in use, in slot order.
  std::vector<CClient*> Clients() const;
  int UseridOfIndex(int index) const;

  // ---- deliveries (messages.cpp) ----
  bool DeliveriesShown() const { return m_showDeliveries; }
  void ShowDeliveries(bool on) { m_showDeliveries = on; }
  // "2,3": the userids of the filter's recipients that are clients, in filter order.
  std::string Recipients(const IRecipientFilter& filter) const;
  std::string HumanRecipients(int team = -1) const;
  // One line "> KIND to USERIDS: CONTENT"; nothing when nobody receives it.
  void Deliver(const char* kind, const std::string& recipients, const std::string& content) const;
  // One line "> KIND: CONTENT" for what changes for every client.
  void Announce(const char* kind, const std::string& content) const;
  // Shows a dialog and keeps a copy of it as the client's last one, for sim_dialog to answer.
  void ShowDialog(CClient& client, int type, KeyValues* data);
  // Every user message, as it is delivered, also goes to the tap; an empty tap stops it.
  void SetUserMessageTap(UserMessageTap tap) { m_messageTap = std::move(tap); }

  // ---- menus (sim_messaging.cpp) ----
  // A "ShowMenu" piece reached the client: joined to the pieces before it, and with more = 0 the client's
  // open menu, replacing the one it had.
  void ReceiveMenuPiece(CClient& client, int keys, int time, bool more, const char* text);
  // True while the client's menu is open and its time hasn't run out (a menu whose time ran out is closed).
  bool MenuOpen(CClient& client) const;

  // ---- services ----
  CStringTables& StringTables() { return m_stringTables; }
  CPhysics& Physics() { return m_physics; }
  // Fires a declared game event if anybody listens; `fill` sets its keys.
  template <class Fill>
  void FireEvent(const char* name, Fill fill);

private:
  edict_t* AllocEdict(int index);
  void FreeEdict(int index);
  void AttachEntity(int index, std::unique_ptr<CEntity> entity);
  void RunPendingInputs();
  void RunPendingClientText();
  void FreeClient(CClient& client);
  void DropClientsAbove(int maxClients);
  void MakePlayerEntity(CClient& client);
  void ReenterClients();
  CClient* NewClient(const char* name, const char* networkId, bool fake);
  bool AdmitClient(CClient& client);
  void EnterGame(CClient& client, bool validate);
  std::string RecipientsOf(const std::vector<int>& indexes) const;
  void DeliverMessage(int id);

  WorldSetup m_setup{};
  std::vector<edict_t> m_edicts;
  std::vector<std::unique_ptr<CEntity>> m_entities;  // by index
  std::vector<std::unique_ptr<CClient>> m_clients;   // by slot
  std::unordered_map<int, int> m_slotOfUserid;
  int m_maxClients = 0;
  int m_highWater = 0;
  int m_nextUserid = CLIENT_FIRST_USERID;
  long long m_frame = 0;
  bool m_showDeliveries = true;
  std::deque<PendingInput> m_inputs;
  std::deque<PendingClientText> m_clientText;
  std::vector<int> m_reentering;  // userids that enter the new level on its first frame

  CPlayerInfoManager m_playerInfo{*this};
  CEffects m_effects{*this};
  CGameEnts m_gameEnts;
  CGameDLL m_gameDll;
  CGameClients m_gameClients;
  CVoiceServer m_voice;
  CEngineTrace m_trace;
  CEngineSound m_sound{*this};
  CStringTables m_stringTables{*this};
  CRandomStream m_random;
  CPhysics m_physics;
  CPluginHelpers m_helpers{*this};

  bf_write m_message;
  unsigned char m_messageData[WORLD_USER_MESSAGE_BYTES] = {};
  int m_messageType = -1;  // the message under construction, -1 when none
  std::vector<int> m_messageIndexes;  // its recipients' entity indexes, in filter order
  UserMessageTap m_messageTap;
};

// The world of the running stand-in, for the world's console commands.
CSimWorld& SimWorld();
// The console commands of the game (game_commands.cpp) and of the stand-in (sim_commands.cpp).
void RegisterGameCommands(CCvar& console);
void RegisterSimCommands(CCvar& console);
// sim_menu, sim_dialog and sim_stringtable (sim_messaging.cpp).
void RegisterMessagingSimCommands(CCvar& console);
// A text in double quotes with C escapes (\n, \\, \", \xNN for other control bytes): one line always.
std::string EscapedText(const char* text);
std::string EscapedText(const char* text, size_t length);
// Name and size of the game's user message `id` (messages.cpp); false when there is no such id.
bool UserMessageInfoOf(int id, char* name, int maxNameLength, int& size);

template <class Fill>
void CSimWorld::FireEvent(const char* name, Fill fill) {
  IGameEventManager2* events = m_setup.events;
  IGameEvent* event = events ? events->CreateEvent(name, false) : nullptr;
  if (!event) return;
  fill(*event);
  events->FireEvent(event, false);
}
