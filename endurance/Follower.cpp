// SPDX-License-Identifier: MIT
//
// kecpp-soak-follower CONFIG, an agent that lives of a Follower alone. Prints all that it knows, in
// one line of JSON, after each time that something changed; compares it with the inventory whenever
// nothing does. Ends at SIGTERM, with status 1 when anything was wrong.
#include <csignal>
#include <cstdlib>
#include <iostream>

#include "endurance/Replay.h"

namespace {

using std::chrono::milliseconds;

volatile std::sig_atomic_t ended = 0;

// While nothing changes: whether what the changes made is the inventory.
bool Agrees(const endurance::Replay& replay, kecpp::Follower& changes) {
  return replay.EqualsInventory() || changes.Wait(std::chrono::seconds(1)) || ended ||
         replay.EqualsInventory();
}

bool Follow(const kecpp::Inventory& inventory) {
  kecpp::Follower changes = inventory.Follow();
  endurance::Replay replay(inventory);
  bool agreed = true, isCompared = false;
  unsigned long long connections = 1;
  while (!ended) {
    if (changes.Wait(milliseconds(200))) {
      replay.TakeAll(changes);
      std::cout << replay.Document() << std::endl;
      isCompared = false;
    } else if (!isCompared) {
      agreed = Agrees(replay, changes) && agreed;
      isCompared = true;
    }
    const kecpp::Status status = inventory.State();
    if (status.connections != connections) std::cerr << "connection lost" << std::endl;
    connections = status.connections;
  }
  if (!agreed) std::cerr << "what the changes made was not the inventory\n";
  std::cerr << replay.Wrong();
  return agreed && replay.Wrong().empty();
}

}  // namespace

int main(int argc, char** argv) try {
  std::signal(SIGTERM, [](int) { ended = 1; });
  const kecpp::Inventory inventory(kecpp::Options{argc > 1 ? argv[1] : ""});
  return Follow(inventory) ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const kecpp::Error& error) {
  std::cerr << error.what() << '\n';
  return EXIT_FAILURE;
}
