// SPDX-License-Identifier: MIT
//
// Random changes to a plain model and to the daemon: after every one the caches equal the model.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "endtoend/LibraryAgent.h"
#include "endtoend/Simulator.h"

namespace endtoend {
namespace {

using Ids = std::set<std::string>;

// The inventory as it should be, kept with the simplest means: links are worked out when asked for.
struct Model {
  std::map<std::string, Json> hosts, machines;  // without links
  std::map<std::string, std::string> hostOf;    // by machine
  std::map<std::string, Json> roles;            // without members
  std::map<std::string, Ids> namedPrivileges;   // by role, known or not
  std::map<std::string, std::string> privileges;
  std::map<std::string, Ids> rolesOf;  // by identity, as granted

  Json Document() const {
    Json hostList = Json::array(), machineList = Json::array(), roleList = Json::array(),
         privilegeList = Json::array(), identityList = Json::array();
    for (const auto& [id, host] : hosts) {
      Ids on;
      for (const auto& [machine, where] : hostOf) {
        if (where == id) on.insert(machine);
      }
      hostList.push_back(host);
      hostList.back()["machines"] = on;
    }
    for (const auto& [id, machine] : machines) {
      machineList.push_back(machine);
      machineList.back()["host"] = hostOf.at(id);
    }
    for (const auto& [id, role] : roles) {
      Ids members, holders;
      for (const std::string& name : namedPrivileges.at(id)) {
        if (privileges.count(name) > 0) members.insert(name);
      }
      for (const auto& [identity, held] : rolesOf) {
        if (held.count(id) > 0) holders.insert(identity);
      }
      roleList.push_back(role);
      roleList.back()["privileges"] = members;
      roleList.back()["identities"] = holders;
    }
    for (const auto& [id, name] : privileges) {
      Ids in;
      for (const auto& [role, named] : namedPrivileges) {
        if (named.count(id) > 0) in.insert(role);
      }
      privilegeList.push_back({{"InstanceID", id}, {"ElementName", name}, {"roles", in}});
    }
    for (const auto& [identity, held] : rolesOf) {
      Ids known;
      for (const std::string& role : held) {
        if (roles.count(role) > 0) known.insert(role);
      }
      identityList.push_back({{"InstanceID", identity}, {"roles", known}});
    }
    return {{"hosts", hostList},
            {"machines", machineList},
            {"privileges", privilegeList},
            {"roles", roleList},
            {"identities", identityList}};
  }
};

class RandomChanges {
 public:
  RandomChanges(Simulator& daemon, unsigned int seed) : simulator(daemon), random(seed) {
    const Json start = simulator.Truth();
    for (const Json& host : start["hosts"]) model.hosts[host["Name"]] = host;
    for (const Json& machine : start["machines"]) {
      model.machines[machine["Name"]] = machine;
      model.hostOf[machine["Name"]] = machine["host"];
    }
    for (const Json& role : start["roles"]) {
      model.roles[role["Name"]] = role;
      model.namedPrivileges[role["Name"]] = role["privileges"].get<Ids>();
    }
    for (const Json& privilege : start["privileges"]) {
      model.privileges[privilege["InstanceID"]] = privilege["ElementName"];
    }
    for (const Json& identity : start["identities"]) {
      model.rolesOf[identity["InstanceID"]] = identity["roles"].get<Ids>();
    }
  }

  Json Expected() const { return model.Document(); }

  void Step() {
    switch (random() % 10) {
      case 0:
        return CreateMachine();
      case 1:
        return model.machines.size() > 2 ? RemoveMachine() : CreateMachine();
      case 2:
      case 3:
        return MoveMachine();
      case 4:
        return ChangeHosts();
      case 5:
        return SetRole();
      case 6:
        return SetPrivilege();
      case 7:
        return SetPermissions();
      default:
        return ChangeMachine();
    }
  }

 private:
  template <typename Map>
  std::string Any(const Map& map) {
    return std::next(map.begin(), static_cast<long>(random() % map.size()))->first;
  }
  std::string Mark() { return std::to_string(random() % 1000) + " &amp; \xc3\xa4"; }

