// SPDX-License-Identifier: MIT
//
// Values of an inventory that nobody typed in: the same for the same seed.
#ifndef KECPP_SIMULATOR_MADEUP_H
#define KECPP_SIMULATOR_MADEUP_H

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/Object.h"

namespace sim {

// A name, as XML text; now and then with entities, or with letters outside ASCII.
std::string MadeUpName(const std::string& stem, unsigned int number);

// All properties of the host or machine with that number.
std::vector<Property> MadeUpHost(const std::string& name, unsigned int number, std::uint64_t seed);
std::vector<Property> MadeUpMachine(const std::string& id, const std::string& name,
                                    const std::string& host, unsigned int number,
                                    std::uint64_t seed);

}  // namespace sim

#endif
