// SPDX-License-Identifier: MIT
// Lists the machines of a host with their power states, and again after each of N changes:
//   agent [CONFIG-FILE [N]]
#include <kecpp.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

using namespace KE::Service;
using namespace KE::Stub;

static void Print(KE::Instance::KETypeCache& cache) {
  std::string text;
  KELib::KEString type(ZORBEL_VMComputerSystemClass);
  auto* machines = cache.GetDataCache(type);
  KELib::KEMutexGuard guard(machines->GetMutex());  // while it is held, no stub changes or goes
  for (auto it = machines->Iterator(); !it.End(); ++it) {
    auto* machine = static_cast<ZORBEL_VMComputerSystem*>((*it)->value);
    text += std::string(machine->ElementName.Cstr()) + ": " + machine->PowerState.Cstr() + "\n";
  }
  guard.Release();  // and while it is held the library waits: copy, let go, then do slow work
  std::cout << text << std::flush;
}

int main(int argc, char** argv) try {
  const char* config = argc > 1 ? argv[1] : "";
  int changes = argc > 2 ? std::atoi(argv[2]) : 0;
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
  KELib::KEVector<KELib::KEString>
      list;  // what to watch, how to get there, and which cache holds it
  for (const char* element : {PropSep, ObjectSep, "VirtualMachine", "name", "runtime.powerState",
                              TraversalSep, "walk", ObjectSep, "Folder", PropSep, "childEntity",
                              SelectSep, "walk", CacheObjectSep, ZORBEL_VMComputerSystemClass}) {
    list.Add(KELib::KEString(element));
  }
  sync->SetupDataSync(root.get(), list, nullptr);  // the cache is full when it returns
  unsigned long long seen = 0;
  while (changes-- >= 0 && sync->WaitForChange(seen, 60000)) Print(*sync->GetCache());
  FreeServiceManagerInstance();
} catch (const KELib::Exception& error) {
  std::cerr << error.What() << '\n';
  return EXIT_FAILURE;
}
