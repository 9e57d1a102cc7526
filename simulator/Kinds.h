// SPDX-License-Identifier: MIT
//
// The kinds of objects that make up the inventory, one row for each: how many there are unless the
// command line says otherwise, what a new one looks like, and what an agent should know of it. To
// add a kind, add a row to Kinds.cpp.
#ifndef KECPP_SIMULATOR_KINDS_H
#define KECPP_SIMULATOR_KINDS_H

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Object.h"

namespace sim {

// What is known of an object before it has properties.
struct NewObject {
  const std::string& id;
  const std::string& name;  // XML text
  const std::string& host;  // the identifier of the host that it is on; may be empty
  unsigned int number;      // from 1, for each kind
  std::uint64_t seed;
};

struct Kind {
  const char* type;      // as it goes over the wire
  const char* plural;    // its folder's name, its option's and that of its list in the truth
  const char* folder;    // the folder's identifier
  const char* stem;      // of identifiers ("vm-1") and of made-up names ("vm1")
  bool isOnHost;         // each object is a member of a host
  unsigned int usually;  // how many there are without the option
  std::vector<Property> (*makeUp)(const NewObject& object);
  nlohmann::json (*describe)(const Object& object);
};

// In the order in which their objects are made: hosts come first.
const std::vector<Kind>& Kinds();

// The kind of a type, which must be that of one.
const Kind& KindOf(std::string_view type);

}  // namespace sim

#endif
