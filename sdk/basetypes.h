// Small value types shared by every engine interface: vectors, angles, entity handles, the factory signature.
#pragma once

#include <cstdint>

struct Vector {
  float x = 0, y = 0, z = 0;
  Vector() = default;
  Vector(float ax, float ay, float az) : x(ax), y(ay), z(az) {}
  Vector operator+(const Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  Vector operator-(const Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  Vector operator*(float f) const { return {x * f, y * f, z * f}; }
  bool operator==(const Vector& o) const { return x == o.x && y == o.y && z == o.z; }
};

// Pitch, yaw, roll in degrees.
struct QAngle {
  float x = 0, y = 0, z = 0;
  QAngle() = default;
  QAngle(float ax, float ay, float az) : x(ax), y(ay), z(az) {}
};

using AngularImpulse = Vector;

// Four bytes: red, green, blue, alpha.
struct Color {
  unsigned char r = 0, g = 0, b = 0, a = 0;
  Color() = default;
  Color(int ar, int ag, int ab, int aa = 255)
      : r((unsigned char)ar), g((unsigned char)ag), b((unsigned char)ab), a((unsigned char)aa) {}
  bool operator==(const Color& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

// The engine's entity reference: serial number in the upper bits, entity index in the lower 12 bits.
// The value 0xFFFFFFFF is no entity.
class CBaseHandle {
public:
  static constexpr uint32_t kInvalid = 0xFFFFFFFFu;
  static constexpr int kIndexBits = 12;
  CBaseHandle() = default;
  CBaseHandle(int index, int serial) : m_Index(uint32_t(index) | (uint32_t(serial) << kIndexBits)) {}
  uint32_t ToInt() const { return m_Index; }
  bool IsValid() const { return m_Index != kInvalid; }
  int GetEntryIndex() const { return int(m_Index & ((1u << kIndexBits) - 1)); }
  int GetSerialNumber() const { return int(m_Index >> kIndexBits); }
  void Term() { m_Index = kInvalid; }

private:
  uint32_t m_Index = kInvalid;
};

// Every interface is found by name through a factory. returnCode, when not null, receives
// IFACE_OK or IFACE_FAILED.
enum { IFACE_OK = 0, IFACE_FAILED = 1 };
typedef void* (*CreateInterfaceFn)(const char* name, int* returnCode);

// Entity objects of the game are opaque to the engine and to plugins.
class CBaseEntity;
