// The plugin's own events made from engine callbacks: each fills its keys from the callback's arguments,
// missing texts as empty ones. Firing itself is the engine surface's (FirePluginEvent).
#include "events/callback_events.h"

#include "eiface.h"
#include "events/plugin_events.h"
#include "host/diagnostics.h"

namespace {

const char* TextOrEmpty(const char* text) { return text ? text : ""; }

const char* QueryStatusText(EQueryCvarValueStatus status) {
  switch (status) {
    case eQueryCvarValueStatus_ValueIntact: return "success";
    case eQueryCvarValueStatus_CvarNotFound: return "not found";
    case eQueryCvarValueStatus_NotACvar: return "not variable";
    case eQueryCvarValueStatus_CvarProtected: return "protected";
  }
  return "unknown";
}

}  // namespace

void CallbackEvents_OnLevelInit(const char* mapName) {
  FirePluginEvent("tw_map_start", [&](IGameEvent* event) { event->SetString("mapname", TextOrEmpty(mapName)); });
}

void CallbackEvents_OnClientSettingsChanged(edict_t* edict) {
  FirePluginEvent("tw_player_setting",
                  [&](IGameEvent* event) { event->SetInt("userid", engine->GetPlayerUserId(edict)); });
}

void CallbackEvents_OnNetworkIDValidated(const char* userName, const char* networkID) {
  FirePluginEvent("tw_player_validated", [&](IGameEvent* event) {
    event->SetString("name", TextOrEmpty(userName));
    event->SetString("networkid", TextOrEmpty(networkID));
  });
}

void CallbackEvents_OnQueryCvarValueFinished(edict_t* edict, EQueryCvarValueStatus status, const char* name,
                                             const char* value) {
  if (!edict) {
    DbgMsg(1, "TW: OnQueryCvarValueFinished called but values did not exist.\n");
    return;
  }
  FirePluginEvent("tw_player_variable", [&](IGameEvent* event) {
    event->SetInt("userid", engine->GetPlayerUserId(edict));
    event->SetString("status", QueryStatusText(status));
    event->SetString("variable", TextOrEmpty(name));
    event->SetString("value", TextOrEmpty(value));
  });
}
