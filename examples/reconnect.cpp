// SPDX-License-Identifier: MIT
// Counts the machines at each change, and goes on when the session is lost or the daemon cannot be
// reached for a while:
//   reconnect CONFIG-FILE
// It ends when the daemon was restarted: the library ends the process then, with status 0, and a
// supervisor starts it again (agent.service).
#include <kecpp.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <thread>

using namespace KE::Service;
using namespace KE::Stub;

static void Print(KE::Instance::KETypeCache& cache) {
  KELib::KEString type(ZORBEL_VMComputerSystemClass);
  auto* machines = cache.GetDataCache(type);
  KELib::KEMutexGuard guard(machines->GetMutex());
  const unsigned int count = machines->Size();
  guard.Release();
  std::cout << count << " machines" << std::endl;
}

// Returns when the connection is lost.
static void Follow(KEServiceInst& instance) {
  // Throws SystemException "No Session in Progress" when the login was refused.
  KEDataSync* sync = instance.GetSession()->GetDataSync();
  std::unique_ptr<ManagedObjectReference> root(instance.GetReference(PxaRootFolder));
  KELib::KEVector<KELib::KEString> list;
  for (const char* element :
       {PropSep, ObjectSep, TypeVirtualMachine, "name", TraversalSep, "walk", ObjectSep, "Folder",
        PropSep, "childEntity", SelectSep, "walk", CacheObjectSep, ZORBEL_VMComputerSystemClass}) {
    list.Add(KELib::KEString(element));
  }
  sync->SetupDataSync(root.get(), list, nullptr);
  unsigned long long seen = 0;
  for (;;) {
    if (sync->WaitForChange(seen, 1000)) Print(*sync->GetCache());
    KESyncStatus status;
    sync->GetStatus(status);
    // One failure is retried by the library. A lost session fails each time: only a new login
    // helps.
    if (status.consecutiveFailures >= 3 || !status.loopRunning) {
      std::cerr << "connection lost: " << status.lastFailure.Cstr() << '\n';
      return;
    }
  }
}

int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  auto* manager = GetServiceManagerInstance();
  for (;;) {
    KEServiceInst* instance = manager->GetServiceInstance(argv[1], DEFAULT_CONFIG_CONTENT);
    try {
      if (instance) Follow(*instance);
    } catch (const KELib::Exception& error) {
      std::cerr << error.What() << '\n';
    }
    manager->FreeServiceInstance(instance);  // logs out; null is passed over
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}
