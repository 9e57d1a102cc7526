// SPDX-License-Identifier: MIT
//
// The data caches of machines and hosts, as those need them who apply update sets: looked up once
// instead of for every value, and once more when data caches have come or gone since.
//
// Thread safety: of one thread. Lock before anything else is called; what is found is of no use any
//   more once the guard lets go.
#ifndef KECPP_DATASYNC_COMPUTERSYSTEMS_H
#define KECPP_DATASYNC_COMPUTERSYSTEMS_H

#include "foundation/KEString.h"
#include "instance/KECacheGuard.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"
#include "xml/KEXmlCursor.h"

namespace KE::Stub {
class ZORBEL_ORXComputerSystem;
class ZORBEL_VMComputerSystem;
}  // namespace KE::Stub

namespace KE::Service {

class ComputerSystems {
 public:
  // `types` outlives the object.
  explicit ComputerSystems(KE::Instance::KETypeCache& types);

  // Takes the mutexes of both data caches, as far as there are any.
  void Lock(KE::Instance::KECacheGuard& guard);

  // For a caller who holds the mutexes by a guard of its own: looks the data caches up.
  void Refresh();

  // The stub under that identifier; null when it is not cached.
  KE::Stub::ZORBEL_VMComputerSystem* FindMachine(const KELib::Xml::XmlSlice& id);
  KE::Stub::ZORBEL_ORXComputerSystem* FindHost(const KELib::Xml::XmlSlice& id);

  // The stub of `object`, filed anew when it is not cached. Throws SystemException "No Data Map
  // found for type :..." when there is no data cache.
  KE::Stub::ZORBEL_VMComputerSystem* Machine(KE::Stub::ManagedObjectReference& object);
  KE::Stub::ZORBEL_ORXComputerSystem* Host(KE::Stub::ManagedObjectReference& object);

 private:
  KE::Instance::KETypeCache& types;
  unsigned int generation;
  KELib::KEString machineType, hostType;
  KE::Instance::KEDataCache* machines = nullptr;  // null while there is none
  KE::Instance::KEDataCache* hosts = nullptr;     // likewise
  KELib::KEString key;                            // of the last search
  unsigned int keyRoom = 0;
};

}  // namespace KE::Service

#endif
