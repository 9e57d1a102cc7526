// SPDX-License-Identifier: MIT
// Lists the machines of a host with their power states, then what changes, N times or for ever:
//   follow [CONFIG-FILE [N]]
#include <kecpp/inventory.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) try {
  kecpp::Inventory inventory(kecpp::Options{argc > 1 ? argv[1] : ""});
  kecpp::Follower changes = inventory.Follow();  // begins with all there is, as "added"
  for (int left = argc > 2 ? std::atoi(argv[2]) : -1; left != 0; --left) {
    if (!changes.Wait(std::chrono::minutes(1))) continue;
    for (const kecpp::Change& change : changes.Next()) {
      if (change.kind != kecpp::Kind::machine) continue;
      const auto machine = inventory.FindMachine(change.key);
      std::cout << (machine ? machine->name + ": " + machine->powerStateText
                            : change.key + ": gone")
                << std::endl;
    }
  }
} catch (const kecpp::Error& error) {
  std::cerr << error.what() << '\n';
  return EXIT_FAILURE;
}
