// SPDX-License-Identifier: MIT
//
// The single steps of applying an update set, for agents that were built against them and walk over
// a set themselves. The library walks with UpdateSetWalk and calls none of them; nothing new
// belongs here. KEDataSyncImpl's operations of the same names say what each does.
//
// Locks: each takes the filter-table mutex and the data caches that it needs, unless the calling
//   thread holds them.
// Ownership: borrows the watches and the type cache. Made for one call.
#ifndef KECPP_DATASYNC_PROMISEDSTEPS_H
#define KECPP_DATASYNC_PROMISEDSTEPS_H

#include "datasync/UpdateInfo.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"
#include "instance/KEMultiCacheLock.h"
#include "instance/KETypeCache.h"

namespace KELib::Xml {
class KEXmlReader;
}

namespace KE::Service {

class Watches;

class PromisedSteps {
 public:
  PromisedSteps(Watches& watches, KE::Instance::KETypeCache& types);

  void LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui);
  void UpdateSimpleType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);
  void UpdateComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);
  void UpdateArrayOfComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                                KE::Instance::KEDataCache* primary,
                                KE::Instance::KEDataCache* secondary);
  void UpdateSingleComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                               KE::Instance::KEDataCache* primary,
                               KE::Instance::KEDataCache* secondary,
                               KELib::KEHashmap<KELib::KEString, bool>* seen);
  void ProcessArrayDeletes(KE::Instance::KEDataCache* cache,
                           KELib::KEHashmap<KELib::KEString, bool>& seen);
  static void GetAssociatedType(const char* tag, KELib::Xml::KEXmlReader& r, KELib::KEString& out);
  void UpdateMissingType(UpdateInfo& ui);

 private:
  Watches& watches;
  KE::Instance::KETypeCache& types;
};

}  // namespace KE::Service

#endif
