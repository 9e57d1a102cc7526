// SPDX-License-Identifier: MIT
#include "simulator/Selection.h"

#include <cstring>
#include <stdexcept>
#include <unordered_set>

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

Selection::Selection(const pugi::xml_node& element) {
  for (const pugi::xml_node& set : element.children("propSet")) {
    if (Flag(set, "all")) throw std::runtime_error("propSet asks for all properties");
    Paths& wanted = paths[Required(set, "type")];
    for (const pugi::xml_node& path : set.children("pathSet")) wanted.insert(path.text().get());
  }
  if (paths.empty()) throw std::runtime_error("the filter has no propSet");
  const pugi::xml_node objectSet = element.child("objectSet");
  if (!objectSet) throw std::runtime_error("the filter has no objectSet");
  if (objectSet.next_sibling("objectSet")) throw std::runtime_error("more than one objectSet");
  start = Required(objectSet, "obj");
  startType = objectSet.child("obj").attribute("type").value();
  if (startType.empty()) throw std::runtime_error("obj lacks type");
  skipStart = Flag(objectSet, "skip");
  for (const pugi::xml_node& select : objectSet.children("selectSet")) ReadTraversal(select);
}

void Selection::ReadTraversal(const pugi::xml_node& node) {
  if (std::strcmp(node.attribute("xsi:type").value(), "TraversalSpec") != 0) {
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

const Selection::Paths* Selection::PathsOf(const std::string& type) const {
  const auto found = paths.find(type);
  return found != paths.end() ? &found->second : nullptr;
}

bool Selection::IsWalkedSince(const Object& object, Version since) const {
  for (const auto& entry : traversals) {
    const Property* walked =
        entry.second.type == object.type ? object.Find(entry.second.path) : nullptr;
    if (walked != nullptr && walked->changedAt > since) return true;
  }
  return false;
}

void Selection::AddStepsFrom(const Inventory& inventory, const Step& step,
                             std::vector<Step>& steps) const {
  for (const std::string& name : *step.traversals) {
    const auto found = traversals.find(name);
    if (found == traversals.end() || found->second.type != step.object->type) continue;
    const Traversal& traversal = found->second;
    const Property* walked = step.object->Find(traversal.path);
    if (walked == nullptr) continue;
    if (!walked->listsMembers) {  // a single reference, perhaps to nothing
      const Object* object = inventory.FindLocked(walked->xml);
      if (object != nullptr) steps.push_back({object, &traversal.selects, traversal.skip});
      continue;
    }
    for (const Object* member : step.object->members) {
      steps.push_back({member, &traversal.selects, traversal.skip});
    }
  }
}

std::vector<const Object*> Selection::SelectLocked(const Inventory& inventory) const {
  std::vector<const Object*> selected;
  std::unordered_set<const Object*> found;
  std::set<std::pair<const Object*, const void*>> walked;  // an object may be met on several ways
  std::vector<Step> steps;
  if (const Object* first = inventory.FindLocked(start)) {
    steps.push_back({first, &startTraversals, skipStart});
  }
  for (std::size_t next = 0; next < steps.size(); ++next) {
    const Step step = steps[next];
    const bool wanted = !step.skip && PathsOf(step.object->type) != nullptr;
    if (wanted && found.insert(step.object).second) selected.push_back(step.object);
    const std::size_t before = steps.size();
    AddStepsFrom(inventory, step, steps);
    const bool goesOn = steps.size() > before;
    if (goesOn && !walked.insert({step.object, step.traversals}).second) steps.resize(before);
  }
  return selected;
}

}  // namespace sim
