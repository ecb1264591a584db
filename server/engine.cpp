// The engine's main interface: the core's own operations, and the world's behind the seam.
#include "engine.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "standin.h"
#include "tier0.h"
#include "vstdlib.h"

namespace {

constexpr const char* kLogDir = "logs";
constexpr const char* kLogFile = "logs/server.log";

}  // namespace

void CEngineServer::ServerCommand(const char* text) { m_server.Cbuf().AddText(text); }
void CEngineServer::InsertServerCommand(const char* text) { m_server.Cbuf().InsertText(text); }
void CEngineServer::ServerExecute() { m_server.Execute(); }

int CEngineServer::Cmd_Argc() { return m_server.CurrentCommand().Argc(); }
const char* CEngineServer::Cmd_Argv(int index) { return m_server.CurrentCommand().Argv(index); }
const char* CEngineServer::Cmd_Args() { return m_server.CurrentCommand().Args(); }

void CEngineServer::LogPrint(const char* text) {
  if (!text) return;
  size_t n = strlen(text);
  const char* end = n && text[n - 1] == '\n' ? "" : "\n";
  Msg("L %s%s", text, end);
  CFileSystem& files = m_server.Files();
  files.MakeFolder(kLogDir);
  FileHandle_t log = files.Open(kLogFile, "a");
  if (log == FILESYSTEM_INVALID_HANDLE) {
    Warning("LogPrint: couldn't open %s/%s\n", files.ModDir().c_str(), kLogFile);
    return;
  }
  files.Write("L ", 2, log);
  files.Write(text, int(n), log);
  files.Write(end, int(strlen(end)), log);
  files.Close(log);
}

void CEngineServer::GetGameDir(char* out, int maxlen) {
  if (out) Q_strncpy(out, m_server.Files().ModDir().c_str(), maxlen);
}

float CEngineServer::Time() { return m_server.Clock().Time(); }
bool CEngineServer::IsDedicatedServer() { return !m_server.Config().listen; }

// ---- the world's operations ----

bool CEngineServer::IsMapValid(const char* name) { return m_server.World().IsMapValid(name); }
int CEngineServer::PrecacheModel(const char* name, bool preload) { return m_server.World().PrecacheModel(name, preload); }
int CEngineServer::PrecacheDecal(const char* name, bool preload) { return m_server.World().PrecacheDecal(name, preload); }
int CEngineServer::GetPlayerUserId(const edict_t* edict) { return m_server.World().GetPlayerUserId(edict); }
const char* CEngineServer::GetPlayerNetworkIDString(const edict_t* edict) {
  return m_server.World().GetPlayerNetworkIDString(edict);
}
int CEngineServer::GetEntityCount() { return m_server.World().GetEntityCount(); }
int CEngineServer::IndexOfEdict(const edict_t* edict) { return m_server.World().IndexOfEdict(edict); }
edict_t* CEngineServer::PEntityOfEntIndex(int index) { return m_server.World().PEntityOfEntIndex(index); }
INetChannelInfo* CEngineServer::GetPlayerNetInfo(int playerIndex) {
  return m_server.World().GetPlayerNetInfo(playerIndex);
}
const char* CEngineServer::GetClientConVarValue(int clientIndex, const char* name) {
  return m_server.World().GetClientConVarValue(clientIndex, name);
}
void CEngineServer::SetFakeClientConVarValue(edict_t* edict, const char* name, const char* value) {
  m_server.World().SetFakeClientConVarValue(edict, name, value);
}
edict_t* CEngineServer::CreateFakeClient(const char* name) { return m_server.World().CreateFakeClient(name); }
void CEngineServer::SetView(const edict_t* client, const edict_t* viewEnt) { m_server.World().SetView(client, viewEnt); }

void CEngineServer::ClientCommand(edict_t* edict, const char* format, ...) {
  char text[ENGINE_CLIENT_COMMAND_BYTES];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof text, format ? format : "", args);
  va_end(args);
  m_server.World().ClientCommand(edict, text);
}

void CEngineServer::FadeClientVolume(const edict_t* edict, float fadePercent, float fadeOutSeconds, float holdTime,
                                     float fadeInSeconds) {
  m_server.World().FadeClientVolume(edict, fadePercent, fadeOutSeconds, holdTime, fadeInSeconds);
}
void CEngineServer::LightStyle(int style, const char* value) { m_server.World().LightStyle(style, value); }
bf_write* CEngineServer::UserMessageBegin(IRecipientFilter* filter, int msgType) {
  return m_server.World().UserMessageBegin(filter, msgType);
}
void CEngineServer::MessageEnd() { m_server.World().MessageEnd(); }
bool CEngineServer::LockNetworkStringTables(bool lock) { return m_server.World().LockNetworkStringTables(lock); }
