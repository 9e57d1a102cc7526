// SPDX-License-Identifier: MIT
#include "instance/ChangeHub.h"

#include <algorithm>
#include <chrono>

#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KETypeCache.h"
#include "instance/ObjectKinds.h"

namespace KE::Instance {

namespace {

using Clock = std::chrono::steady_clock;
using KELib::KEMutexGuard;
using KELib::KEString;

// So many entries are given before a thread that has changes to report gets the mutex.
constexpr int kEntriesAtOnce = 64;

}  // namespace

// The feed of one reader. Guarded by the hub's mutex.
struct ChangeHub::Reader {
  FeedRecords records;
  KELib::KEQuietCondition changed;
  unsigned int waiting = 0;  // threads
  unsigned int inside = 0;   // threads in Take
  bool closed = false;
};

// A thread's stay in Take, for whose end Free waits.
class ChangeHub::Stay {
 public:
  Stay(ChangeHub& whose, Reader& where) : hub(whose), reader(where) {
    KEMutexGuard guard(&hub.mutex);
    ++reader.inside;
  }
  ~Stay() {
    KEMutexGuard guard(&hub.mutex);
    if (--reader.inside == 0 && reader.closed) reader.changed.Broadcast();
  }
  Stay(const Stay&) = delete;
  Stay& operator=(const Stay&) = delete;

 private:
  ChangeHub& hub;
  Reader& reader;
};

ChangeHub::ChangeHub() = default;
ChangeHub::~ChangeHub() {
  delete hints.load();
}

unsigned int ChangeHub::TypeOf(const KEString& name) {
  KEMutexGuard guard(&mutex);
  const auto found = std::find_if(names.begin(), names.end(),
                                  [&](const KEString& known) { return known.Equals(name); });
  if (found == names.end()) {
    if (names.size() == FeedRecords::kMostTypes) throw KELib::SystemException("Too many types");
    names.push_back(name);
    return static_cast<unsigned int>(names.size() - 1);
  }
  return static_cast<unsigned int>(found - names.begin());
}

// --- what changes --------------------------------------------------------------------------------

void ChangeHub::Filed(unsigned int type, const KEString& key, Stub* old, Stub& stub) {
  KEMutexGuard guard(&mutex);
  for (std::size_t i = 0; i < readers.size(); ++i) {
    if (readers[i]->closed) continue;
    if (old != nullptr) {
      readers[i]->records.Replace(*old, stub);
      continue;
    }
    try {
      NoteRecord(*readers[i], stub, readers[i]->records.Add(type, key, stub));
    } catch (...) {
      while (i-- > 0) readers[i]->records.Remove(stub);
      throw;
    }
  }
  WakeAfterChange();
}

void ChangeHub::NoteRecord(const Reader& reader, const Stub& stub, FeedRecords::Index index) {
  if (&reader != readers.front().get()) return;
  HintOf(stub)->store(index, std::memory_order_relaxed);
  reader.records.ShowTo(shadow);
}

void ChangeHub::Unfiled(Stub* old, Stub& stub) noexcept {
  KEMutexGuard guard(&mutex);
  for (const auto& reader : readers) {
    if (old != nullptr) {
      reader->records.Replace(stub, *old);
    } else {
      reader->records.Remove(stub);
    }
  }
}

void ChangeHub::Removed(Stub& stub) noexcept {
  KEMutexGuard guard(&mutex);
  for (const auto& reader : readers) reader->records.Remove(stub);
  WakeAfterChange();
}

void ChangeHub::RemovedAll(unsigned int type) noexcept {
  KEMutexGuard guard(&mutex);
  for (const auto& reader : readers) reader->records.RemoveAll(type);
  WakeAfterChange();
}

void ChangeHub::Changed(const Stub* stub, const Stub* second, const Stub* third) noexcept {
  KEMutexGuard guard(&mutex);
  for (const auto& reader : readers) {
    if (stub != nullptr) reader->records.Change(*stub, Hint(*stub));
    if (second != nullptr) reader->records.Change(*second);
    if (third != nullptr) reader->records.Change(*third);
  }
  WakeAfterChange();
}

// --- waking --------------------------------------------------------------------------------------

// A thread that waits has counted itself before a change that it has to see; a batch that is over
// for the one who changes is over before its end looks for those who wait. So either wakes them.
ChangeHub::Batch::Batch(ChangeHub* whose)
    : hub(whose != nullptr && whose->IsOpen() ? whose : nullptr) {
  if (hub != nullptr) ++hub->batches;
}

ChangeHub::Batch::~Batch() {
  if (hub == nullptr) return;
  --hub->batches;
  if (hub->waiting == 0) return;
  KEMutexGuard guard(&hub->mutex);
  hub->WakeAll();
}

void ChangeHub::WakeAfterChange() {
  if (waiting.load(std::memory_order_relaxed) > 0 && batches == 0) WakeAll();
}

void ChangeHub::WakeAll() {
  for (const auto& reader : readers) {
    if (reader->waiting > 0 && !IsStill(*reader)) reader->changed.Broadcast();
  }
}

// Nothing to give.
bool ChangeHub::IsStill(const Reader& reader) const {
  return held > 0 || !reader.records.IsPending();
}

// Every thread that writes the flag comes here afterwards, so the last one leaves what it is.
void ChangeHub::NoteStop(const std::atomic<bool>& stopRequested) {
  KEMutexGuard guard(&mutex);
  stopped = stopRequested;
  ++stops;
  for (const auto& reader : readers) reader->changed.Broadcast();
}

void ChangeHub::Hold() {
  KEMutexGuard guard(&mutex);
  ++held;
}

void ChangeHub::Release() {
  KEMutexGuard guard(&mutex);
  --held;
  WakeAll();
}

// --- feeds ---------------------------------------------------------------------------------------

// The reader is known to those who file before the caches are looked at: what they file in the
// meantime is met twice, and nothing is missed.
ChangeHub::Reader& ChangeHub::Open(KETypeCache& types) {
  KEMutexGuard guard(&mutex);
  if (hints == nullptr) hints = new Hints();
  readers.push_back(std::make_unique<Reader>());
  Reader& reader = *readers.back();
  ++open;
  guard.Release();
  try {
    for (KEDataCache* cache : types.InLockOrder()) {
      KEMutexGuard stays(cache->GetMutex());
      const unsigned int type = cache->FeedType();
      for (auto it = cache->Iterator(); !it.End(); ++it) {
        KEMutexGuard again(&mutex);
        NoteRecord(reader, *it->value, reader.records.AddOnce(type, it->key, *it->value));
      }
    }
  } catch (...) {
    Free(reader);
    throw;
  }
  return reader;
}

void ChangeHub::Close(Reader& reader) {
  FeedRecords forgotten;  // freed when the mutex is let go
  KEMutexGuard guard(&mutex);
  if (reader.closed) return;
  reader.closed = true;
  --open;
  std::swap(forgotten, reader.records);
  if (&reader == readers.front().get()) shadow.Forget();
  reader.changed.Broadcast();
}

void ChangeHub::Free(Reader& reader) {
  Close(reader);
  KEMutexGuard guard(&mutex);
  while (reader.inside > 0) reader.changed.Wait(mutex, -1);
  readers.erase(std::find_if(readers.begin(), readers.end(),
                             [&](const auto& each) { return each.get() == &reader; }));
}

// Waits until there is something to give. False, and what Take returns, when there is nothing.
bool ChangeHub::AwaitEntry(Reader& reader, int milliseconds, int& result) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
  const unsigned long long stopsBefore = stops;
  while (IsStill(reader)) {
    result = -1;
    if (reader.closed || stopped || stops != stopsBefore) return false;
    long long left = -1;
    if (milliseconds >= 0) {
      const auto rest = deadline - Clock::now();
      result = 0;
      if (rest <= Clock::duration::zero()) return false;
      left = std::chrono::duration_cast<std::chrono::milliseconds>(rest).count() + 1;
    }
    ++waiting;
    ++reader.waiting;
    reader.changed.Wait(mutex, left);
    --reader.waiting;
    --waiting;
  }
  return true;
}

