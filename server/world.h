// The seam between the stand-in's core and its game world. The core owns the console, the command
// buffer, time, files and game events; the world owns everything that names a player or an entity: the
// edicts (0 the world, 1..maxClients the player slots, maxEntities in all), the game's interfaces
// (PlayerInfoManager002, IEffects001, ServerGameEnts001, ServerGameDLL005, ServerGameClients003) and the
// engine's services that deal with clients and entities (sounds, string tables, voice, physics, traces,
// random streams, plugin helpers). Every IVEngineServer operation that names a player or an entity is
// delegated to the world through the operations below, with the engine's own signature.
//
// The core makes its world with CreateServerWorld() (server/world/sim_world.cpp).
#pragma once

#include "eiface.h"

class CCvar;
class CGlobalVars;
class IGameEventManager2;
class IFileSystem;
class IServerPluginCallbacks;

// The demo game's description, as GetGameDescription gives it.
#define WORLD_GAME_DESCRIPTION "Tidewright Demo"

// What the core hands its world once, before the first level.
struct WorldSetup {
  CGlobalVars* globals;
  IVEngineServer* engine;
  CCvar* console;                  // for the world's own console commands (see CCvar::AddCommands)
  IGameEventManager2* events;
  IFileSystem* files;
  bool dedicated;
  // The plugin's callbacks while a plugin is loaded and running, else null. Asked afresh on each use.
  IServerPluginCallbacks* (*plugin)();
};

class IServerWorld {
public:
  virtual ~IServerWorld() = default;

  // ---- lifecycle, driven by the core ----
  virtual void Init(const WorldSetup& setup) = 0;
  // Makes the level's edicts; the core then tells the plugin (LevelInit, ServerActivate).
  virtual void LevelStart(const char* mapName, int maxClients) = 0;
  virtual void LevelEnd() = 0;
  // Once per frame, after the plugin's GameFrame.
  virtual void Frame() = 0;
  // The lines of `status` that list players.
  virtual void PrintStatus() = 0;
  // True while the world waits for frames to finish what a line started (client answers, queries): the
  // core runs frames until it is done, as it does for a busy command buffer.
  virtual bool Busy() const = 0;

  // ---- client commands ----
  // The client the game's commands act for: player slot - 1, or -1 for the server itself. The core sets
  // it for each command it runs.
  virtual void SetCommandClient(int client) = 0;
  // A client's command that no console command of the game took: the game's own (menuselect, jointeam...).
  // The command is the engine's current one.
  virtual void GameClientCommand(edict_t* edict) = 0;

  // ---- edicts ----
  virtual edict_t* EdictList() = 0;
  virtual int MaxEntities() const = 0;
  virtual int MaxClients() const = 0;

  // ---- interfaces the world answers for: the game's, and the engine's client and entity services ----
  virtual void* FindGameInterface(const char* name) = 0;
  virtual void* FindEngineInterface(const char* name) = 0;

  // ---- IVEngineServer operations delegated here ----
  virtual bool IsMapValid(const char* name) = 0;
  virtual int PrecacheModel(const char* name, bool preload) = 0;
  virtual int PrecacheDecal(const char* name, bool preload) = 0;
  virtual int GetPlayerUserId(const edict_t* edict) = 0;
  virtual const char* GetPlayerNetworkIDString(const edict_t* edict) = 0;
  virtual int GetEntityCount() = 0;
  virtual int IndexOfEdict(const edict_t* edict) = 0;
  virtual edict_t* PEntityOfEntIndex(int index) = 0;
  virtual INetChannelInfo* GetPlayerNetInfo(int playerIndex) = 0;
  virtual const char* GetClientConVarValue(int clientIndex, const char* name) = 0;
  virtual void SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) = 0;
  virtual edict_t* CreateFakeClient(const char* name) = 0;
  virtual void SetView(const edict_t* client, const edict_t* viewEnt) = 0;
  // The engine has formatted the text already.
  virtual void ClientCommand(edict_t* edict, const char* text) = 0;
  virtual void FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                                float fadeInSeconds) = 0;
  virtual void LightStyle(int style, const char* value) = 0;
  virtual bf_write* UserMessageBegin(IRecipientFilter* filter, int msgType) = 0;
  virtual void MessageEnd() = 0;
  virtual bool LockNetworkStringTables(bool lock) = 0;
};

IServerWorld* CreateServerWorld();
