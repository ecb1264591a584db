// Placeholder: the plugin object until the host shell lands.
#include "host/plugin.h"

CTidewrightPlugin g_TidewrightPlugin;
int MaxClients = 0;
unsigned char g_levelFlag = 0;

CTidewrightPlugin::CTidewrightPlugin() = default;
CTidewrightPlugin::~CTidewrightPlugin() = default;
bool CTidewrightPlugin::Load(CreateInterfaceFn, CreateInterfaceFn) { return true; }
void CTidewrightPlugin::Unload() {}
void CTidewrightPlugin::Pause() {}
void CTidewrightPlugin::UnPause() {}
const char* CTidewrightPlugin::GetPluginDescription() { return "Tidewright, Version:" TIDEWRIGHT_VERSION; }
void CTidewrightPlugin::LevelInit(const char*) {}
void CTidewrightPlugin::ServerActivate(edict_t*, int, int clientMax) { MaxClients = clientMax; }
void CTidewrightPlugin::GameFrame(bool) {}
void CTidewrightPlugin::LevelShutdown() {}
void CTidewrightPlugin::ClientActive(edict_t*) {}
void CTidewrightPlugin::ClientDisconnect(edict_t*) {}
void CTidewrightPlugin::ClientPutInServer(edict_t*, const char*) {}
void CTidewrightPlugin::SetCommandClient(int index) { m_commandIndex = index; }
void CTidewrightPlugin::ClientSettingsChanged(edict_t*) {}
PLUGIN_RESULT CTidewrightPlugin::ClientConnect(bool*, edict_t*, const char*, const char*, char*, int) {
  return PLUGIN_CONTINUE;
}
PLUGIN_RESULT CTidewrightPlugin::ClientCommand(edict_t*) { return PLUGIN_CONTINUE; }
PLUGIN_RESULT CTidewrightPlugin::NetworkIDValidated(const char*, const char*) { return PLUGIN_CONTINUE; }
void CTidewrightPlugin::OnQueryCvarValueFinished(QueryCvarCookie_t, edict_t*, EQueryCvarValueStatus, const char*,
                                                 const char*) {}
void CTidewrightPlugin::FireGameEvent(IGameEvent*) {}
