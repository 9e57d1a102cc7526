// SPDX-License-Identifier: MIT
//
// The simulated host's objects, with a version for every change: folders, hosts, machines, the
// authorization manager and tasks. Values are XML texts, as they go over the wire.
//
// Thread safety: every operation takes the inventory's mutex, which is also the one that waits for
// changes use (Mutex, Changed); operations named ...Locked require it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

namespace sim {

using Version = std::uint64_t;

struct Property {
  std::string name;
  std::string xml;         // what stands inside the "val" element
  std::string attributes;  // of the "val" element, with a leading blank
  Version changedAt = 0;
};

struct Object {
  std::string type;
  std::vector<Property> properties;
  std::vector<std::string> children;  // identifiers, in order, of a folder
  Version changedAt = 0;              // of any property or of the children

  Property* Find(const std::string& name);
  const std::string& Text(const std::string& name);
};

struct Role {
  std::string id, name, label, summary;
  bool system = false;
  std::vector<std::string> privileges;
};

struct Permission {
  std::string principal, roleId;
  bool group = false;
};

class Inventory {
 public:
  Inventory(unsigned int hosts, unsigned int machines, std::uint64_t seed);

  static constexpr const char* kRoot = "group-d1";
  static constexpr const char* kHosts = "group-h1";
  static constexpr const char* kMachines = "group-v1";
  static constexpr const char* kAuthorization = "authmgr-1";

  std::mutex& Mutex() { return mutex; }
  std::condition_variable& Changed() { return changed; }

  // --- under the mutex ---------------------------------------------------------------------------

  Version NowLocked() const { return version; }
  Object* FindLocked(const std::string& id);

  // Identifiers that changed after `since`, each once; false when the journal does not reach back.
  bool ChangedSinceLocked(Version since, std::vector<std::string>& ids) const;

  // --- changes: each takes the mutex and wakes the waits -----------------------------------------

  // Sets a property to an XML text; false for an unknown object or property.
  bool Set(const std::string& id, const std::string& property, const std::string& xml);
  std::string CreateMachine(const std::string& name, const std::string& host);
  bool RemoveMachine(const std::string& id);
  bool MoveMachine(const std::string& id, const std::string& host);
  std::string CreateHost(const std::string& name);
  bool RemoveHost(const std::string& id);  // its machines move to another host

  void SetRole(const Role& role);
  bool RemoveRole(const std::string& id);
  void SetPrivilege(const std::string& id, const std::string& name);
  bool RemovePrivilege(const std::string& id);
  void SetPermissions(const std::vector<Permission>& all);

  std::string StartTask();  // its "info.state" is "queued"
  void RemoveTask(const std::string& id);

  std::vector<std::string> Ids(const std::string& type);
  std::string PermissionsXml();

  // The truth in the form that the inventory tool prints.
  nlohmann::json Truth();

 private:
  void TouchLocked(const std::string& id, Object& object);
  bool SetLocked(const std::string& id, const std::string& property, const std::string& xml);
  std::string AddMachineLocked(const std::string& name, const std::string& host);
  std::string AddHostLocked(const std::string& name);
  void ListMachinesLocked(const std::string& host);
  void WriteAuthorizationLocked();
  void Done();

  std::mutex mutex;
  std::condition_variable changed;
  Version version = 1;
  std::unordered_map<std::string, Object> objects;
  std::map<std::string, std::vector<std::string>> machinesOf;  // by host
  std::map<std::string, std::string> privileges;               // name by identifier
  std::map<std::string, Role> roles;
  std::vector<Permission> permissions;
  std::deque<std::pair<Version, std::string>> journal;
  Version journalStart = 1;
  std::uint64_t seed;
  unsigned int nextMachine = 1, nextHost = 1, nextTask = 1;
};

}  // namespace sim
