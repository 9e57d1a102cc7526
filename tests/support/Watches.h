// SPDX-License-Identifier: MIT
//
// Sets up the watches of an inventory, as any agent does. On return the first data is on its
// way, or in the caches when `waiter` is null. Throws what SetupDataSync throws.
#ifndef KECPP_TESTS_SUPPORT_WATCHES_H
#define KECPP_TESTS_SUPPORT_WATCHES_H

#include <kecpp.h>

#include <memory>

#include "inventory/WatchLists.h"

// `fill` makes the list of what is watched below the object that the service content names so. The
// data sync owns the result.
template <typename Fill>
KE::Stub::ManagedObjectReference* Watch(KE::Service::KEServiceInst& instance,
                                        KE::Service::KEDataSync& sync, const char* rootName,
                                        Fill fill, KELib::KEWaiter* waiter = nullptr) {
  const std::unique_ptr<KE::Stub::ManagedObjectReference> root(instance.GetReference(rootName));
  KELib::KEVector<KELib::KEString> list;
  fill(list);
  return sync.SetupDataSync(root.get(), list, waiter);
}

inline KE::Stub::ManagedObjectReference* WatchSystems(KE::Service::KEServiceInst& instance,
                                                      KE::Service::KEDataSync& sync) {
  return Watch(instance, sync, KE::Service::PxaRootFolder, kecpp::ListSystems);
}

inline KE::Stub::ManagedObjectReference* WatchAuthorization(KE::Service::KEServiceInst& instance,
                                                            KE::Service::KEDataSync& sync,
                                                            KELib::KEWaiter* waiter = nullptr) {
  const auto list = [](KELib::KEVector<KELib::KEString>& all) {
    kecpp::ListAuthorization(all);
    kecpp::ListPermissions(all);
  };
  return Watch(instance, sync, "authorizationManager", list, waiter);
}

#endif
