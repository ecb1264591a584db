// The server's state as the engine's callbacks hand it in, and the class name table built from the engine's
// edicts. Nothing here asks the engine for more than edicts and their class names.
#include "host/server_state.h"

#include <cstdio>

#include "edict.h"
#include "eiface.h"
#include "host/engine_surface.h"

int MaxClients = 0;
unsigned char g_levelFlag = 0;
int g_commandIndex = 0;
char (*g_classNames)[kClassNameSlotSize] = nullptr;
int g_classNameCount = 0;

void FreeClassNameTable() {
  delete[] g_classNames;
  g_classNames = nullptr;
  g_classNameCount = 0;
}

void RebuildClassNameTable() {
  FreeClassNameTable();
  int count = gpGlobals && gpGlobals->maxEntities > 0 ? gpGlobals->maxEntities : 0;
  if (count == 0) return;
  g_classNames = new char[count][kClassNameSlotSize];
  g_classNameCount = count;
  for (int i = 0; i < count; ++i) {
    edict_t* edict = engine ? engine->PEntityOfEntIndex(i) : nullptr;
    bool live = edict && !edict->IsFree() && edict->GetUnknown() && edict->GetNetworkable();
    const char* name = live ? edict->GetNetworkable()->GetClassName() : nullptr;
    snprintf(g_classNames[i], kClassNameSlotSize, "%s", name ? name : "");
  }
}
