// SPDX-License-Identifier: MIT
//
// What a property filter asks for: which objects, found by walking from a start object, and which
// of their properties.
#ifndef KECPP_SIMULATOR_SELECTION_H
#define KECPP_SIMULATOR_SELECTION_H

#include <functional>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <vector>

#include "simulator/Inventory.h"

namespace sim {

class Selection {
 public:
  using Paths = std::set<std::string, std::less<>>;

  // Reads a "spec" element. Throws std::runtime_error that says what is wrong with it.
  explicit Selection(const pugi::xml_node& element);

  // The objects that the filter selects now, each once, in the order of the walk. The result is
  // valid while the caller holds the inventory's mutex. Linear in what is walked over.
  std::vector<const Object*> SelectLocked(const Inventory& inventory) const;

  // True when a change of the object after `since` may change what is selected.
  bool IsWalkedSince(const Object& object, Version since) const;

  // The paths that are reported of a type; null for a type that is not asked for.
  const Paths* PathsOf(const std::string& type) const;

  const std::string& StartType() const { return startType; }
  const std::string& Start() const { return start; }

 private:
  struct Traversal {
    std::string type, path;
    bool skip = false;
    std::vector<std::string> selects;  // names of the traversals that go on from here
  };
  struct Step {
    const Object* object;
    const std::vector<std::string>* traversals;
    bool skip;
  };
  void ReadTraversal(const pugi::xml_node& node);
  void AddStepsFrom(const Inventory& inventory, const Step& step, std::vector<Step>& steps) const;

  std::map<std::string, Paths> paths;           // by object type
  std::map<std::string, Traversal> traversals;  // by name
  std::vector<std::string> startTraversals;
  std::string startType, start;
  bool skipStart = false;
};

}  // namespace sim

#endif