  void CreateMachine() {
    const std::string host = Any(model.hosts), name = "new " + Mark();
    const std::string id =
        simulator.Control("machine", {{"do", "create"}, {"name", name}, {"host", host}})["id"];
    const Json truth = simulator.Truth();
    for (const Json& machine : truth["machines"]) {
      if (machine["Name"] == id) model.machines[id] = machine;
    }
    model.machines[id]["ElementName"] = name;
    model.hostOf[id] = host;
  }
  void RemoveMachine() {
    const std::string id = Any(model.machines);
    simulator.Control("machine", {{"do", "remove"}, {"id", id}});
    model.machines.erase(id);
    model.hostOf.erase(id);
  }
  void MoveMachine() {
    const std::string id = Any(model.machines), host = Any(model.hosts);
    simulator.Control("machine", {{"do", "move"}, {"id", id}, {"host", host}});
    model.hostOf[id] = host;
  }
  void ChangeMachine() {
    static const std::map<std::string, int> kStates{
        {"poweredOn", 2}, {"poweredOff", 10}, {"suspended", 15}, {"unheardOf", 0}};
    const std::string id = Any(model.machines);
    if (random() % 2 == 0) {
      const std::string state = Any(kStates);
      Set("machine", id, "runtime.powerState", state);
      model.machines[id]["PowerState"] = state;
      model.machines[id]["OperationalStatus"] = kStates.at(state);
    } else {
      const std::string name = random() % 5 == 0 ? "" : "renamed " + Mark();
      Set("machine", id, "name", name);
      model.machines[id]["ElementName"] = name;
    }
  }
  void ChangeHosts() {
    if (model.hosts.size() < 3) {
      const std::string id = simulator.Control("host", {{"do", "create"}, {"name", "h"}})["id"];
      const Json truth = simulator.Truth();
      for (const Json& host : truth["hosts"]) {
        if (host["Name"] == id) model.hosts[id] = host;
      }
      return;
    }
    const std::string gone = Any(model.hosts);
    std::string other = gone;
    while (other == gone) other = Any(model.hosts);
    for (auto& [machine, host] : model.hostOf) {
      if (host != gone) continue;
      simulator.Control("machine", {{"do", "move"}, {"id", machine}, {"host", other}});
      host = other;
    }
    simulator.Control("host", {{"do", "remove"}, {"id", gone}});
    model.hosts.erase(gone);
  }
  void SetRole() {
    const std::string id = std::to_string(random() % 6);
    if (random() % 3 == 0 && model.roles.count(id) > 0) {
      simulator.Control("role", {{"do", "remove"}, {"id", id}});
      model.roles.erase(id);
      model.namedPrivileges.erase(id);
      return;
    }
    Ids named;
    for (int i = 0; i < 4; ++i) named.insert("P." + std::to_string(random() % 6));
    const std::string name = "role " + Mark();
    const bool system = random() % 2 == 0;
    simulator.Control("role", {{"do", "set"},
                               {"id", id},
                               {"name", name},
                               {"label", "L"},
                               {"summary", "S"},
                               {"system", system},
                               {"privileges", named}});
    model.roles[id] = {{"Name", id},
                       {"ElementName", name},
                       {"Caption", "L"},
                       {"Description", "S"},
                       {"RoleType", system ? "SystemDefined" : "UserDefined"}};
    model.namedPrivileges[id] = named;
  }
  void SetPrivilege() {
    const std::string id = "P." + std::to_string(random() % 6);
    if (random() % 3 == 0 && model.privileges.count(id) > 0 && model.privileges.size() > 1) {
      simulator.Control("privilege", {{"do", "remove"}, {"id", id}});
      model.privileges.erase(id);
      return;
    }
    const std::string name = "may " + Mark();
    simulator.Control("privilege", {{"do", "set"}, {"id", id}, {"name", name}});
    model.privileges[id] = name;
  }
  void SetPermissions() {
    Json all = Json::array();
    model.rolesOf.clear();
    for (unsigned int i = 0, n = 1 + random() % 6; i < n; ++i) {
      const std::string who = "user" + std::to_string(random() % 4);
      const std::string role = std::to_string(random() % 6);
      const bool group = random() % 4 == 0;
      all.push_back(
          {{"principal", group ? "group-" + who : who}, {"roleId", role}, {"group", group}});
      if (!group) model.rolesOf[who].insert(role);
    }
    if (model.rolesOf.empty()) {
      all.push_back({{"principal", "ann"}, {"roleId", "1"}});
      model.rolesOf["ann"].insert("1");
    }
    simulator.Control("permissions", all);
    ChangeMachine();  // permissions are asked for again when something else has changed
  }
  void Set(const char* what, const std::string& id, const char* property,
           const std::string& value) {
    simulator.Control(what, {{"do", "set"}, {"id", id}, {"property", property}, {"value", value}});
  }

  Simulator& simulator;
  std::mt19937 random;
  Model model;
};

TEST(Model, TheCachesEqualThePlainModelAfterEveryChange) {
  const char* chosen = std::getenv("KECPP_MODEL_SEED");
  const unsigned int seed =
      chosen != nullptr ? static_cast<unsigned int>(std::atoi(chosen)) : std::random_device()();
  SCOPED_TRACE("repeat with KECPP_MODEL_SEED=" + std::to_string(seed));
  constexpr int kSteps = 2000;
  Simulator simulator({"--hosts", "3", "--machines", "8"});
  LibraryAgent agent(simulator.Config());
  RandomChanges changes(simulator, seed);
  for (int step = 0; step < kSteps; ++step) {
    changes.Step();
    const Json expected = changes.Expected();
    unsigned long long seen = 0;
    bool equal = agent.Read() == expected;
    while (!equal && agent.Sync().WaitForChange(seen, 20000)) equal = agent.Read() == expected;
    ASSERT_TRUE(equal) << "step " << step << ": " << Json::diff(agent.Read(), expected).dump(1);
  }
}

}  // namespace
}  // namespace endtoend
