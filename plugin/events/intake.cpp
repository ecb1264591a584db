// Event intake: the game events that reach the plugin's FireGameEvent, the queue of duplicated events and
// tw__ep that makes the current event. Nothing here runs script work: it only appends to the buffer's tail,
// so an event that fires inside a running block waits for the block. Starting the scripts' event sections
// is the execution engine's; the script packs' files are the packs'.
#include "events/intake.h"

#include <cstdio>
#include <cstdlib>
#include <strings.h>
#include <vector>

#include "eiface.h"
#include "events/current_event.h"
#include "events/extended.h"
#include "filesystem.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "igameevents.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "packs/scriptpacks.h"
#include "script/machine.h"
#include "tier1/handletable.h"

namespace {

using EventHandle = HandleTable<IGameEvent>::Handle;

// "tw__ep " and a 64-bit handle in decimal.
constexpr int kPopCommandSize = 48;

// Events that fire many times a second; they are dropped unless tidewright_noisy is 1.
constexpr const char* kNoisyEvents[] = {"weapon_reload", "player_footstep", "weapon_fire", "bullet_impact"};

// Duplicates waiting for their tw__ep, by handle, oldest first. The handle is what travels through the
// buffer, so a typed number names a queued event only if it was handed out for one that still waits.
HandleTable<IGameEvent> s_eventHandles;
std::vector<EventHandle> s_eventQueue;

bool IsNoisy(const char* name) {
  for (const char* noisy : kNoisyEvents)
    if (strcasecmp(name, noisy) == 0) return true;
  return false;
}

// Names that don't fit a path or command are reported, and the file counts as absent.
void ReportTooLong(const char* name) {
  DbgMsg(0, "[Tidewright] The configuration file name of event %s is too long.\n", name);
}

bool EventConfigExists(const char* name) {
  TextBuf path;
  if (!path.Append("cfg/") || !path.Append(tidewright_subdirectory.GetString()) || !path.Append('/') ||
      !path.Append(name) || !path.Append(".cfg")) {
    ReportTooLong(name);
    return false;
  }
  return filesystem->FileExists(path.c_str());
}

// ---- a wanted event ----

// The keys every wanted event carries for its scripts. Written into the engine's event before the duplicate
// is made, so that the copy has them.
void SetExtendedVariables(IGameEvent* event, const char* name) {
  event->SetString("tw_event", name);
  SetExtendedEventVariables(event);
}

EventHandle PushDuplicate(IGameEvent* event) {
  DbgMsg(4, "Event has fired, duplicating event and pushing it to stack. Before: %d\n", int(s_eventQueue.size()));
  EventHandle handle = s_eventHandles.Add(gameeventmanager->DuplicateEvent(event));
  s_eventQueue.push_back(handle);
  DbgMsg(4, "Duplicated event and pushed it to stack. After: %d\n", int(s_eventQueue.size()));
  return handle;
}

void QueuePop(EventHandle handle) {
  DbgMsg(4, "Sending tw__ep command.\n");
  char command[kPopCommandSize];
  snprintf(command, sizeof command, "tw__ep %llu\n", static_cast<unsigned long long>(handle));
  engine->ServerCommand(command);
}

void QueueEventConfig(const char* name) {
  const char* exec = tidewright_exec_cmd.GetString();
  TextBuf line;
  if (!line.Append(exec) || !line.Append(' ') || !line.Append(tidewright_subdirectory.GetString()) ||
      !line.Append('/') || !line.Append(name) || !line.Append(".cfg\n")) {
    ReportTooLong(name);
    return;
  }
  DbgMsg(2, "Sending %s command for %s.\n", exec, name);
  engine->ServerCommand(line.c_str());
}

void QueueWantedEvent(IGameEvent* event, const char* name, bool hasConfig) {
  DbgMsg(2, "Event has a script-- building extended variables.\n");
  SetExtendedVariables(event, name);
  QueuePop(PushDuplicate(event));
  if (hasConfig) QueueEventConfig(name);
  ExecAllRegistered(name);
}

// ---- tw__ep ----

void ReleaseCurrentEvent() {
  if (!g_currentEvent) return;
  DbgMsg(5, "Freeing previous event.\n");
  gameeventmanager->FreeEvent(g_currentEvent);
  g_currentEvent = nullptr;
}

// The queue position of a handle given as text, or -1. Only a whole decimal number can name one.
int FindQueued(const char* text) {
  char* end = nullptr;
  EventHandle handle = strtoull(text, &end, 10);
  if (end == text || *end != '\0') return -1;
  for (size_t i = 0; i < s_eventQueue.size(); ++i)
    if (s_eventQueue[i] == handle) return int(i);
  return -1;
}

// Takes the duplicate at `position` out of the queue and makes it current.
void MakeCurrent(size_t position) {
  EventHandle handle = s_eventQueue[position];
  s_eventQueue.erase(s_eventQueue.begin() + long(position));
  g_currentEvent = s_eventHandles.Get(handle);
  s_eventHandles.Remove(handle);
  if (!g_currentEvent) {
    DbgMsg(1, "ERROR: Failed to grab event pointer.\n");
    return;
  }
  DbgMsg(5, "Grabbed event pointer: %s.\n", g_currentEvent->GetName());
  if (position > 0) DbgMsg(5, "Changed event pointer: %s.\n", g_currentEvent->GetName());
}

// tw__ep [handle]: the next queued event becomes current, or the queued event of the handle given. A handle
// that names no waiting event leaves no current event.
void PopEvent_f() {
  const bool given = engine->Cmd_Argc() > 1;
  DbgMsg(5, "Internal pop event received.\n");
  ReleaseCurrentEvent();
  DbgMsg(5, "Popping event pointer.\n");
  if (s_eventQueue.empty()) {
    DbgMsg(1, "ERROR: Stack empty, couldn't grab event pointer.\n");
    return;
  }
  DbgMsg(5, "Counted event pointer, grabbing.\n");
  int position = given ? FindQueued(engine->Cmd_Argv(1)) : 0;
  if (position < 0) {
    DbgMsg(1, "ERROR: No queued event has the handle %s.\n", engine->Cmd_Argv(1));
    return;
  }
  MakeCurrent(size_t(position));
}

const PlainCommandRow kIntakeCommands[] = {
    {"tw__ep", PopEvent_f, "Tidewright internal command: makes the next queued game event the current one."},
};
const CommandTable s_intakeCommands(kIntakeCommands);

}  // namespace

// ---- the engine's callback ----

// An event nobody wants costs a name test, one file test and two lookups: no copy, no allocation.
void Intake_OnGameEvent(IGameEvent* event) {
  const char* name = event ? event->GetName() : nullptr;
  if (!name || g_cached.brannock != 1) return;
  DbgMsg(2, "Event fired: %s\n", name);
  if (g_cached.noisy != 1 && IsNoisy(name)) return;
  const bool hasConfig = EventConfigExists(name);
  if (hasConfig || RegisteredScriptExists(name) || AnyScriptRegistered(name))
    QueueWantedEvent(event, name, hasConfig);
  DbgMsg(2, "Done with an event: %s\n", name);
}

// ---- the queue ----

size_t QueuedEventCount() { return s_eventQueue.size(); }

void ReleaseEvents() {
  ReleaseCurrentEvent();
  for (EventHandle handle : s_eventQueue) {
    if (IGameEvent* event = s_eventHandles.Get(handle)) gameeventmanager->FreeEvent(event);
    s_eventHandles.Remove(handle);
  }
  s_eventQueue.clear();
}
