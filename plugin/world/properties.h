// Networked properties of entities: a dotted path ("CBasePlayer.pl.deadflag") walked through the game's
// send tables to a byte offset and a type, and the guarded reads and writes of an entity's memory at that
// offset. Nothing is cached: every search walks the server classes again. The commands that hand this to
// scripts live in playercommands.cpp; the walks that list every property live in lists.cpp.
#pragma once

#include <string_view>

#include "basetypes.h"

struct edict_t;
class SendTable;
class ServerClass;

// Longest class part and longest remainder of a path; a longer one is not found, never cut.
inline constexpr size_t kMaxPathHead = 1023;
inline constexpr size_t kMaxPathTail = 2047;

// The word that dumps and lists show for a property type: "int", "float", "vector", "string", "array",
// "datatable", or "Unknown".
const char* PropertyTypeWord(int type);

// The text before the first full stop into head and the text behind it into tail (views into `path`).
// A path without a full stop is all head. A null path reports "Invalid parameters" and gives false; so does
// a part past its limit, silently.
bool SplitPath(const char* path, std::string_view& head, std::string_view& tail);

// Walks a send table along `path`; true when a value property was reached. `offset` accumulates the
// offsets on the way, `type` takes the type of each match.
bool FindPropertyInTable(SendTable* table, std::string_view path, int& offset, int& type);
// A whole path from the server class's network name on.
bool FindProperty(const char* path, int& offset, int& type);
// FindProperty for one entity: a path whose class is neither the entity's own server class nor one
// reached from it through "baseclass" tables is refused like a path that isn't found, so an offset never
// points into memory of another class.
bool FindEntityProperty(edict_t* edict, const char* path, int& offset, int& type);
// The offset of a direct property of a class (no dotted path), or 0 after "Invalid offset".
int GetOffsetOfProperty(const char* className, const char* propertyName);

// The server class of the entity in a usable edict, or null.
ServerClass* EntityServerClass(edict_t* edict);

// The guard of every access: a usable edict with an entity object, and an offset of at least 1. Reads copy
// 4 bytes (12 for a vector); writes store them and mark the edict changed. False when the guard fails.
bool ReadPropertyInt(int offset, edict_t* edict, int& value);
bool ReadPropertyFloat(int offset, edict_t* edict, float& value);
bool ReadPropertyVector(int offset, edict_t* edict, Vector& value);
bool WritePropertyInt(int offset, edict_t* edict, int value);
bool WritePropertyFloat(int offset, edict_t* edict, float value);
bool WritePropertyVector(int offset, edict_t* edict, const Vector& value);
