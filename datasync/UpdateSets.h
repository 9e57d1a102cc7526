// SPDX-License-Identifier: MIT
//
// Applies update sets to the caches, and lets go of those who wait for what they bring.
//
// Locks: none is held between two objects of a set, see UpdateSetWalk. The caller holds no data
//   cache's mutex.
// Ownership: borrows the watches and the type cache.
#ifndef KECPP_DATASYNC_UPDATESETS_H
#define KECPP_DATASYNC_UPDATESETS_H

#include "datasync/WalkRoom.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlReader;
}

namespace KE::Service {

class Watches;

class UpdateSets {
 public:
  UpdateSets(Watches& watches, KE::Instance::KETypeCache& types);
  UpdateSets(const UpdateSets&) = delete;
  UpdateSets& operator=(const UpdateSets&) = delete;

  // Applies the set that begins at `r`, and releases the waiters of those watches whose
  // data it brought. `unknown`, unless it is null, stays empty or names the filter that nobody
  // watches and behind which nothing was applied. Throws what the reader and the caches throw; what
  // was applied before stays.
  void Apply(KELib::Xml::KEXmlReader& r, KE::Stub::ManagedObjectReference* unknown = nullptr);

 private:
  Watches& watches;
  KE::Instance::KETypeCache& types;
  WalkRoom room;
};

}  // namespace KE::Service

#endif
