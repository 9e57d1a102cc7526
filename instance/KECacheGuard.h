// SPDX-License-Identifier: MIT
//
// Holds the mutexes of data caches while one object's changes are applied, so that readers see the
// object either before or after them.
//
// Takes them in the one order that all users follow (KEDataCache.h), and leaves alone those that
// the calling thread holds already. Types without a data cache are passed over.
//
// Thread safety: a guard belongs to the thread that made it. Ownership: borrows the type cache.
#ifndef KECPP_INSTANCE_KECACHEGUARD_H
#define KECPP_INSTANCE_KECACHEGUARD_H

#include <vector>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"

namespace KE::Instance {

enum class LockGroup : unsigned char;

class KEDataCache;
class KETypeCache;

class KECPP_API KECacheGuard {
 public:
  explicit KECacheGuard(KETypeCache* typeCache);
  ~KECacheGuard();  // as Unlock
  KECacheGuard(const KECacheGuard&) = delete;
  KECacheGuard& operator=(const KECacheGuard&) = delete;

  // The caches that a change of an object of that server type can touch: its kind's lock group
  // (ObjectKinds.h).
  void LockFor(KELib::KEString& objectType);

  void LockAuthorization();    // roles, privileges, identities
  void LockComputerSystems();  // machines, hosts
  void LockTasks();
  void LockKinds(LockGroup group);
  void LockAll();  // every data cache

  // The data cache of a type and those whose stubs its stubs are linked to: what deleting needs.
  // A type that is in no lock group is locked alone.
  void LockLinked(KELib::KEString& typeName);

  // One data cache, null allowed. Several are locked in order.
  // Outside the analysis: how many mutexes a guard takes is known at run time only.
  void Lock(KEDataCache* cache) KECPP_NO_THREAD_SAFETY_ANALYSIS;

  // Gives up what this guard took.
  void Unlock() KECPP_NO_THREAD_SAFETY_ANALYSIS;

 private:
  KETypeCache* typeCache;
  std::vector<KELib::KEMutex*> taken;
};

}  // namespace KE::Instance

#endif
