// SPDX-License-Identifier: MIT
//
// Values of an inventory that nobody typed in: the same for the same seed.
#ifndef KECPP_SIMULATOR_MADEUP_H
#define KECPP_SIMULATOR_MADEUP_H

#include <cstdint>
#include <string>

#include "simulator/Object.h"

namespace sim {

// A name, as XML text; now and then with entities, or with letters outside ASCII.
std::string MadeUpName(const std::string& stem, unsigned int number);

// A number that looks random.
std::uint64_t MadeUpNumber(std::uint64_t seed);

std::string MadeUpUuid(std::uint64_t seed);

// An IPv4 address.
std::string MadeUpAddress(unsigned int number);

// A property with a text, and one that lists the object's members.
Property TextProperty(const char* name, const std::string& xml);
Property MembersProperty(const char* name);

}  // namespace sim

#endif
