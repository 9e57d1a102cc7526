// SPDX-License-Identifier: MIT
//
// The inventory as tables for people.
#ifndef KECPP_AGENT_INVENTORYTABLE_H
#define KECPP_AGENT_INVENTORYTABLE_H

#include <cstddef>
#include <string>

#include "agent/Inventory.h"

namespace inventory {

// The tables that `lists` names. XML entities are decoded. Each table shows at most `maxRows` rows.
std::string ToTables(const Inventory& inventory, const Lists& lists, std::size_t maxRows);

// The word for a CIM operational status, e.g. "OK" for 2; the number for one without a word.
std::string StatusWord(unsigned operationalStatus);

}  // namespace inventory

#endif
