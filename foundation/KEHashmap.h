// SPDX-License-Identifier: MIT
//
// A chained hash table that owns its values, and an iterator over it.
//
// Ownership: pointer values are deleted through DeleteVal when they are removed, replaced or
//   cleared. Pointer keys are never owned; a key usually lives inside its value.
// Null: a pointer value of null counts as absent: look-ups miss it and iterators pass over it.
// Thread safety: none, iterators included. Hold the lock that guards the map also while
//   an iterator is made, copied, used or destroyed, and while a value obtained here is in use.
#ifndef KECPP_FOUNDATION_KEHASHMAP_H
#define KECPP_FOUNDATION_KEHASHMAP_H

#include <memory>
#include <type_traits>
#include <utility>

#include "foundation/ElementPolicies.h"
#include "foundation/KEExport.h"
#include "foundation/KEIteratorRegistry.h"

namespace KELib {

// Buckets of a new map, and the load above which it grows.
extern KECPP_API const unsigned int HASH_CAP;
extern KECPP_API const float HASH_FILLRATIO;

// Buckets of a table that grows to hold `wanted` entries: 2 * wanted / fillRatio, truncated.
// std::bad_alloc when that is no 32-bit number.
KECPP_API unsigned int GrownBucketCount(unsigned int wanted, float fillRatio);

// Entries that so many buckets hold before the table grows: bucketCount * fillRatio, truncated.
KECPP_API unsigned int FillThreshold(unsigned int bucketCount, float fillRatio);

// Throws InvalidIteratorException "KEHashmapIterator invalid".
[[noreturn]] KECPP_API void ThrowInvalidHashmapIterator();

template <typename K, typename V>
class KEHashmap;

// One entry of a map. A KEString key is the entry's own copy.
template <typename K, typename V>
struct KECPP_API KEEntry {
  K key;
  V value;
  KEEntry* next;
};

// A position in a map: buckets in index order, each chain from its head. Whatever frees or
// rehashes entries (Remove of a present key, Clear, growth, destruction) unbinds it; an unbound
// iterator is at its end. Copies register with the same map.
template <typename K, typename V>
class KECPP_API KEHashmapIterator {
 public:
  KEHashmapIterator() = default;
  // Points to the first entry, or to the end of an empty map.
  explicit KEHashmapIterator(KEHashmap<K, V>& walked);
  KEHashmapIterator(const KEHashmapIterator& other) { CopyFrom(other); }
  KEHashmapIterator& operator=(const KEHashmapIterator& other);
  ~KEHashmapIterator() { Unregister(); }

  // Whether there is no entry at this position.
  bool End() const { return !map || bucket >= map->BucketCount(); }

  // The map, null while unbound; the entry, null at the end; the bucket it is in.
  KEHashmap<K, V>* Map() const { return map; }
  KEEntry<K, V>* Current() const { return End() ? nullptr : current; }
  unsigned int Bucket() const { return bucket; }

  // The entry. At the end: InvalidIteratorException "KEHashmapIterator invalid".
  KEEntry<K, V>& operator*() const {
    if (End()) {
      ThrowInvalidHashmapIterator();
    }
    return *current;
  }
  KEEntry<K, V>* operator->() const { return &**this; }

  // Steps to the next entry of the chain, else to the head of the next chain; at the end nothing
  // happens.
  KEHashmapIterator& operator++();

 private:
  friend class KEHashmap<K, V>;
  friend class KEIteratorRegistry<KEHashmapIterator<K, V>>;

  void CopyFrom(const KEHashmapIterator& other);
  void Unregister();
  void Unbind() {
    map = nullptr;
    current = nullptr;
  }
  void GoToFirst();
  void Step();
  void ToChain();
  void SkipAbsent();

  KEHashmap<K, V>* map = nullptr;
  KEEntry<K, V>* current = nullptr;
  unsigned int bucket = 0;
  KEHashmapIterator** slot = nullptr;  // its entry in the map's registry
};

template <typename K, typename V>
class KECPP_API KEHashmap {
 public:
  typedef KEEntry<K, V> Entry;

  KEHashmap() : KEHashmap(HASH_CAP, HASH_FILLRATIO) {}
  // `cap` buckets (0 meaning HASH_CAP); a `ratio` that is not above 0 means HASH_FILLRATIO.
  explicit KEHashmap(unsigned int cap, float ratio = HASH_FILLRATIO);
  KEHashmap(const KEHashmap&) = delete;
  KEHashmap& operator=(const KEHashmap&) = delete;
  // Unbinds the iterators and deletes the values.
  ~KEHashmap() { Clear(); }

