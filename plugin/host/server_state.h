// What the engine's callbacks tell the plugin about the server, kept below every subsystem so that all of
// them read it: the player slots of the level, whether a level has begun, the client of the running command
// and the class name of each edict at the last look. The plugin object's callbacks write it.
#pragma once

// Player slots of the level, from ServerActivate.
extern int MaxClients;
// 0 until the first LevelInit, then 1 for the rest of the process.
extern unsigned char g_levelFlag;
// The client index stored by SetCommandClient; read by the command wrappers and the say path.
extern int g_commandIndex;

// The class name of each edict at the last look: slot i holds the class name of edict i, or "".
// g_classNameCount slots (maxEntities of the level); rebuilt by each LevelInit, compared and updated by the
// give wrapper.
inline constexpr int kClassNameSlotSize = 2048;
extern char (*g_classNames)[kClassNameSlotSize];
extern int g_classNameCount;
void RebuildClassNameTable();
// Forgets the table (Load); the next rebuild makes a new one.
void FreeClassNameTable();
