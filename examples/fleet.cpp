// SPDX-License-Identifier: MIT
// Lists the sites of a fleet and the power states of their machines, then what changes, N times or
// for ever:
//   fleet URL[,URL...] [N]
#include <kecpp/fleet.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) try {
  if (argc < 2) {
    std::cerr << "Usage: fleet URL[,URL...] [N]\n";
    return EXIT_FAILURE;
  }
  kecpp::Fleet fleet(kecpp::FleetOptions{argv[1]});
  kecpp::FleetFollower changes = fleet.Follow();  // begins with all there is, as "added"
  for (int left = argc > 2 ? std::atoi(argv[2]) : -1; left != 0; --left) {
    if (!changes.Wait(std::chrono::minutes(1))) continue;
    for (const kecpp::FleetChange& change : changes.Next()) {
      if (!change.kind) {
        const auto site = fleet.FindSite(change.site);
        std::cout << change.site << (site && site->IsTrue() ? ": true" : ": as last known")
                  << std::endl;
      } else if (change.kind == kecpp::Kind::machine) {
        const auto machine = fleet.FindMachine(change.site, change.key);
        std::cout << change.site << '/'
                  << (machine ? machine->name + ": " + machine->powerStateText
                              : change.key + ": gone")
                  << std::endl;
      }
    }
  }
} catch (const kecpp::Error& error) {
  std::cerr << error.what() << '\n';
  return EXIT_FAILURE;
}