  // The value under `key`, or null when there is none. Valid until the key is removed or replaced.
  // O(1) on average, no allocation.
  V* Get(K& key) {
    Entry* const entry = Find(key);
    return entry && !IsAbsent(entry->value) ? &entry->value : nullptr;
  }
  // Copies the value under `key` to `value`; a miss returns false and leaves `value` as it was.
  bool Get(K& key, V& value) {
    const V* const found = Get(key);
    if (found) {
      value = *found;
    }
    return found != nullptr;
  }
  bool Contains(K& key) { return Get(key) != nullptr; }

  // As Insert for a key that is known to be absent, and its hash.
  void InsertAbsent(K& key, unsigned int hash, const V& value);

  // The first entry under `key` in the chain of `bucket`, also one whose value is null, with
  // `previous` set to the entry before it, or null for the head of the chain. A miss returns null.
  Entry* Lookup(K& key, unsigned int bucket, Entry*& previous);

  // Files a copy of the key and the value, which now belongs to the map, at the head of its chain.
  // A key that is present is filed a second time: every entry of that key then holds the new
  // value, and the old one is deleted once (unless it is the new pointer itself). Look the key up
  // first where that is not wanted. Unbinds the iterators only when the table grows. O(1)
  // amortised. When it throws (std::bad_alloc) nothing has changed and `value` stays the caller's.
  void Insert(K& key, const V& value);

  // Takes the first entry of `key` out, deletes its value and unbinds the iterators. A further
  // entry of that key then holds null, and a pointer key is forgotten with it, since it may have
  // died with the value. `key` may be the entry's own key. An absent key changes nothing. O(1) on
  // average.
  void Remove(K& key);

  // Makes room for `wanted` entries (at least Count() + 1 when it is below Count()): when that
  // exceeds the threshold the table grows and the iterators are unbound.
  void Resize(unsigned int wanted);

  // Moves every entry of one bucket array to the heads of the chains of another; the first array
  // is left with empty chains.
  static void Copy(Entry** from, unsigned int fromCount, Entry** to, unsigned int toCount);

  // Unbinds the iterators and deletes every entry and its value; the buckets are kept.
  void Clear();

  unsigned int Count() const { return count; }  // entries, also those that hold null
  unsigned int BucketCount() const { return bucketCount; }
  // The entries of one bucket, which is below BucketCount(); null when it has none.
  const Entry* Chain(unsigned int bucket) const { return buckets[bucket]; }
  // Where Chain looks for them: to fetch it from memory before.
  const void* PlaceOfChain(unsigned int bucket) const { return &buckets[bucket]; }
  unsigned int Threshold() const { return threshold; }  // the count above which the table grows

  // An iterator on the first entry. O(buckets) at worst.
  KEHashmapIterator<K, V> Begin() { return KEHashmapIterator<K, V>(*this); }

  // Unbinds and forgets every registered iterator.
  void InvalidateIts() { iterators.UnbindAll(); }

  // Binds `iterator` to this map and registers it. An iterator of this map keeps its position; any
  // other one is put on the first entry. O(log n) amortised in the number of iterators.
  void SaveIt(KEHashmapIterator<K, V>* iterator);

 private:
  friend class KEHashmapIterator<K, V>;

  static bool IsAbsent(const V& value) {
    if constexpr (std::is_pointer_v<V>) {
      return value == nullptr;
    } else {
      return false;
    }
  }
  // A null pointer key hashes to 0 and equals nothing.
  static unsigned int HashOf(K& key) {
    if constexpr (std::is_pointer_v<K>) {
      return key ? ComputeHash<K>(key) : 0;
    } else {
      return ComputeHash<K>(key);
    }
  }
  static bool IsSame(K& left, K& right) {
    if constexpr (std::is_pointer_v<K>) {
      return left && right && Equals<K>(left, right);
    } else {
      return Equals<K>(left, right);
    }
  }
  unsigned int BucketOf(K& key) const { return HashOf(key) % bucketCount; }
  Entry* Find(K& key) { return FindFrom(buckets[BucketOf(key)], key); }
  static Entry* FindFrom(Entry* entry, K& key);
  static void DropTwins(Entry* removed, K& key);
  static void DeleteChain(Entry* entry);
  void Replace(Entry* entry, K& key, const V& value);
  void Register(KEHashmapIterator<K, V>* iterator);

