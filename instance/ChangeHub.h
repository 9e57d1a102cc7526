// SPDX-License-Identifier: MIT
//
// Hands what changes in the data caches of one data sync on to every open feed.
//
// Thread safety: every operation from any thread. One mutex, a leaf, guards everything; it is held
//   for one change or for a few dozen entries. Filed, Unfiled, Removed, RemovedAll and Changed are
//   called with the mutexes of the data caches that the stubs are in: so an entry is there before
//   anybody else sees the change.
// Ownership: shared by the data sync, its type cache and the feeds, so that a feed may outlive the
//   others.
// Cost: with no feed open IsOpen is all that is asked.
#ifndef KECPP_INSTANCE_CHANGEHUB_H
#define KECPP_INSTANCE_CHANGEHUB_H

#include <array>
#include <atomic>
#include <deque>
#include <memory>
#include <vector>

#include "foundation/KEMutex.h"
#include "foundation/KEQuietCondition.h"
#include "foundation/KEString.h"
#include "instance/FeedRecords.h"
#include "instance/KEChangeFeed.h"

namespace KE::Instance {

class KETypeCache;

class ChangeHub {
 public:
  using Stub = KELib::Stub::KEStubBase;
  struct Reader;

  ChangeHub();
  ~ChangeHub();
  ChangeHub(const ChangeHub&) = delete;
  ChangeHub& operator=(const ChangeHub&) = delete;

  // Whether there is an open feed. A thread that files something and sees none here does so
  // before a feed that is being opened looks at that cache.
  bool IsOpen() const { return open.load(std::memory_order_relaxed) != 0; }

  // The number of a data cache's name, which is kept as long as the hub lives.
  unsigned int TypeOf(const KELib::KEString& name);

  // --- what changes ------------------------------------------------------------------------------

  // A stub is filed, in the place of `old` unless that is null. When it throws (std::bad_alloc)
  // nothing has changed. Unfiled takes it back.
  void Filed(unsigned int type, const KELib::KEString& key, Stub* old, Stub& stub);
  void Unfiled(Stub* old, Stub& stub) noexcept;

  // A stub, or all of a data cache, is about to be deleted. Those to which it is linked change.
  void Removed(Stub& stub) noexcept;
  void RemovedAll(unsigned int type) noexcept;

  // Stubs have changed; null is passed over.
  void Changed(const Stub* stub, const Stub* second = nullptr,
               const Stub* third = nullptr) noexcept;

  // A change of that stub will be reported soon: brings its record closer to the processor. Takes
  // no lock; what it looks at may be out of date.
  void Expect(const Stub& stub) const { shadow.Prefetch(Hint(stub)); }

  // Changes that belong together: who waits is woken when they are complete, not for each.
  class Batch {
   public:
    explicit Batch(ChangeHub* hub);  // null: nothing
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

   private:
    ChangeHub* const hub;  // null when no feed was open
  };

  // --- feeds -------------------------------------------------------------------------------------

  // A reader to whom all that `types` holds is "added". Takes the mutexes of its data caches, one
  // at a time. Throws std::bad_alloc.
  Reader& Open(KETypeCache& types);

  // Close may come more than once; Free ends the reader, when nobody is in Take any more.
  void Close(Reader& reader);
  void Free(Reader& reader);

  // KEChangeFeed's.
  int Take(Reader& reader, KEChange* changes, int max, int milliseconds);
  int Wait(Reader& reader, int milliseconds);

  // --- for the data sync -------------------------------------------------------------------------

  // The flag was just written. Lets those who wait go; while it is set nobody waits.
  void NoteStop(const std::atomic<bool>& stopRequested);

  // Between these two nothing is given: what is removed may come back.
  void Hold();
  void Release();

 private:
  class Stay;

  bool IsStill(const Reader& reader) const KECPP_REQUIRES(mutex);
  bool AwaitEntry(Reader& reader, int milliseconds, int& result) KECPP_REQUIRES(mutex);
  bool GiveSome(Reader& reader, std::uint64_t end, KEChange* changes, int& given, int max)
      KECPP_REQUIRES(mutex);
  void WakeAfterChange() KECPP_REQUIRES(mutex);
  void WakeAll() KECPP_REQUIRES(mutex);

  KELib::KEMutex mutex;
  std::vector<std::unique_ptr<Reader>> readers KECPP_GUARDED_BY(mutex);  // also closed ones
  std::deque<KELib::KEString> names KECPP_GUARDED_BY(mutex);
  unsigned int held KECPP_GUARDED_BY(mutex) = 0;
  bool stopped KECPP_GUARDED_BY(mutex) = false;
  unsigned long long stops KECPP_GUARDED_BY(mutex) = 0;

  // Where the first feed probably has a stub's record; kept until the hub dies, since Expect takes
  // no lock. What has become wrong costs time only.
  using Hints = std::array<std::atomic<FeedRecords::Index>, 1U << 18>;
  std::atomic<FeedRecords::Index>* HintOf(const Stub& stub) const {
    Hints* const all = hints.load(std::memory_order_acquire);
    return all != nullptr ? &(*all)[FeedRecords::Place(stub) % all->size()] : nullptr;
  }
  FeedRecords::Index Hint(const Stub& stub) const {
    const auto* const hint = HintOf(stub);
    return hint != nullptr ? hint->load(std::memory_order_relaxed) : 0;
  }
  void NoteRecord(const Reader& reader, const Stub& stub, FeedRecords::Index index)
      KECPP_REQUIRES(mutex);

  std::atomic<Hints*> hints{nullptr};  // owned; made by the first feed
  FeedRecords::Shadow shadow;

  std::atomic<unsigned int> open{0};     // readers that are not closed; written with `mutex` held
  std::atomic<unsigned int> batches{0};  // under way
  std::atomic<unsigned int> waiting{0};  // threads that wait in Take; written with `mutex` held
};

}  // namespace KE::Instance

#endif
