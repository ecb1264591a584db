// Handles for objects whose numbers travel as text through the command buffer (script lines, blocks,
// queued events, key nodes). A handle names one object for as long as it lives: a handle of an object that
// is gone, or a number nobody was given, resolves to null and is never dereferenced.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tier0.h"

// A handle is (serial << SlotBits) | slot. Serials count up over the whole table from 1 and are never
// reused, so a stale handle can't name the slot's next tenant, and small typed numbers (serial 0) name
// nothing. A table holds at most 2^SlotBits objects at once: past that, and once its serials run out, it
// refuses to add (kNone) rather than let a slot spill into the serial.
template <class T, int SlotBits = 24>
class HandleTable {
public:
  using Handle = uint64_t;
  static constexpr Handle kNone = 0;
  static constexpr int kSlotBits = SlotBits;
  static constexpr size_t kMaxSlots = size_t(1) << SlotBits;
  static constexpr Handle kMaxSerial = (Handle(1) << (64 - SlotBits)) - 1;

  // The object's handle, or kNone when the table is full.
  Handle Add(T* object) {
    if (LiveCount() >= m_slotLimit || m_serial == kMaxSerial) return kNone;
    uint32_t slot;
    if (!m_free.empty()) {
      slot = m_free.back();
      m_free.pop_back();
    } else {
      slot = uint32_t(m_slots.size());
      m_slots.push_back({});
    }
    TW_ASSERT(slot < kMaxSlots && m_slots[slot].handle == kNone, "a new handle's slot is in range and free");
    TW_ASSERT(m_serial < kMaxSerial, "serials never wrap into the slot bits");
    Handle h = (++m_serial << kSlotBits) | slot;
    m_slots[slot] = {object, h};
    return h;
  }

  // Forgets the object; its handle resolves to null from now on. Unknown handles are ignored.
  void Remove(Handle h) {
    uint32_t slot = uint32_t(h & (kMaxSlots - 1));
    if (h == kNone || slot >= m_slots.size() || m_slots[slot].handle != h) return;
    m_slots[slot] = {};
    m_free.push_back(slot);
  }

  T* Get(Handle h) const {
    uint32_t slot = uint32_t(h & (kMaxSlots - 1));
    if (h == kNone || slot >= m_slots.size()) return nullptr;
    const Entry& e = m_slots[slot];
    return e.handle == h ? e.object : nullptr;
  }

  // True while the handle names an object, even one added as null.
  bool Contains(Handle h) const {
    uint32_t slot = uint32_t(h & (kMaxSlots - 1));
    return h != kNone && slot < m_slots.size() && m_slots[slot].handle == h;
  }

  size_t LiveCount() const { return m_slots.size() - m_free.size(); }

  // Fewer live objects than SlotBits allow; tests use it to reach the limit.
  void LimitSlots(size_t limit) { m_slotLimit = limit < kMaxSlots ? limit : kMaxSlots; }

private:
  struct Entry {
    T* object = nullptr;
    Handle handle = kNone;
  };
  std::vector<Entry> m_slots;
  std::vector<uint32_t> m_free;
  Handle m_serial = 0;
  size_t m_slotLimit = kMaxSlots;
};
