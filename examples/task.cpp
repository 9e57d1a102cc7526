// SPDX-License-Identifier: MIT
// Calls a method of a server object that starts a task, and waits until the task has ended:
//   task CONFIG-FILE METHOD TYPE VALUE
// TYPE and VALUE are the reference of the object, for example VirtualMachine and vm-1.
#include <kecpp/inventory.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) try {
  if (argc != 5) return EXIT_FAILURE;
  kecpp::Options options{argv[1]};
  options.systems = false;  // nothing is watched but the task
  options.authorization = kecpp::Authorization::none;
  kecpp::Inventory inventory(options);
  const bool success = inventory.RunTask(argv[2], {argv[3], argv[4]});
  std::cout << argv[2] << (success ? " succeeded" : " did not succeed") << '\n';
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const kecpp::Error& error) {  // the text of a server's fault is its type's name
  std::cerr << error.what() << '\n';
  return EXIT_FAILURE;
}
