// The engine's and the game's smaller services: sounds, temporary effects, network string tables, voice
// routing, and the two interfaces a plugin acquires but never calls (traces, random streams).
#pragma once

#include <vector>

#include "basetypes.h"

class IRecipientFilter;

#define IENGINESOUND_SERVER_INTERFACE_VERSION "IEngineSoundServer003"
#define IEFFECTS_INTERFACE_VERSION "IEffects001"
#define INTERFACENAME_NETWORKSTRINGTABLESERVER "VEngineServerStringTable001"
#define INTERFACEVERSION_VOICESERVER "VoiceServer001"
#define INTERFACEVERSION_ENGINETRACE_SERVER "EngineTraceServer003"
#define VENGINE_SERVER_RANDOM_INTERFACE_VERSION "VEngineRandom001"

enum { CHAN_AUTO = 0 };
enum { PITCH_NORM = 100 };
enum { SOUND_FROM_PLAYER = -2 };

class IEngineSound {
public:
  virtual bool PrecacheSound(const char* sample, bool preload = false) = 0;
  virtual void EmitSound(IRecipientFilter& filter, int entityIndex, int channel, const char* sample, float volume,
                         float attenuation, int flags = 0, int pitch = PITCH_NORM, const Vector* origin = nullptr,
                         const Vector* direction = nullptr, std::vector<Vector>* origins = nullptr,
                         bool updatePositions = true, float soundTime = 0.0f, int speakerEntity = -1) = 0;
  virtual void StopSound(int entityIndex, int channel, const char* sample) = 0;

protected:
  virtual ~IEngineSound() = default;
};

class IEffects {
public:
  virtual void Beam(const Vector& start, const Vector& end, int modelIndex, int haloIndex, unsigned char frameStart,
                    unsigned char frameRate, float life, unsigned char width, unsigned char endWidth,
                    unsigned char fadeLength, unsigned char noise, unsigned char red, unsigned char green,
                    unsigned char blue, unsigned char brightness, unsigned char speed) = 0;
  virtual void Smoke(const Vector& origin, int modelIndex, float scale, float frameRate) = 0;
  virtual void Sparks(const Vector& position, int magnitude = 1, int trailLength = 1,
                      const Vector* direction = nullptr) = 0;
  virtual void Dust(const Vector& position, const Vector& direction, float size, float speed) = 0;
  virtual void EnergySplash(const Vector& position, const Vector& direction, bool explosive = false) = 0;

protected:
  virtual ~IEffects() = default;
};

enum { INVALID_STRING_INDEX = 0xFFFF };

class INetworkStringTable {
public:
  virtual const char* GetTableName() const = 0;
  virtual int GetTableId() const = 0;
  virtual int GetNumStrings() const = 0;
  virtual int GetMaxStrings() const = 0;
  // Adds a string (or finds it) and gives its index; INVALID_STRING_INDEX when the table is locked or full.
  virtual int AddString(const char* value, int length = -1, const void* userData = nullptr) = 0;
  virtual const char* GetString(int index) = 0;
  virtual void SetStringUserData(int index, int length, const void* userData) = 0;
  virtual const void* GetStringUserData(int index, int* length) = 0;
  virtual int FindStringIndex(const char* value) = 0;  // INVALID_STRING_INDEX when absent

protected:
  virtual ~INetworkStringTable() = default;
};

class INetworkStringTableContainer {
public:
  virtual INetworkStringTable* FindTable(const char* name) const = 0;
  virtual INetworkStringTable* GetTable(int id) const = 0;
  virtual int GetNumTables() const = 0;

protected:
  virtual ~INetworkStringTableContainer() = default;
};

class IVoiceServer {
public:
  // Receiver and sender are entity indexes of players.
  virtual bool GetClientListening(int receiver, int sender) = 0;
  virtual bool SetClientListening(int receiver, int sender, bool listen) = 0;

protected:
  virtual ~IVoiceServer() = default;
};

// Acquired by plugins and never called.
class IEngineTrace {
public:
  virtual int GetPointContents(const Vector& position) = 0;

protected:
  virtual ~IEngineTrace() = default;
};

class IUniformRandomStream {
public:
  virtual void SetSeed(int seed) = 0;
  virtual float RandomFloat(float min = 0.0f, float max = 1.0f) = 0;
  virtual int RandomInt(int min, int max) = 0;

protected:
  virtual ~IUniformRandomStream() = default;
};
