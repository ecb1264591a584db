// Event intake: the game events that reach the plugin's FireGameEvent, the queue of duplicated events and
// tw__ep that makes the current event. Nothing here runs script work: it only appends to the buffer's tail,
// so an event that fires inside a running block waits for the block. Starting the scripts' event sections
// is the execution engine's; the script packs' files are the packs'.
#include "events/intake.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <strings.h>

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

// Duplicates waiting for their tw__ep: the table holds the ones that wait, the queue their firing order.
// The handle is what travels through the buffer, so a typed number names a queued event only if it was
// handed out for one that still waits. A duplicate taken out of order by its handle leaves its place in
// the queue behind, which is passed over when it comes to the front: every step costs the same however
// many events wait.
HandleTable<IGameEvent> s_eventHandles;
std::deque<EventHandle> s_eventQueue;

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
  DbgMsg(4, "Event has fired, duplicating event and pushing it to stack. Before: %d\n", int(QueuedEventCount()));
  EventHandle handle = s_eventHandles.Add(gameeventmanager->DuplicateEvent(event));
  s_eventQueue.push_back(handle);
  DbgMsg(4, "Duplicated event and pushed it to stack. After: %d\n", int(QueuedEventCount()));
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

// Passes over the places of duplicates that were taken out of order.
void DropTakenFromFront() {
  while (!s_eventQueue.empty() && !s_eventHandles.Contains(s_eventQueue.front())) s_eventQueue.pop_front();
}

// The handle given as text, when it names a waiting duplicate; else kNone. Only a whole decimal number
// can name one.
EventHandle FindQueued(const char* text) {
  char* end = nullptr;
  EventHandle handle = strtoull(text, &end, 10);
  if (end == text || *end != '\0' || !s_eventHandles.Contains(handle)) return HandleTable<IGameEvent>::kNone;
  return handle;
}

// Takes the waiting duplicate of `handle` out of the queue and makes it current.
void MakeCurrent(EventHandle handle) {
  const bool first = handle == s_eventQueue.front();
  g_currentEvent = s_eventHandles.Get(handle);
  s_eventHandles.Remove(handle);
  DropTakenFromFront();
  if (!g_currentEvent) {
    DbgMsg(1, "ERROR: Failed to grab event pointer.\n");
    return;
  }
  DbgMsg(5, "Grabbed event pointer: %s.\n", g_currentEvent->GetName());
  if (!first) DbgMsg(5, "Changed event pointer: %s.\n", g_currentEvent->GetName());
}

// tw__ep [handle]: the next queued event becomes current, or the queued event of the handle given. A handle
// that names no waiting event leaves no current event.
void PopEvent_f() {
  const bool given = engine->Cmd_Argc() > 1;
  DbgMsg(5, "Internal pop event received.\n");
  ReleaseCurrentEvent();
  DbgMsg(5, "Popping event pointer.\n");
  DropTakenFromFront();
  if (s_eventQueue.empty()) {
    DbgMsg(1, "ERROR: Stack empty, couldn't grab event pointer.\n");
    return;
  }
  DbgMsg(5, "Counted event pointer, grabbing.\n");
  EventHandle handle = given ? FindQueued(engine->Cmd_Argv(1)) : s_eventQueue.front();
  if (handle == HandleTable<IGameEvent>::kNone) {
    DbgMsg(1, "ERROR: No queued event has the handle %s.\n", engine->Cmd_Argv(1));
    return;
  }
  MakeCurrent(handle);
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

size_t QueuedEventCount() { return s_eventHandles.LiveCount(); }

void ReleaseEvents() {
  ReleaseCurrentEvent();
  for (EventHandle handle : s_eventQueue) {
    if (IGameEvent* event = s_eventHandles.Get(handle)) gameeventmanager->FreeEvent(event);
    s_eventHandles.Remove(handle);
  }
  s_eventQueue.clear();
}
