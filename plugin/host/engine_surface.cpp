// The engine's and the game's interfaces as the plugin holds them: acquired once by Load in a fixed order,
// with the rule for each that is missing, and the single door through which script lines enter the
// engine's command buffer.
#include "host/engine_surface.h"

#include <cstdio>
#include <type_traits>

#include "eiface.h"
#include "host/diagnostics.h"
#include "iplayerinfo.h"

IPlayerInfoManager* playerinfomanager = nullptr;
IVoiceServer* voiceserver = nullptr;
IVEngineServer* engine = nullptr;
IGameEventManager2* gameeventmanager = nullptr;
IFileSystem* filesystem = nullptr;
IServerPluginHelpers* helpers = nullptr;
IEngineTrace* enginetrace = nullptr;
IEngineSound* enginesound = nullptr;
IEffects* effects = nullptr;
INetworkStringTableContainer* networkstringtable = nullptr;
IUniformRandomStream* randomstream = nullptr;
IPhysics* physics = nullptr;
IServerGameEnts* gameents = nullptr;
IServerGameClients* gameclients = nullptr;
IServerGameDLL* gamedll = nullptr;
ICvar* cvar = nullptr;
CGlobalVars* gpGlobals = nullptr;

namespace {

// The game's interface versions tried by probing, both ends included.
constexpr int kFirstProbedVersion = 3;
constexpr int kLastProbedVersion = 998;
constexpr int kMaxInterfaceName = 64;

enum class Source { Engine, Game };

// One interface that Load asks for. `missing` is the warning of a tolerated interface; null marks a
// required one.
struct InterfaceSlot {
  const char* name;
  Source source;
  void (*store)(void* found);
  const char* missing;
};

// Stores an interface in its global, null included.
template <auto& Global>
void Store(void* found) {
  Global = static_cast<std::remove_reference_t<decltype(Global)>>(found);
}

void* Ask(CreateInterfaceFn factory, const char* name) { return factory ? factory(name, nullptr) : nullptr; }

// Acquires the slots in order. False at the first required interface that is missing.
bool AcquireSlots(const InterfaceSlot* slots, int count, CreateInterfaceFn engineFactory,
                  CreateInterfaceFn gameFactory) {
  for (int i = 0; i < count; ++i) {
    const InterfaceSlot& s = slots[i];
    void* found = Ask(s.source == Source::Engine ? engineFactory : gameFactory, s.name);
    s.store(found);
    if (found) continue;
    if (!s.missing) {
      Warning("[Tidewright] Failure in getting the interfaces we need.\n");
      return false;
    }
    Warning("%s", s.missing);
  }
  return true;
}

void ProbeGameInterfaces(CreateInterfaceFn gameFactory) {
  char name[kMaxInterfaceName];
  gamedll = static_cast<IServerGameDLL*>(
      ProbeInterfaceVersion(gameFactory, INTERFACEVERSION_SERVERGAMEDLL_PREFIX, name, sizeof name));
  if (gamedll)
    DbgMsg(1, "[Tidewright] Using %s for game.\n", name);
  else
    Warning("[Tidewright] Failure in getting the serverDLL interface.\n");

  gameclients = static_cast<IServerGameClients*>(
      ProbeInterfaceVersion(gameFactory, INTERFACEVERSION_SERVERGAMECLIENTS_PREFIX, name, sizeof name));
  if (gameclients) DbgMsg(1, "[Tidewright] Using %s for game clients.\n", name);
}

}  // namespace

bool AcquireInterfaces(CreateInterfaceFn interfaceFactory, CreateInterfaceFn gameServerFactory) {
  const InterfaceSlot slots[] = {
      {"PlayerInfoManager002", Source::Game, Store<playerinfomanager>, "Unable to load playerinfomanager, ignoring\n"},
      {"VoiceServer001", Source::Engine, Store<voiceserver>, "IVoiceServer not obtained.\n"},
      {"VEngineServer021", Source::Engine, Store<engine>, nullptr},
      {"GAMEEVENTSMANAGER002", Source::Engine, Store<gameeventmanager>, nullptr},
      {"VFileSystem012", Source::Engine, Store<filesystem>, nullptr},
      {"ISERVERPLUGINHELPERS001", Source::Engine, Store<helpers>, nullptr},
      {"EngineTraceServer003", Source::Engine, Store<enginetrace>, nullptr},
      {"IEngineSoundServer003", Source::Engine, Store<enginesound>, nullptr},
      {"IEffects001", Source::Game, Store<effects>, nullptr},
      {"VEngineServerStringTable001", Source::Engine, Store<networkstringtable>, nullptr},
      {"VEngineRandom001", Source::Engine, Store<randomstream>, nullptr},
      {"VPhysics030", Source::Engine, Store<physics>, "IPhysics not obtained.\n"},
      {"ServerGameEnts001", Source::Game, Store<gameents>, "IServerGameEnts not obtained!\n"},
  };
  if (!AcquireSlots(slots, int(sizeof slots / sizeof slots[0]), interfaceFactory, gameServerFactory)) return false;
  ProbeGameInterfaces(gameServerFactory);
  if (playerinfomanager) gpGlobals = playerinfomanager->GetGlobalVars();
  return true;
}

void* ProbeInterfaceVersion(CreateInterfaceFn factory, const char* prefix, char* foundName, int foundNameSize) {
  char name[kMaxInterfaceName];
  for (int version = kFirstProbedVersion; version <= kLastProbedVersion; ++version) {
    snprintf(name, sizeof name, "%s%03d", prefix, version);
    if (void* found = Ask(factory, name)) {
      if (foundName && foundNameSize > 0) snprintf(foundName, size_t(foundNameSize), "%s", name);
      return found;
    }
  }
  return nullptr;
}

void ImmediateExecuteCommand(const char* text) {
  if (!text) return;
  if (g_cached.scripttrace == 2) DbgMsg(0, "[trace] %s", text);
  if (g_cached.debug >= 7) DbgMsg(7, "ImmediateExecuteCommand %d: %s\n", g_cached.eiface, text);
  if (engine) engine->InsertServerCommand(text);
}
