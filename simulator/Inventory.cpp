// SPDX-License-Identifier: MIT
#include "simulator/Inventory.h"

#include <algorithm>
#include <unordered_set>

#include "simulator/MadeUp.h"

namespace sim {

namespace {

constexpr std::size_t kJournalLimit = 200000;

const char* const kHost = "HostSystem";
const char* const kMachine = "VirtualMachine";
const char* const kFolder = "Folder";

std::vector<Property> FolderProperties(const char* name) {
  return {TextProperty("name", name), MembersProperty("childEntity")};
}

}  // namespace

Inventory::Inventory(const std::vector<unsigned int>& counts, std::uint64_t seedValue)
    : authorization(MadeUpAuthorization()), seed(seedValue) {
  AddObjectLocked(kRoot, kFolder, FolderProperties("root"));
  for (const Kind& kind : Kinds()) {
    AddObjectLocked(kind.folder, kFolder, FolderProperties(kind.plural));
    AddMemberLocked(kRoot, kind.folder);
  }
  for (std::size_t i = 0; i < counts.size(); ++i) MakeUpLocked(Kinds().at(i), counts[i]);
  AddObjectLocked(kAuthorization, "AuthorizationManager",
                  {{"privilegeList", "", " xsi:type=\"ArrayOfAuthorizationPrivilege\"", false, 0},
                   {"roleList", "", " xsi:type=\"ArrayOfAuthorizationRole\"", false, 0}});
  ListAuthorizationLocked();
  journal.clear();
  journalStart = version;
}

void Inventory::NoteLocked(const std::string& id) {
  journal.emplace_back(++version, id);
  if (journal.size() <= kJournalLimit) return;
  journalStart = journal.front().first;
  journal.pop_front();
}

void Inventory::TouchLocked(Object& object, Property& property) {
  NoteLocked(object.id);
  property.changedAt = object.changedAt = version;
}

bool Inventory::ChangedSinceLocked(Version since, std::vector<std::string>& ids) const {
  if (since < journalStart) return false;
  std::unordered_set<std::string> seen;
  for (auto it = journal.rbegin(); it != journal.rend() && it->first > since; ++it) {
    if (seen.insert(it->second).second) ids.push_back(it->second);
  }
  return true;
}

const Object* Inventory::FindLocked(const std::string& id) const {
  const auto found = objects.find(id);
  return found != objects.end() ? &found->second : nullptr;
}

Object* Inventory::EditLocked(const std::string& id) {
  const auto found = objects.find(id);
  return found != objects.end() ? &found->second : nullptr;
}

bool Inventory::IsLocked(const std::string& id, const char* type) const {
  const Object* object = FindLocked(id);
  return object != nullptr && object->type == type;
}

void Inventory::AppendValueLocked(const Object& object, const Property& property,
                                  std::string& out) const {
  if (!property.listsMembers) {
    out += property.xml;
    return;
  }
  for (const Object* member : object.members) {
    out.append("<ManagedObjectReference type=\"").append(member->type).append("\">");
    out.append(member->id).append("</ManagedObjectReference>");
  }
}

bool Inventory::SetLocked(const std::string& id, const std::string& name, const std::string& xml) {
  Object* object = EditLocked(id);
  Property* property = object != nullptr ? object->Find(name) : nullptr;
  if (property == nullptr || property->listsMembers) return false;
  property->xml = xml;
  TouchLocked(*object, *property);
  return true;
}

bool Inventory::Set(const std::string& id, const std::string& property, const std::string& xml) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (property == "runtime.host") {  // the hosts' lists change with it
    if (!IsLocked(id, kMachine) || !IsLocked(xml, kHost)) return false;
    MoveLocked(id, xml);
  } else if (!SetLocked(id, property, xml)) {
    return false;
  }
  changed.notify_all();
  return true;
}

void Inventory::AddObjectLocked(const std::string& id, const char* type,
                                std::vector<Property> properties) {
  NoteLocked(id);
  for (Property& property : properties) property.changedAt = version;
  objects[id] = {id, type, std::move(properties), {}, version};
}

// A container lists its members in its last property.
void Inventory::AddMemberLocked(const std::string& container, const std::string& id) {
  Object* object = EditLocked(container);
  if (object == nullptr) return;
  object->members.push_back(FindLocked(id));
  TouchLocked(*object, object->properties.back());
}

