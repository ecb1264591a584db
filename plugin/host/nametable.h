// Hash tables by name: the variable cache, the block and event tables of the registry, the registered
// commands, stacks and databases. 65536 buckets, each a growable array; the hash starts at 5381 and takes
// each byte as a signed value, times 33 plus the byte, in wrapping 32-bit arithmetic. Whether names compare
// exactly or ignoring case is the owner's choice; the hash always counts case, so a name in another case
// lands in another bucket. A table keeps a copy of each name, or (Key = const char*) borrows the name from
// its value's owner, who keeps it alive while the entry stands.
#pragma once

#include <cstdint>
#include <cstring>
#include <strings.h>
#include <string>
#include <vector>

template <class V, class Key = std::string>
class NameTable {
public:
  // An entry's place: bucket in the upper 16 bits, index in the bucket in the lower 16.
  using Handle = uint32_t;
  static constexpr Handle kNotFound = 0xFFFFFFFFu;
  static constexpr uint32_t kBuckets = 65536;

  explicit NameTable(bool ignoreCase) : m_ignoreCase(ignoreCase), m_buckets(kBuckets) {}

  static uint32_t Hash(const char* name) {
    uint32_t h = 5381;
    for (const char* p = name; *p; ++p) h = h * 33u + uint32_t(int32_t(static_cast<signed char>(*p)));
    return h;
  }

  Handle Find(const char* name) const { return name ? Find(name, Hash(name)) : kNotFound; }

  // Adds the entry unless its name is there; either way gives the handle of the entry of that name.
  Handle Insert(const char* name, V value) {
    const uint32_t hash = Hash(name);
    Handle found = Find(name, hash);
    if (found != kNotFound) return found;
    uint32_t b = hash & (kBuckets - 1);
    Bucket& bucket = m_buckets[b];
    bucket.push_back(Entry{Key(name), std::move(value), hash});
    ++m_count;
    return (b << 16) | Handle(bucket.size() - 1);
  }

  // Removes the entry; those behind it in its bucket move down by one.
  void Remove(Handle handle) {
    Bucket* bucket = BucketOf(handle);
    if (!bucket) return;
    bucket->erase(bucket->begin() + (handle & 0xFFFF));
    --m_count;
  }

  V* Get(Handle handle) {
    Bucket* bucket = BucketOf(handle);
    return bucket ? &(*bucket)[handle & 0xFFFF].value : nullptr;
  }

  const char* KeyAt(Handle handle) {
    Bucket* bucket = BucketOf(handle);
    return bucket ? Text((*bucket)[handle & 0xFFFF].key) : nullptr;
  }

  V* FindValue(const char* name) {
    Handle h = Find(name);
    return h == kNotFound ? nullptr : Get(h);
  }

  size_t Count() const { return m_count; }

private:
  struct Entry {
    Key key;
    V value;
    uint32_t hash;  // the whole hash: an exact table compares texts only where it matches
  };

  Handle Find(const char* name, uint32_t hash) const {
    uint32_t b = hash & (kBuckets - 1);
    const Bucket& bucket = m_buckets[b];
    for (size_t i = 0; i < bucket.size(); ++i)
      if ((m_ignoreCase || bucket[i].hash == hash) && Same(bucket[i].key, name)) return (b << 16) | Handle(i);
    return kNotFound;
  }
  using Bucket = std::vector<Entry>;

  static const char* Text(const std::string& key) { return key.c_str(); }
  static const char* Text(const char* key) { return key; }

  bool Same(const Key& key, const char* name) const {
    return m_ignoreCase ? strcasecmp(Text(key), name) == 0 : strcmp(Text(key), name) == 0;
  }

  Bucket* BucketOf(Handle handle) {
    if (handle == kNotFound) return nullptr;
    Bucket& bucket = m_buckets[handle >> 16];
    return (handle & 0xFFFF) < bucket.size() ? &bucket : nullptr;
  }

  bool m_ignoreCase;
  std::vector<Bucket> m_buckets;
  size_t m_count = 0;
};