// Adds to the `given` entries up to `max`. Without memory for the first one it throws.
bool ChangeHub::GiveSome(Reader& reader, std::uint64_t end, KEChange* changes, int& given,
                         int max) {
  unsigned int type = 0;
  try {
    for (int room = kEntriesAtOnce; room > 0 && given < max; --room) {
      if (held > 0 || !reader.records.Give(end, changes[given], type)) return false;
      const ObjectKind* const kind = KindOfCache(names[type].Cstr());
      changes[given++].className = kind != nullptr ? kind->cacheClass : names[type].Cstr();
    }
  } catch (...) {
    if (given == 0) throw;
    return false;
  }
  return given < max;
}

int ChangeHub::Wait(Reader& reader, int milliseconds) {
  const Stay stay(*this, reader);
  KEMutexGuard guard(&mutex);
  int result = 0;
  return AwaitEntry(reader, milliseconds, result) ? 1 : result;
}

int ChangeHub::Take(Reader& reader, KEChange* changes, int max, int milliseconds) {
  const Stay stay(*this, reader);
  KEMutexGuard guard(&mutex);
  int given = 0;
  if (max <= 0 || !AwaitEntry(reader, milliseconds, given)) return given;
  given = 0;
  // What begins from now on is left for the next call: no object comes twice.
  const std::uint64_t end = reader.records.NextPlace();
  bool hasMore = GiveSome(reader, end, changes, given, max);
  guard.Release();
  while (hasMore) {
    KEMutexGuard again(&mutex);
    hasMore = GiveSome(reader, end, changes, given, max);
  }
  return given;
}

}  // namespace KE::Instance
