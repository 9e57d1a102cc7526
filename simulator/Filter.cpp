// SPDX-License-Identifier: MIT
#include "simulator/Filter.h"

namespace sim {

namespace {

void AppendObject(const std::string& type, const std::string& id, std::string& out) {
  out.append("<obj type=\"").append(type).append("\">").append(id).append("</obj>");
}

void AppendChange(const Inventory& inventory, const Object& object, const Property& property,
                  std::string& out) {
  out.append("<changeSet><name>").append(property.name).append("</name><op>assign</op><val");
  out.append(property.attributes).append(">");
  inventory.AppendValueLocked(object, property, out);
  out += "</val></changeSet>";
}

}  // namespace

void Filter::Forget() {
  reports.clear();
  left.clear();
  leftUnreported.clear();
  walked = reportedMissing = false;
}

void Filter::RepeatAll() {
  for (auto& entry : reports) entry.second.at = 0;
  leftUnreported.merge(left);
  left.clear();
  walked = reportedMissing = false;
}

void Filter::ReportLocked(const Inventory& inventory, unsigned int& room, std::string& out) {
  const Types repeated = std::move(leftUnreported);
  leftUnreported.clear();
  for (const auto& [id, type] : repeated) Leave(id, type, out);
  FindNewsLocked(inventory, out);
  while (room > 0 && !pending.empty()) {
    const std::string id = std::move(pending.front());
    pending.pop_front();
    if (ReportObjectLocked(inventory, id, out)) --room;
  }
  if (reportedMissing || !reports.empty() || inventory.FindLocked(selection.Start()) != nullptr)
    return;
  reportedMissing = true;
  out += "<missingSet>";
  AppendObject(selection.StartType(), selection.Start(), out);
  out += "</missingSet>";
}

void Filter::Leave(const std::string& id, const std::string& type, std::string& out) {
  out += "<objectSet><kind>leave</kind>";
  AppendObject(type, id, out);
  out += "</objectSet>";
  left[id] = type;
}

void Filter::FindNewsLocked(const Inventory& inventory, std::string& out) {
  std::vector<std::string> changed;
  bool walkNeeded = !walked || !inventory.ChangedSinceLocked(since, changed);
  for (const std::string& id : changed) {
    const Object* object = inventory.FindLocked(id);
    if (object != nullptr && selection.IsWalkedSince(*object, since)) walkNeeded = true;
  }
  since = inventory.NowLocked();
  if (walkNeeded) return WalkLocked(inventory, out);
  for (std::string& id : changed) {
    const auto report = reports.find(id);
    if (report == reports.end()) continue;  // not selected, or among the pending ones already
    if (inventory.FindLocked(id) != nullptr) {
      pending.push_back(std::move(id));
    } else {
      Leave(id, report->second.type, out);
      reports.erase(report);
    }
  }
}

// Finds everything that is to be reported by looking at the whole selection.
void Filter::WalkLocked(const Inventory& inventory, std::string& out) {
  walked = true;
  ++walk;
  pending.clear();
  std::size_t met = 0;
  for (const Object* object : selection.SelectLocked(inventory)) {
    const auto report = reports.find(object->id);
    if (report != reports.end()) {
      report->second.walk = walk;
      ++met;
      if (object->changedAt <= report->second.at) continue;
    }
    pending.push_back(object->id);
  }
  if (met == reports.size()) return;
  for (auto it = reports.begin(); it != reports.end();) {
    if (it->second.walk == walk) {
      ++it;
      continue;
    }
    Leave(it->first, it->second.type, out);
    it = reports.erase(it);
  }
}

bool Filter::ReportObjectLocked(const Inventory& inventory, const std::string& id,
                                std::string& out) {
  const Object* object = inventory.FindLocked(id);
  const Selection::Paths* paths = object != nullptr ? selection.PathsOf(object->type) : nullptr;
  if (paths == nullptr) return false;
  Report& report = reports[id];
  const bool isNew = report.at == 0;
  const std::size_t start = out.size();
  out.append("<objectSet><kind>").append(isNew ? "enter" : "modify").append("</kind>");
  AppendObject(object->type, id, out);
  const std::size_t changes = out.size();
  for (const Property& property : object->properties) {
    if (property.changedAt <= report.at || paths->count(property.name) == 0) continue;
    AppendChange(inventory, *object, property, out);
  }
  report = {inventory.NowLocked(), object->type, walk};
  if (!isNew && out.size() == changes) {
    out.resize(start);
    return false;
  }
  out += "</objectSet>";
  return true;
}

}  // namespace sim