  std::unique_ptr<Entry*[]> buckets;
  unsigned int count = 0;
  unsigned int bucketCount;
  unsigned int threshold;
  float fillRatio;
  KEIteratorRegistry<KEHashmapIterator<K, V>> iterators;
};

template <typename K, typename V>
KEHashmapIterator<K, V>::KEHashmapIterator(KEHashmap<K, V>& walked) {
  walked.SaveIt(this);
}

template <typename K, typename V>
KEHashmapIterator<K, V>& KEHashmapIterator<K, V>::operator=(const KEHashmapIterator& other) {
  if (this != &other) {
    Unregister();
    CopyFrom(other);
  }
  return *this;
}

template <typename K, typename V>
void KEHashmapIterator<K, V>::CopyFrom(const KEHashmapIterator& other) {
  if (other.map) {
    other.map->Register(this);
  }
  current = other.current;
  bucket = other.bucket;
}

template <typename K, typename V>
void KEHashmapIterator<K, V>::Unregister() {
  if (map && slot) {  // the second alone would do, but compilers warn of a null map
    map->iterators.Remove(this);
  }
  Unbind();
}

template <typename K, typename V>
KEHashmapIterator<K, V>& KEHashmapIterator<K, V>::operator++() {
  if (!End()) {
    Step();
    SkipAbsent();
  }
  return *this;
}

template <typename K, typename V>
void KEHashmapIterator<K, V>::GoToFirst() {
  bucket = 0;
  current = map->buckets[0];
  ToChain();
  SkipAbsent();
}

template <typename K, typename V>
void KEHashmapIterator<K, V>::Step() {
  current = current->next;
  ToChain();
}

// Past the end of a chain: on to the head of the next one.
template <typename K, typename V>
void KEHashmapIterator<K, V>::ToChain() {
  while (!current && ++bucket < map->bucketCount) {
    current = map->buckets[bucket];
  }
}

template <typename K, typename V>
void KEHashmapIterator<K, V>::SkipAbsent() {
  while (current && KEHashmap<K, V>::IsAbsent(current->value)) {
    Step();
  }
}

template <typename K, typename V>
KEHashmap<K, V>::KEHashmap(unsigned int cap, float ratio)
    : bucketCount(cap == 0 ? HASH_CAP : cap), fillRatio(ratio > 0 ? ratio : HASH_FILLRATIO) {
  buckets.reset(new Entry* [bucketCount] {});
  threshold = FillThreshold(bucketCount, fillRatio);
}

template <typename K, typename V>
KEEntry<K, V>* KEHashmap<K, V>::FindFrom(Entry* entry, K& key) {
  while (entry && !IsSame(entry->key, key)) {
    entry = entry->next;
  }
  return entry;
}

template <typename K, typename V>
KEEntry<K, V>* KEHashmap<K, V>::Lookup(K& key, unsigned int bucket, Entry*& previous) {
  previous = nullptr;
  Entry* entry = bucket < bucketCount ? buckets[bucket] : nullptr;
  while (entry && !IsSame(entry->key, key)) {
    previous = entry;
    entry = entry->next;
  }
  if (!entry) {
    previous = nullptr;
  }
  return entry;
}

template <typename K, typename V>
void KEHashmap<K, V>::Insert(K& key, const V& value) {
  std::unique_ptr<Entry> fresh(new Entry{key, value, nullptr});
  Resize(count + 1);
  Entry*& head = buckets[BucketOf(fresh->key)];
  Entry* const present = FindFrom(head, fresh->key);
  fresh->next = head;
  head = fresh.release();
  ++count;
  if (present) {
    Replace(present, head->key, head->value);
  }
}

template <typename K, typename V>
void KEHashmap<K, V>::InsertAbsent(K& key, unsigned int hash, const V& value) {
  std::unique_ptr<Entry> fresh(new Entry{key, value, nullptr});
  Resize(count + 1);
  Entry*& head = buckets[hash % bucketCount];
  fresh->next = head;
  head = fresh.release();
  ++count;
}

// Gives `entry` and all later entries of its key the new value, then deletes the old one. Pointer
// keys are exchanged as well: the old key may die with the old value.
template <typename K, typename V>
void KEHashmap<K, V>::Replace(Entry* entry, K& key, const V& value) {
  V old = entry->value;
  for (; entry; entry = FindFrom(entry->next, key)) {
    entry->value = value;
    if constexpr (std::is_pointer_v<K>) {
      entry->key = key;
    }
  }
  if constexpr (std::is_pointer_v<V>) {
    if (old == value) {
      return;
    }
  }
  DeleteVal(old);
}

template <typename K, typename V>
void KEHashmap<K, V>::Remove(K& key) {
  const unsigned int bucket = BucketOf(key);
  Entry* previous = nullptr;
  std::unique_ptr<Entry> removed(Lookup(key, bucket, previous));
  if (!removed) {
    return;
  }
  DropTwins(removed.get(), key);
  (previous ? previous->next : buckets[bucket]) = removed->next;
  --count;
  InvalidateIts();
  DeleteVal(removed->value);  // a pointer key usually dies here: no comparison after this
}

// Forgets the value of `removed`, and a key that may be part of it, in the further entries of
// `key`.
template <typename K, typename V>
void KEHashmap<K, V>::DropTwins(Entry* removed, K& key) {
  if constexpr (std::is_pointer_v<V>) {
    for (Entry* twin = removed; (twin = FindFrom(twin->next, key));) {
      twin->value = nullptr;
      if constexpr (std::is_pointer_v<K>) {
        twin->key = nullptr;
      }
    }
  } else {
    static_cast<void>(removed);
    static_cast<void>(key);
  }
}

template <typename K, typename V>
void KEHashmap<K, V>::Resize(unsigned int wanted) {
  if (wanted < count) {
    wanted = count + 1;
  }
  if (wanted <= threshold) {
    return;
  }
  const unsigned int grownCount = GrownBucketCount(wanted, fillRatio);
  std::unique_ptr<Entry*[]> grown(new Entry* [grownCount] {});
  Copy(buckets.get(), bucketCount, grown.get(), grownCount);
  buckets = std::move(grown);
  bucketCount = grownCount;
  threshold = FillThreshold(grownCount, fillRatio);
  InvalidateIts();
}

// In a large map every entry is a cache miss, and so is its key, which mostly lies right behind
// it: both are asked for some buckets ahead.
template <typename K, typename V>
void KEHashmap<K, V>::Copy(Entry** from, unsigned int fromCount, Entry** to, unsigned int toCount) {
  constexpr unsigned int kAhead = 8, kCacheLine = 64;
  for (unsigned int i = 0; i < fromCount; ++i) {
    if (fromCount - i > kAhead && from[i + kAhead] != nullptr) {
      const char* const soon = reinterpret_cast<const char*>(from[i + kAhead]);
      __builtin_prefetch(soon);
      __builtin_prefetch(soon + kCacheLine);
    }
    Entry* entry = std::exchange(from[i], nullptr);
    while (entry) {
      Entry*& head = to[HashOf(entry->key) % toCount];
      Entry* const following = std::exchange(entry->next, head);
      head = entry;
      entry = following;
    }
  }
}

template <typename K, typename V>
void KEHashmap<K, V>::Clear() {
  InvalidateIts();
  count = 0;
  for (unsigned int i = 0; i < bucketCount; ++i) {
    DeleteChain(std::exchange(buckets[i], nullptr));
  }
}

// Entries of one key share their value and their chain, so a value is deleted with its first entry.
template <typename K, typename V>
void KEHashmap<K, V>::DeleteChain(Entry* entry) {
  while (entry) {
    std::unique_ptr<Entry> dying(std::exchange(entry, entry->next));
    if constexpr (std::is_pointer_v<V>) {
      for (Entry* later = entry; later; later = later->next) {
        if (later->value == dying->value) {
          later->value = nullptr;
        }
      }
    }
    DeleteVal(dying->value);
  }
}

template <typename K, typename V>
void KEHashmap<K, V>::SaveIt(KEHashmapIterator<K, V>* iterator) {
  const bool keepsPosition = iterator->map == this;
  Register(iterator);
  if (!keepsPosition) {
    iterator->GoToFirst();
  }
}

template <typename K, typename V>
void KEHashmap<K, V>::Register(KEHashmapIterator<K, V>* iterator) {
  if (iterator->slot && iterator->map == this) {
    return;
  }
  iterator->Unregister();
  iterators.Add(iterator);
  iterator->map = this;
}

}  // namespace KELib

#endif
