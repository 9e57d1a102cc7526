// SPDX-License-Identifier: MIT
//
// The whole inventory as one JSON document, in the form in which kecpp-inventory prints it: lists
// sorted by key, texts exactly as they go over the wire.
#ifndef KECPP_SIMULATOR_TRUTH_H
#define KECPP_SIMULATOR_TRUTH_H

#include <nlohmann/json.hpp>

#include "simulator/Inventory.h"

namespace sim {

// Takes the inventory's mutex.
nlohmann::json Truth(Inventory& inventory);

}  // namespace sim

#endif