void Inventory::DropMemberLocked(const std::string& container, const std::string& id) {
  Object* object = EditLocked(container);
  if (object == nullptr) return;
  auto& members = object->members;
  members.erase(std::remove(members.begin(), members.end(), FindLocked(id)), members.end());
  TouchLocked(*object, object->properties.back());
}

std::string Inventory::AddLocked(const Kind& kind, const std::string& name,
                                 const std::string& host) {
  const unsigned int number = ++made[&kind];
  std::string id = kind.stem + ("-" + std::to_string(number));
  AddObjectLocked(id, kind.type, kind.makeUp({id, name, host, number, seed}));
  AddMemberLocked(host, id);
  AddMemberLocked(kind.folder, id);
  return id;
}

// The hosts take turns.
void Inventory::MakeUpLocked(const Kind& kind, unsigned int count) {
  const std::vector<const Object*> hosts = FindLocked(kHosts)->members;
  for (unsigned int i = 0; i < count; ++i) {
    const bool hasHost = kind.isOnHost && !hosts.empty();
    AddLocked(kind, MadeUpName(kind.stem, i + 1), hasHost ? hosts[i % hosts.size()]->id : "");
  }
}

std::string Inventory::CreateMachine(const std::string& name, const std::string& host) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!IsLocked(host, kHost)) return "";
  std::string id = AddLocked(KindOf(kMachine), name, host);
  changed.notify_all();
  return id;
}

std::string Inventory::CreateHost(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::string id = AddLocked(KindOf(kHost), name, "");
  changed.notify_all();
  return id;
}

void Inventory::RemoveLocked(const std::string& folder, const std::string& id) {
  NoteLocked(id);
  DropMemberLocked(folder, id);
  objects.erase(id);
}

bool Inventory::RemoveMachine(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!IsLocked(id, kMachine)) return false;
  DropMemberLocked(FindLocked(id)->Text("runtime.host"), id);
  RemoveLocked(kMachines, id);
  changed.notify_all();
  return true;
}

void Inventory::MoveLocked(const std::string& id, const std::string& host) {
  const std::string from = FindLocked(id)->Text("runtime.host");
  if (from == host) return;
  DropMemberLocked(from, id);
  SetLocked(id, "runtime.host", host);
  AddMemberLocked(host, id);
}

bool Inventory::MoveMachine(const std::string& id, const std::string& host) {
  return Set(id, "runtime.host", host);
}

bool Inventory::RemoveHost(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::vector<const Object*>& hosts = FindLocked(kHosts)->members;
  if (!IsLocked(id, kHost) || hosts.size() < 2) return false;
  const std::string other = hosts[hosts[0]->id == id ? 1 : 0]->id;
  const std::vector<const Object*> machines = FindLocked(id)->members;
  for (const Object* machine : machines) MoveLocked(machine->id, other);
  RemoveLocked(kHosts, id);
  changed.notify_all();
  return true;
}

std::string Inventory::Pick(const char* folder, std::uint64_t random) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::vector<const Object*>& members = FindLocked(folder)->members;
  return members.empty() ? "" : members[random % members.size()]->id;
}

std::size_t Inventory::Count(const char* folder) {
  const std::lock_guard<std::mutex> lock(mutex);
  return FindLocked(folder)->members.size();
}

void Inventory::ListAuthorizationLocked() {
  const std::pair<const char*, std::string> lists[] = {
      {"privilegeList", authorization.PrivilegeItems()}, {"roleList", authorization.RoleItems()}};
  for (const auto& [name, xml] : lists) {
    if (FindLocked(kAuthorization)->Text(name) != xml) SetLocked(kAuthorization, name, xml);
  }
}

bool Inventory::EditAuthorization(const std::function<bool(Authorization&)>& edit) {
  const std::lock_guard<std::mutex> lock(mutex);
  const bool done = edit(authorization);
  ListAuthorizationLocked();
  changed.notify_all();
  return done;
}

std::string Inventory::PermissionItems() {
  const std::lock_guard<std::mutex> lock(mutex);
  return authorization.PermissionItems();
}

std::string Inventory::CreateTask() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::string id = "task-" + std::to_string(nextTask++);
  AddObjectLocked(id, "Task", {{"info.state", "queued", " xsi:type=\"TaskInfoState\"", false, 0}});
  changed.notify_all();
  return id;
}

void Inventory::RemoveTask(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!IsLocked(id, "Task")) return;
  NoteLocked(id);
  objects.erase(id);
  changed.notify_all();
}

}  // namespace sim
