// The key name table and memory of KeyValues. Names are symbols: the same name, ignoring case, gives the
// same integer everywhere in the process, and a symbol's text is the spelling first seen. Node memory comes
// from a pool of fixed-size slots that is reused and never given back, as trees are built and dropped by
// the thousand.
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "vstdlib.h"

namespace {

constexpr unsigned char Fold(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

constexpr uint64_t kBytes(unsigned char b) { return 0x0101010101010101ull * b; }

// Eight bytes at once, A-Z turned into a-z; bytes of 0x80 and above stay as they are.
inline uint64_t FoldWord(uint64_t w) {
  const uint64_t low7 = w & kBytes(0x7F);
  const uint64_t aboveZ = low7 + kBytes(0x7F - 'Z');
  const uint64_t fromA = low7 + kBytes(0x80 - 'A');
  const uint64_t upper = (fromA ^ aboveZ) & ~w & kBytes(0x80);
  return w ^ (upper >> 2);
}

// A case-folding hash over the name's bytes, eight at a time.
uint32_t HashName(const char* name, size_t length) {
  uint64_t h = 0x9E3779B97F4A7C15ull ^ length;
  size_t i = 0;
  for (; i + 8 <= length; i += 8) {
    uint64_t w;
    memcpy(&w, name + i, 8);
    h = (h ^ FoldWord(w)) * 0xFF51AFD7ED558CCDull;
  }
  if (i < length) {
    uint64_t w = 0;
    for (size_t k = 0; i + k < length; ++k) w |= uint64_t(static_cast<unsigned char>(name[i + k])) << (8 * k);
    h = (h ^ FoldWord(w)) * 0xFF51AFD7ED558CCDull;
  }
  h ^= h >> 32;
  return uint32_t(h);
}

// ---- names ----

// Open addressing over (hash, symbol) pairs; the texts live in an arena whose pieces never move, so the
// text of a symbol is a stable pointer. A name is hashed and compared in place, ignoring case.
class SymbolTable {
public:
  HKeySymbol Find(const char* name) {
    const size_t next = size_t(m_lastFound + 1);
    if (next < m_texts.size() && SameText(m_texts[next], name)) return m_lastFound = HKeySymbol(next);
    return m_lastFound = Lookup(name);
  }

  const char* Text(HKeySymbol symbol) const {
    return symbol < 0 || size_t(symbol) >= m_texts.size() ? "" : m_texts[size_t(symbol)];
  }

private:
  static constexpr uint32_t kEmpty = 0;
  static constexpr size_t kArenaPiece = 64 * 1024;
  // Eight bytes a slot, so that the table of a large file's names stays small enough for the cache: a new
  // name costs one look at the table, and a name found one more at its text.
  struct Slot {
    uint32_t hash = kEmpty;
    HKeySymbol symbol = INVALID_KEY_SYMBOL;
  };

  HKeySymbol Lookup(const char* name) {
    const size_t length = strlen(name);
    uint32_t hash = HashName(name, length);
    if (hash == kEmpty) hash = 1;
    for (size_t i = hash & m_mask;; i = (i + 1) & m_mask) {
      Slot& slot = m_slots[i];
      if (slot.hash == kEmpty) return Insert(slot, hash, name, length);
      if (slot.hash == hash && SameName(m_texts[size_t(slot.symbol)], name, length)) return slot.symbol;
    }
  }

  static bool SameText(const char* known, const char* name) {
    for (;; ++known, ++name) {
      if (Fold(static_cast<unsigned char>(*known)) != Fold(static_cast<unsigned char>(*name))) return false;
      if (!*known) return true;
    }
  }

  static bool SameName(const char* known, const char* name, size_t length) {
    for (size_t i = 0; i < length; ++i)
      if (Fold(static_cast<unsigned char>(known[i])) != Fold(static_cast<unsigned char>(name[i]))) return false;
    return known[length] == '\0';
  }

  HKeySymbol Insert(Slot& slot, uint32_t hash, const char* name, size_t length) {
    HKeySymbol symbol = HKeySymbol(m_texts.size());
    m_texts.push_back(StoreText(name, length));
    slot = {hash, symbol};
    if (m_texts.size() * 2 > m_slots.size()) Grow();
    return symbol;
  }

  const char* StoreText(const char* name, size_t length) {
    if (m_arenaFree < length + 1) {
      size_t piece = length + 1 > kArenaPiece ? length + 1 : kArenaPiece;
      m_arena.push_back(std::make_unique_for_overwrite<char[]>(piece));
      m_arenaNext = m_arena.back().get();
      m_arenaFree = piece;
    }
    char* text = m_arenaNext;
    memcpy(text, name, length + 1);
    m_arenaNext += length + 1;
    m_arenaFree -= length + 1;
    return text;
  }

  void Grow() {
    std::vector<Slot> old;
    old.swap(m_slots);
    m_slots.resize(old.size() * 2);
    m_mask = m_slots.size() - 1;
    for (const Slot& s : old) {
      if (s.hash == kEmpty) continue;
      size_t i = s.hash & m_mask;
      while (m_slots[i].hash != kEmpty) i = (i + 1) & m_mask;
      m_slots[i] = s;
    }
  }

  std::vector<Slot> m_slots = std::vector<Slot>(1024);
  size_t m_mask = 1023;
  std::vector<const char*> m_texts;
  // The symbol found last: a file read again names its new keys in the order of its first reading, each the
  // symbol made right after the one before, so the next symbol is tried before the table. Its text is
  // near the last one's in the arena, where the table's slot would be anywhere.
  HKeySymbol m_lastFound = INVALID_KEY_SYMBOL;
  std::vector<std::unique_ptr<char[]>> m_arena;
  char* m_arenaNext = nullptr;
  size_t m_arenaFree = 0;
};

// ---- node memory ----

constexpr size_t kHugePage = size_t(2) << 20;

// Fresh memory in whole 2 MB pieces aligned to 2 MB, on huge pages where the kernel gives them: a large file
// read into new nodes then costs a few page faults instead of thousands. Null when the system refuses.
void* MapHugeBlock(size_t bytes) {
  const size_t size = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  void* mapped = mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  auto* start = static_cast<char*>(mapped);
  const size_t head = (kHugePage - reinterpret_cast<uintptr_t>(start) % kHugePage) % kHugePage;
  char* aligned = start + head;
  if (head) munmap(start, head);
  munmap(aligned + size, kHugePage - head);
  madvise(aligned, size, MADV_HUGEPAGE);
  return aligned;
}

// Slots of one size carved in order from huge pieces, so that a tree's nodes lie side by side; a freed slot
// goes on a free list for the next node. Requests of a piece or more (the value texts' own pieces) take
// huge blocks of their own, given back when freed; other sizes come from malloc. Each block starts with a
// word that tells these apart: 0 for a slot, 1 for malloc, else the size of the mapping. The sanitizer
// build takes every slot from malloc, so that a node used after it is freed is still caught.
class NodePool {
public:
  void* Alloc(size_t size) {
#if !defined(TW_SANITIZE)
    if (size <= kSlotSize - kHeader) return Carve();
#endif
    if (size + kHeader >= kHugePage)
      if (void* large = MapLarge(size)) return large;
    auto* block = static_cast<uint64_t*>(malloc(size + kHeader));
    if (!block) return nullptr;
    *block = kFromHeap;
    return reinterpret_cast<char*>(block) + kHeader;
  }

  void Free(void* memory) {
    if (!memory) return;
    auto* block = reinterpret_cast<uint64_t*>(static_cast<char*>(memory) - kHeader);
    if (*block == kFromHeap) {
      free(block);
      return;
    }
    if (*block != kFromPool) {
      munmap(block, size_t(*block));
      return;
    }
    auto* slot = reinterpret_cast<FreeSlot*>(block);
    slot->next = m_free;
    m_free = slot;
  }

private:
  static constexpr size_t kHeader = 8;     // keeps the 8-byte alignment that a node needs
  static constexpr size_t kSlotSize = 56;  // a node of this build is 48 bytes
  static constexpr uint64_t kFromPool = 0;
  static constexpr uint64_t kFromHeap = 1;

  struct FreeSlot {
    FreeSlot* next;
  };

  void* Carve() {
    uint64_t* block;
    if (m_free) {
      block = reinterpret_cast<uint64_t*>(m_free);
      m_free = m_free->next;
    } else {
      if (m_pieceLeft < kSlotSize && !AddPiece()) return nullptr;
      block = reinterpret_cast<uint64_t*>(m_pieceNext);
      m_pieceNext += kSlotSize;
      m_pieceLeft -= kSlotSize;
    }
    *block = kFromPool;
    return reinterpret_cast<char*>(block) + kHeader;
  }

  bool AddPiece() {
    void* piece = MapHugeBlock(kHugePage);
    if (!piece) piece = malloc(kHugePage);
    if (!piece) return false;
    m_pieceNext = static_cast<char*>(piece);
    m_pieceLeft = kHugePage;
    return true;
  }

  void* MapLarge(size_t size) {
    const size_t bytes = (size + kHeader + kHugePage - 1) / kHugePage * kHugePage;
    auto* block = static_cast<uint64_t*>(MapHugeBlock(bytes));
    if (!block) return nullptr;
    *block = bytes;
    return reinterpret_cast<char*>(block) + kHeader;
  }

  FreeSlot* m_free = nullptr;
  char* m_pieceNext = nullptr;
  size_t m_pieceLeft = 0;
};

class CKeyValuesSystem final : public IKeyValuesSystem {
public:
  void* AllocKeyValuesMemory(int size) override { return m_nodes.Alloc(size_t(size > 0 ? size : 1)); }
  void FreeKeyValuesMemory(void* memory) override { m_nodes.Free(memory); }

  HKeySymbol GetSymbolForString(const char* name) override {
    return name ? m_symbols.Find(name) : INVALID_KEY_SYMBOL;
  }
  const char* GetStringForSymbol(HKeySymbol symbol) override { return m_symbols.Text(symbol); }

private:
  SymbolTable m_symbols;
  NodePool m_nodes;
};

}  // namespace

// Never destroyed, as the engine's lives as long as the process: trees that static objects own (the
// plugin's script pack tree) are deleted during static destruction, after this object's turn would come.
IKeyValuesSystem* KeyValuesSystem() {
  static auto* system = new CKeyValuesSystem;
  return system;
}
