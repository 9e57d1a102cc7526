// SPDX-License-Identifier: MIT
//
// What goes wrong during an endurance run: one thing out of all that the simulated daemon can do,
// at random.
#ifndef KECPP_TESTS_SOAK_FAULTS_H
#define KECPP_TESTS_SOAK_FAULTS_H

#include <cstdint>
#include <map>
#include <random>
#include <string>

#include "endtoend/Simulator.h"

namespace soak {

class Faults {
 public:
  Faults(endtoend::Simulator& daemon, std::uint64_t seed) : simulator(daemon), random(seed) {}

  // Orders one.
  void OrderOne();

  // As Simulator::Control, also while an earlier fault keeps the daemon's port closed.
  void Control(const std::string& name, const endtoend::Json& body);

  // Seconds until the next: two to six.
  double Pause() { return 2 + static_cast<double>(random() % 4001) / 1000; }

  // How often each kind was ordered.
  const std::map<std::string, unsigned>& Ordered() const { return ordered; }
  unsigned Total() const;

 private:
  endtoend::Simulator& simulator;
  std::mt19937_64 random;
  std::map<std::string, unsigned> ordered;
};

}  // namespace soak

#endif
