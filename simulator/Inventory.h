// SPDX-License-Identifier: MIT
//
// The simulated host's objects, with a version for every change: folders, hosts, machines, the
// authorization manager and tasks. A "Folder" at the root lists a folder for each kind of object
// (Kinds.h) as its "childEntity". Values are XML texts, as they go over the wire.
//
// Thread safety: every operation takes the inventory's mutex, on which waits for changes sleep as
// well (Mutex, Changed); operations named ...Locked require it.
#ifndef KECPP_SIMULATOR_INVENTORY_H
#define KECPP_SIMULATOR_INVENTORY_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "simulator/Authorization.h"
#include "simulator/Kinds.h"
#include "simulator/Object.h"

namespace sim {

class Inventory {
 public:
  // `counts`: how many objects there are of the first, the second ... of Kinds().
  Inventory(const std::vector<unsigned int>& counts, std::uint64_t seed);

  static constexpr const char* kRoot = "group-d1";
  static constexpr const char* kHosts = "group-h1";
  static constexpr const char* kMachines = "group-v1";
  static constexpr const char* kAuthorization = "authmgr-1";

  std::mutex& Mutex() { return mutex; }
  std::condition_variable& Changed() { return changed; }  // notified after every change

  Version NowLocked() const { return version; }
  // Null when there is none. The object stays where it is until it is removed.
  const Object* FindLocked(const std::string& id) const;
  // Identifiers that changed or went after `since`, each once; false when the journal does not
  // reach back so far. Linear in the number of changes.
  bool ChangedSinceLocked(Version since, std::vector<std::string>& ids) const;
  // Appends the content of the "val" element.
  void AppendValueLocked(const Object& object, const Property& property, std::string& out) const;
  const Authorization& AuthorizationLocked() const { return authorization; }

  // Sets a property to an XML text; false for an unknown object or property, or one that lists
  // members.
  bool Set(const std::string& id, const std::string& property, const std::string& xml);
  std::string CreateMachine(const std::string& name, const std::string& host);
  bool RemoveMachine(const std::string& id);
  bool MoveMachine(const std::string& id, const std::string& host);
  std::string CreateHost(const std::string& name);
  // Its machines move to another host; false for the last host.
  bool RemoveHost(const std::string& id);
  // One member of a folder, chosen by a random number; empty when it has none.
  std::string Pick(const char* folder, std::uint64_t random);
  std::size_t Count(const char* folder);

  // Changes roles, privileges or permissions; what `edit` answers is returned.
  bool EditAuthorization(const std::function<bool(Authorization&)>& edit);
  std::string PermissionItems();

  std::string CreateTask();  // its "info.state" is "queued"
  void RemoveTask(const std::string& id);

 private:
  Object* EditLocked(const std::string& id);  // as FindLocked, to be changed
  void TouchLocked(Object& object, Property& property);
  void NoteLocked(const std::string& id);
  bool SetLocked(const std::string& id, const std::string& property, const std::string& xml);
  void AddMemberLocked(const std::string& container, const std::string& id);
  void DropMemberLocked(const std::string& container, const std::string& id);
  void AddObjectLocked(const std::string& id, const char* type, std::vector<Property> properties);
  std::string AddLocked(const Kind& kind, const std::string& name, const std::string& host);
  void MakeUpLocked(const Kind& kind, unsigned int count);
  void RemoveLocked(const std::string& folder, const std::string& id);
  void MoveLocked(const std::string& id, const std::string& host);
  bool IsLocked(const std::string& id, const char* type) const;
  void ListAuthorizationLocked();

  std::mutex mutex;
  std::condition_variable changed;
  Version version = 1;
  std::unordered_map<std::string, Object> objects;
  Authorization authorization;
  std::deque<std::pair<Version, std::string>> journal;
  Version journalStart = 1;  // changes after this one are in the journal
  const std::uint64_t seed;
  std::map<const Kind*, unsigned int> made;  // so far, those that have gone included
  unsigned int nextTask = 1;
};

}  // namespace sim

#endif
