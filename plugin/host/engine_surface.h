// The boundary to the game server: the interfaces that Load acquires, in the globals every other part uses,
// and the one way by which a script line reaches the engine's command buffer.
#pragma once

#include "basetypes.h"

class IVEngineServer;
class IGameEventManager2;
class IFileSystem;
class IServerPluginHelpers;
class IEngineTrace;
class IEngineSound;
class IEffects;
class INetworkStringTableContainer;
class IUniformRandomStream;
class IVoiceServer;
class IPhysics;
class IServerGameEnts;
class IServerGameDLL;
class IServerGameClients;
class IPlayerInfoManager;
class ICvar;
class CGlobalVars;

extern IPlayerInfoManager* playerinfomanager;
extern IVoiceServer* voiceserver;
extern IVEngineServer* engine;
extern IGameEventManager2* gameeventmanager;
extern IFileSystem* filesystem;
extern IServerPluginHelpers* helpers;
extern IEngineTrace* enginetrace;
extern IEngineSound* enginesound;
extern IEffects* effects;
extern INetworkStringTableContainer* networkstringtable;
extern IUniformRandomStream* randomstream;
extern IPhysics* physics;
extern IServerGameEnts* gameents;
extern IServerGameClients* gameclients;
extern IServerGameDLL* gamedll;
extern ICvar* cvar;
extern CGlobalVars* gpGlobals;

// Acquires the interfaces in their fixed order with their failure rules, probes the game's versions and
// takes the global variables block from the player info manager, where there is one. False when a required
// interface is missing (the warning has been printed).
bool AcquireInterfaces(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory);

// Probes "<prefix>%03d" from 3 to 998 and gives the first interface found, its name in `foundName`.
void* ProbeInterfaceVersion(CreateInterfaceFn factory, const char* prefix, char* foundName, int foundNameSize);

// Inserts a line at the head of the engine's command buffer; the text ends in a line feed.
void ImmediateExecuteCommand(const char* text);
