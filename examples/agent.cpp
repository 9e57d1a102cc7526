// SPDX-License-Identifier: MIT
// Lists the machines of a host with their power states, and again after each of N changes:
//   agent CONFIG-FILE N
#include <kecpp.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace KE::Service;
using namespace KE::Stub;
using KELib::KEString;

static void Print(KE::Instance::KETypeCache& cache) {
  KEString type(ZORBEL_VMComputerSystemClass);
  auto* machines = cache.GetDataCache(type);
  KELib::KEMutexGuard guard(machines->GetMutex());  // while it is held, no stub changes or goes
  for (auto it = machines->Iterator(); !it.End(); ++it) {
    auto* machine = static_cast<ZORBEL_VMComputerSystem*>((*it)->value);
    std::printf("%s: %s\n", machine->ElementName.Cstr(), machine->PowerState.Cstr());
  }
  std::fflush(stdout);
}

int main(int, char** argv) try {
  auto* manager = GetServiceManagerInstance();
  auto* instance = manager->GetServiceInstance(argv[1], DEFAULT_CONFIG_CONTENT);
  if (!instance) return EXIT_FAILURE;
  KEDataSync* sync = instance->GetSession()->GetDataSync();
  std::unique_ptr<ManagedObjectReference> root(instance->GetReference(PxaRootFolder));
  KELib::KEVector<KEString> list;  // what to watch, how to get there, and which cache holds it
  for (const char* element : {PropSep, ObjectSep, "VirtualMachine", "name", "runtime.powerState",
                              TraversalSep, "walk", ObjectSep, "Folder", PropSep, "childEntity",
                              SelectSep, "walk", CacheObjectSep, ZORBEL_VMComputerSystemClass}) {
    list.Add(KEString(element));
  }
  sync->SetupDataSync(root.get(), list, nullptr);  // the cache is full when it returns
  unsigned long long seen = 0;
  for (int left = std::atoi(argv[2]); left >= 0 && sync->WaitForChange(seen, 60000); --left) {
    Print(*sync->GetCache());
  }
  FreeServiceManagerInstance();
  return EXIT_SUCCESS;
} catch (const KELib::Exception& error) {
  std::fprintf(stderr, "%s\n", error.What());
  return EXIT_FAILURE;
}
