// Event declarations: the plugin hears an event only when a resource file names it. Reads those files and
// listens to their events (LoadEventFile, the default files, tw_loadevents), and owns the one event that
// tw_event builds until it is fired or cancelled.
#include "events/declarations.h"

#include <cstdint>
#include <cstdlib>
#include <strings.h>

#include "KeyValues.h"
#include "filesystem.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "igameevents.h"
#include "language/doors.h"

namespace {

constexpr const char* kStars = "[Tidewright] *******************************************\n";
constexpr const char* kPluginEventsFile = "addons/brannock_tidewright.res";

// The plugin object, which hears the events; given by Load.
IGameEventListener2* s_listener = nullptr;

// The event tw_event is building; it survives map changes.
IGameEvent* s_pendingEvent = nullptr;

void ReportUnreadable(const char* path) {
  DbgMsg(0, "%s", kStars);
  DbgMsg(0, "[Tidewright] ERROR: Couldn't load %s\n", path);
  ReportScriptError(0, "%s", kStars);
  SetLastErrorText("Couldn't load events file.");
}

void ListenToEvents(KeyValues* top) {
  for (KeyValues* event = top->GetFirstSubKey(); event; event = event->GetNextKey()) {
    DbgMsg(1, "[Tidewright] Added: %s\n", event->GetName());
    gameeventmanager->AddListener(s_listener, event->GetName(), true);
  }
}

// Registering the default files is what makes the plugin a listener; LevelShutdown dropped every listener.
void ListenToDefaultEvents() {
  if (tidewright_defaultevents.GetInt() != 0) RegisterDefaultEvents();
}

// ---- tw_loadevents ----

// With three or more words the path is the last one, and the file is declared to the engine first.
void LoadEvents_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  if (args.Argc() > 2) {
    gameeventmanager->LoadEventsFromFile(args.Argv(2));
    LoadEventFile(args.Argv(2));
    return;
  }
  LoadEventFile(args.Argv(1));
}

// ---- tw_event ----

// One event at a time can be built: a command for another name while one is pending is a sign of two
// scripts interleaving, which is told but not refused.
void WarnAboutPendingEvent(const char* command, const char* name) {
  if (!s_pendingEvent) return;
  const char* pending = s_pendingEvent->GetName();
  if (!pending || strcasecmp(pending, name) == 0) return;
  DbgMsg(0,
         "WARNING: A script is calling 'tw_event %s' for %s when the existing event %s has not been cancelled or "
         "fired. Trying to continue anyway...\n",
         command, name, pending);
}

// A pending event that a new one replaces is given back first.
void InitializeEvent(const char* door, const char* name) {
  ReleasePendingEvent();
  s_pendingEvent = gameeventmanager->CreateEvent(name, true);
  if (!s_pendingEvent) {
    DbgMsg(0, "%s: Event %s not registered or no listeners.\n", door, name);
    SetLastErrorText("Event not registered or no listeners.");
    return;
  }
  DbgMsg(1, "Event %s created successfully.\n", s_pendingEvent->GetName());
}

// The manager takes the event over whatever the outcome.
void FireEvent(const char* name) {
  if (!s_pendingEvent) {
    DbgMsg(0, "ERROR: Event lost.\n");
    return;
  }
  IGameEvent* event = s_pendingEvent;
  s_pendingEvent = nullptr;
  if (gameeventmanager->FireEvent(event, false))
    DbgMsg(1, "Event %s fired successfully.\n", name);
  else
    DbgMsg(1, "Event %s NOT fired successfully.\n", name);
}

// Sets one field of the pending event; false for a command that is no setter.
bool SetField(const char* command, const char* key, const char* value) {
  if (strcasecmp(command, "setint") == 0)
    s_pendingEvent->SetInt(key, int(strtol(value, nullptr, 10)));
  else if (strcasecmp(command, "setfloat") == 0)
    s_pendingEvent->SetFloat(key, float(strtod(value, nullptr)));
  else if (strcasecmp(command, "setstring") == 0)
    s_pendingEvent->SetString(key, value);
  else
    return false;
  return true;
}

void Event_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const char* command = args.Argv(1);
  const char* name = args.Argv(2);
  WarnAboutPendingEvent(command, name);
  if (strcasecmp(command, "initialize") == 0) {
    InitializeEvent(args.Argv(0), name);
    return;
  }
  if (strcasecmp(command, "cancel") == 0) {
    ReleasePendingEvent();
    return;
  }
  if (strcasecmp(command, "fire") == 0) {
    FireEvent(name);
    return;
  }
  if (args.Argc() > 4 && s_pendingEvent && SetField(command, args.Argv(3), args.Argv(4))) return;
  DbgMsg(0, "No valid command situation for tw_event! %d, 0x%llx\n", args.Argc(),
         static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(s_pendingEvent)));
}

const CommandRow kDeclarationCommands[] = {
    {"event", Event_h, 3, "Syntax: %s <command> <event-name> [value-name] [value]\n",
     "Builds and fires a game event: initialize, setint, setfloat, setstring, then fire or cancel.", DOORS_ALL},
    {"loadevents", LoadEvents_h, 2, "Syntax: %s [declare] <pathtoeventfile>\n",
     "Listens to the events of a resource file; with a word before the path, declares them to the engine first.",
     DOORS_ALL},
};
const CommandTable s_declarationCommands(kDeclarationCommands);

}  // namespace

bool LoadEventFile(const char* path) {
  KeyValues* top = new KeyValues("events");
  if (!top->LoadFromFile(filesystem, path, nullptr)) {
    ReportUnreadable(path);
    top->deleteThis();
    return false;
  }
  ListenToEvents(top);
  DbgMsg(1, "[Tidewright] Done loading events.\n");
  top->deleteThis();
  return true;
}

void RegisterDefaultEvents() {
  DbgMsg(1, "[Tidewright] ** Registering files...\n");
  if (LoadEventFile("resource/modevents.res"))
    DbgMsg(1, "[Tidewright] ** Registered modevents.\n");
  else
    LoadEventFile("Resource/modevents.res");
  LoadEventFile("../hl2/resource/gameevents.res");
  LoadEventFile("../hl2/resource/serverevents.res");
  if (!LoadEventFile(kPluginEventsFile)) DbgMsg(0, "ERROR: COULDN'T LOAD BRANNOCK CORE EVENTS!\n");
}

IGameEvent* PendingEvent() { return s_pendingEvent; }

void ReleasePendingEvent() {
  if (!s_pendingEvent) return;
  gameeventmanager->FreeEvent(s_pendingEvent);
  s_pendingEvent = nullptr;
}

// ---- the plugin's callbacks ----

// The plugin's own events are declared to the engine unconditionally, so that they can always be created.
void Declarations_OnLoad(IGameEventListener2* listener) {
  s_listener = listener;
  gameeventmanager->LoadEventsFromFile(kPluginEventsFile);
  ListenToDefaultEvents();
}

void Declarations_OnLevelInit() { ListenToDefaultEvents(); }

void Declarations_StopListening() {
  if (gameeventmanager && s_listener) gameeventmanager->RemoveListener(s_listener);
}
