// SPDX-License-Identifier: MIT
//
// A feed says which objects of the data caches were added, changed or removed, so that an agent
// need not copy and compare all of them. KEDataSync::OpenChangeFeed opens one; there may be any
// number at once.
//
// What a feed gives: replayed in order, its entries make what is cached. It begins with all that is
// cached, as "added". After that an object has at most one entry at a time, which is right relative
// to what this feed gave before: added and removed again gives nothing, removed and added again
// gives "changed". An entry keeps its first place. Nothing is ever dropped.
//
//   added    this feed has not given the object, or gave it as removed since
//   changed  a property got another value, or a link was made or ended; at times nothing differs
//   removed  the object is in no cache any more
//
// - A new or ended link is a change of both of its ends.
// - Removing what was never given leaves nothing, neither an entry nor memory.
// - A stopped watch removes what it deletes from the caches, and nothing else.
// - The first watch after a stop empties the caches and fills them again. Until that SetupDataSync
//   returns its feeds give nothing: what came back is "changed", what did not is "removed".
// - Of what an agent does itself, SetVal, RemoveVal and Clear are seen. Writing into a stub is not.
//
// An entry is there before the mutex of the object's cache is let go: who looks the object up after
// Take finds it so, or newer.
//
// Thread safety: every operation from any thread, also with mutexes of data caches held, though
//   the caches do not change while a thread waits in Take with one. One leaf lock is taken, for a
//   few dozen entries at a time.
// Ownership: the caller's. A feed may outlive its data sync; it then gives what it has left.
// Memory: about 70 bytes for each cached object and for each one whose removal is not taken yet,
//   however slow the reader is; and a megabyte for all feeds of a data sync.
#ifndef KECPP_INSTANCE_KECHANGEFEED_H
#define KECPP_INSTANCE_KECHANGEFEED_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KE::Instance {

struct KECPP_API KEChange {
  enum class Kind { added, changed, removed };

  Kind kind = Kind::changed;
  const char* className = "";  // the name of the data cache; as long-lived as the feed
  KELib::KEString key;         // under which the object is or was filed there
};

// A feed of changes; see the head of this file.
class KECPP_API KEChangeFeed {
 public:
  // Closes it. Threads that are inside Take return first.
  virtual ~KEChangeFeed();

  // Fills up to `max` elements of the array `changes`, the oldest first, and returns their number.
  // With nothing to give it waits for at most `milliseconds` (0: not at all; below 0: without
  // limit) and returns 0 when that time is over.
  // Returns -1 instead of waiting when the feed is closed or ended, and when the data sync was
  // asked to stop: by RequestStop, a logout or Cleanup. After a stop the feed goes on with the next
  // watch.
  // One call gives an object once at most. Threads that take at the same time share the entries.
  // O(entries given). Throws std::bad_alloc when there is no memory for the first entry; it and all
  // others stay.
  virtual int Take(KEChange* changes, int max, int milliseconds) = 0;

  // Waits as Take does, and takes nothing: 1 when there is something to take, 0 when the time is
  // over, -1 where Take would return that.
  virtual int Wait(int milliseconds) = 0;

  // Forgets everything and lets those who wait go. Nothing comes any more.
  virtual void Close() = 0;
};

}  // namespace KE::Instance

#endif
