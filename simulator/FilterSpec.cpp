// SPDX-License-Identifier: MIT
#include "simulator/FilterSpec.h"

#include <deque>
#include <stdexcept>

namespace sim {

namespace {

std::string Required(const pugi::xml_node& node, const char* name) {
  const pugi::xml_node child = node.child(name);
  if (!child || child.text().empty()) {
    throw std::runtime_error(std::string(node.name()) + " lacks " + name);
  }
  return child.text().get();
}

bool Flag(const pugi::xml_node& node, const char* name) {
  const std::string value = Required(node, name);
  if (value != "true" && value != "false") throw std::runtime_error(name + (" is " + value));
  return value == "true";
}

}  // namespace

FilterSpec::FilterSpec(const pugi::xml_node& spec) {
  for (const pugi::xml_node& set : spec.children("propSet")) {
    if (Flag(set, "all")) throw std::runtime_error("propSet asks for all properties");
    std::set<std::string>& wanted = paths[Required(set, "type")];
    for (const pugi::xml_node& path : set.children("pathSet")) wanted.insert(path.text().get());
  }
  if (paths.empty()) throw std::runtime_error("spec lacks propSet");
  const pugi::xml_node objectSet = spec.child("objectSet");
  if (!objectSet) throw std::runtime_error("spec lacks objectSet");
  start = Required(objectSet, "obj");
  if (objectSet.child("obj").attribute("type").empty()) throw std::runtime_error("obj lacks type");
  skipStart = Flag(objectSet, "skip");
  for (const pugi::xml_node& select : objectSet.children("selectSet")) ReadTraversal(select);
}

void FilterSpec::ReadTraversal(const pugi::xml_node& node) {
  if (std::string(node.attribute("xsi:type").value()) != "TraversalSpec") {
    throw std::runtime_error("selectSet is no TraversalSpec");
  }
  const std::string name = Required(node, "name");
  Traversal& traversal = traversals[name];
  traversal.type = Required(node, "type");
  traversal.path = Required(node, "path");
  traversal.skip = Flag(node, "skip");
  for (const pugi::xml_node& select : node.children("selectSet")) {
    traversal.selects.push_back(Required(select, "name"));
  }
  startTraversals.push_back(name);
}

const std::set<std::string>* FilterSpec::PathsOf(const std::string& type) const {
  const auto found = paths.find(type);
  return found != paths.end() ? &found->second : nullptr;
}

bool FilterSpec::Walks(const std::string& type) const {
  for (const auto& entry : traversals) {
    if (entry.second.type == type) return true;
  }
  return false;
}

std::vector<std::string> FilterSpec::SelectLocked(Inventory& inventory) const {
  struct Step {
    std::string id;
    const std::vector<std::string>* traversals;
    bool skip;
  };
  std::vector<std::string> selected;
  std::set<std::string> walked;
  std::deque<Step> steps{{start, &startTraversals, skipStart}};
  while (!steps.empty()) {
    const Step step = steps.front();
    steps.pop_front();
    Object* object = inventory.FindLocked(step.id);
    if (object == nullptr || !walked.insert(step.id).second) continue;
    if (!step.skip && PathsOf(object->type) != nullptr) selected.push_back(step.id);
    for (const std::string& name : *step.traversals) {
      const auto found = traversals.find(name);
      if (found == traversals.end() || found->second.type != object->type) continue;
      if (found->second.path != "childEntity") continue;
      for (const std::string& child : object->children) {
        steps.push_back({child, &found->second.selects, found->second.skip});
      }
    }
  }
  return selected;
}

}  // namespace sim
