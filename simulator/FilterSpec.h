// SPDX-License-Identifier: MIT
//
// A property filter: which objects are looked at, found by walking from a start object, and which
// of their properties are reported.
#pragma once

#include <map>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <vector>

#include "simulator/Inventory.h"

namespace sim {

class FilterSpec {
 public:
  // Reads a "spec" element. Throws std::runtime_error that says what is wrong with it.
  explicit FilterSpec(const pugi::xml_node& spec);

  // The identifiers of the objects that the filter selects now, in the order of the walk. The
  // caller holds the inventory's mutex.
  std::vector<std::string> SelectLocked(Inventory& inventory) const;

  // The paths that are reported of a type; null for a type that is not asked for.
  const std::set<std::string>* PathsOf(const std::string& type) const;

  // True when a change of an object of that type can change what is selected.
  bool Walks(const std::string& type) const;

 private:
  struct Traversal {
    std::string type, path;
    bool skip = false;
    std::vector<std::string> selects;
  };
  void ReadTraversal(const pugi::xml_node& node);

  std::map<std::string, std::set<std::string>> paths;  // by object type
  std::map<std::string, Traversal> traversals;         // by name
  std::vector<std::string> startTraversals;
  std::string start;
  bool skipStart = false;
};

}  // namespace sim
