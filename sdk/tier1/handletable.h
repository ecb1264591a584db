// Handles for objects whose numbers travel as text through the command buffer (script lines, blocks,
// queued events, key nodes). A handle names one object for as long as it lives: a handle of an object that
// is gone, or a number nobody was given, resolves to null and is never dereferenced.
#pragma once

#include <cstdint>
#include <vector>

#include "tier0.h"

// A handle is (serial << 24) | slot. Serials count up over the whole table from 1 and are never reused,
// so a stale handle can't name the slot's next tenant, and small typed numbers (serial 0) name nothing.
template <class T>
class HandleTable {
public:
  using Handle = uint64_t;
  static constexpr Handle kNone = 0;
  static constexpr int kSlotBits = 24;

  Handle Add(T* object) {
    uint32_t slot;
    if (!m_free.empty()) {
      slot = m_free.back();
      m_free.pop_back();
    } else {
      slot = uint32_t(m_slots.size());
      m_slots.push_back({});
    }
    TW_ASSERT(slot < (uint32_t(1) << kSlotBits) && m_slots[slot].handle == kNone,
              "a new handle's slot is in range and free");
    TW_ASSERT(m_serial < (Handle(1) << (64 - kSlotBits)) - 1, "serials never wrap into the slot bits");
    Handle h = (++m_serial << kSlotBits) | slot;
    m_slots[slot] = {object, h};
    return h;
  }

  // Forgets the object; its handle resolves to null from now on. Unknown handles are ignored.
  void Remove(Handle h) {
    uint32_t slot = uint32_t(h & ((Handle(1) << kSlotBits) - 1));
    if (slot >= m_slots.size() || m_slots[slot].handle != h) return;
    m_slots[slot] = {};
    m_free.push_back(slot);
  }

  T* Get(Handle h) const {
    uint32_t slot = uint32_t(h & ((Handle(1) << kSlotBits) - 1));
    if (h == kNone || slot >= m_slots.size()) return nullptr;
    const Entry& e = m_slots[slot];
    return e.handle == h ? e.object : nullptr;
  }

  size_t LiveCount() const { return m_slots.size() - m_free.size(); }

private:
  struct Entry {
    T* object = nullptr;
    Handle handle = kNone;
  };
  std::vector<Entry> m_slots;
  std::vector<uint32_t> m_free;
  Handle m_serial = 0;
};
