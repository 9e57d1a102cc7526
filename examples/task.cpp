// SPDX-License-Identifier: MIT
// Calls a method of a server object that starts a task, and waits until the task has ended:
//   task CONFIG-FILE METHOD TYPE VALUE
// TYPE and VALUE are the reference of the object, for example VirtualMachine and vm-1.
#include <kecpp.h>

#include <cstdlib>
#include <iostream>
#include <memory>

using namespace KE::Service;

int main(int argc, char** argv) try {
  if (argc != 5) return EXIT_FAILURE;
  auto* instance = GetServiceManagerInstance()->GetServiceInstance(argv[1], DEFAULT_CONFIG_CONTENT);
  if (!instance) return EXIT_FAILURE;
  KEDataSync* sync = instance->GetSession()->GetDataSync();

  // The answer holds the task's reference. It may come after the task has ended: that is noticed.
  KELib::KEString answer;
  instance->GetMethod()->Invoke(targetNamespace, argv[2], argv[3], argv[4], answer);

  // Blocks without limit. A stop, a cleanup or three failed cycles in a row let it go, with false.
  std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
  const bool success = sync->WaitForTask(answer, waiter.get());
  std::cout << argv[2] << (success ? " succeeded" : " did not succeed") << '\n';
  FreeServiceManagerInstance();
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const KELib::Exception& error) {  // the text of a server's fault is its type's name
  std::cerr << error.What() << '\n';
  return EXIT_FAILURE;
}
