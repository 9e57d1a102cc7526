// SPDX-License-Identifier: MIT
// Prints a host's machines, and then each one that is added, changed or removed, N entries in all,
// by the caches themselves:
//   agent [CONFIG-FILE [N]]
#include <kecpp.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

using namespace KE::Service;
using namespace KE::Stub;
using KE::Instance::KEChange;

// What is asked of an object is copied while its cache's mutex is held. Empty when it has gone
// since: then the feed will say so.
static std::string NameOf(KE::Instance::KETypeCache& types, KEChange& change) {
  KELib::KEString type(change.className);
  auto* cache = types.GetDataCache(type);
  if (!cache) return "";
  KELib::KEMutexGuard guard(cache->GetMutex());
  KELib::Stub::KEStubRef found;
  cache->GetVal(change.key, found);
  auto* system = dynamic_cast<CIM_ComputerSystem*>(found.GetData());
  return system ? system->ElementName.Cstr() : "";
}

int main(int argc, char** argv) try {
  const char* config = argc > 1 ? argv[1] : "";
  int entries = argc > 2 ? std::atoi(argv[2]) : 100;
  auto* manager = GetServiceManagerInstance();
  auto* instance = manager->GetServiceInstance(config, DEFAULT_CONFIG_CONTENT);
  if (!instance) {
    KEConnectFailure failure;
    manager->GetLastFailure(failure);
    std::cerr << failure.text.Cstr() << '\n';
    return EXIT_FAILURE;
  }
  KEDataSync* sync = instance->GetSession()->GetDataSync();
  std::unique_ptr<ManagedObjectReference> root(instance->GetReference(PxaRootFolder));
  KELib::KEVector<KELib::KEString> list;  // what to watch, the way there, and the caches for it
  for (const char* element : {PropSep, ObjectSep, TypeVirtualMachine, "name", "runtime.powerState",
                              TraversalSep, "walk", ObjectSep, "Folder", PropSep, "childEntity",
                              SelectSep, "walk", CacheObjectSep, ZORBEL_VMComputerSystemClass}) {
    list.Add(KELib::KEString(element));
  }
  std::unique_ptr<KE::Instance::KEChangeFeed> feed(sync->OpenChangeFeed());
  sync->SetupDataSync(root.get(), list, nullptr);
  const char* const words[] = {"added", "changed", "removed"};
  KEChange changes[64];
  for (int taken; entries > 0 && (taken = feed->Take(changes, 64, 60000)) > 0; entries -= taken) {
    for (int i = 0; i < taken; ++i) {
      std::cout << words[static_cast<int>(changes[i].kind)] << ' ' << changes[i].key.Cstr() << ' '
                << NameOf(*sync->GetCache(), changes[i]) << std::endl;
    }
  }
  FreeServiceManagerInstance();
} catch (const KELib::Exception& error) {
  std::cerr << error.What() << '\n';
  return EXIT_FAILURE;
}
