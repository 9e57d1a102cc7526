// SPDX-License-Identifier: MIT
//
// Random changes to a plain model and to the daemon: after every one the caches equal the model,
// and the copies that change feeds keep equal the caches.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <random>
#include <set>
#include <string>

#include "simulator/driver/Simulator.h"
#include "support/FeedMirror.h"
#include "support/ReadCaches.h"
#include "support/Watches.h"

namespace endtoend {
namespace {

using driver::Json;
using driver::Simulator;
using Ids = std::set<std::string>;

// The inventory as it should be, kept with the simplest means: objects by key in lists by name. Of
// a link only one end knows, a machine of its host, a role of its privileges and an identity of its
// roles, be they there or not; the rest is worked out when asked for.
struct Model {
  explicit Model(const Json& start) {
    for (const auto& [name, objects] : start.items()) {
      lists[name] = Json::object();
      for (const Json& object : objects) {
        const std::string key = object.contains("Name") ? object["Name"] : object["InstanceID"];
        lists[name][key] = object;
      }
    }
  }

  Json Document() const {
    Json document = lists;
    for (auto& [id, host] : document["hosts"].items()) {
      host["machines"] = NamedBy("machines", "host", id);
    }
    for (auto& [id, role] : document["roles"].items()) {
      role["privileges"] = Known("privileges", role["privileges"]);
      role["identities"] = NamedBy("identities", "roles", id);
    }
    for (auto& [id, privilege] : document["privileges"].items()) {
      privilege["roles"] = NamedBy("roles", "privileges", id);
    }
    for (Json& identity : document["identities"]) {
      identity["roles"] = Known("roles", identity["roles"]);
    }
    for (Json& list : document) {
      Json objects = Json::array();
      for (const Json& object : list) objects.push_back(object);
      list = objects;
    }
    return document;
  }

  Json lists;

 private:
  // The keys of those objects of `list` whose `field` is `id` or holds it.
  Ids NamedBy(const char* list, const char* field, const std::string& id) const {
    Ids keys;
    for (const auto& [key, object] : lists[list].items()) {
      const Json& said = object[field];
      if (said == id || (said.is_array() && said.get<Ids>().count(id) > 0)) keys.insert(key);
    }
    return keys;
  }

  Ids Known(const char* list, const Json& ids) const {
    Ids known;
    for (const std::string id : ids) {
      if (lists[list].contains(id)) known.insert(id);
    }
    return known;
  }
};

class RandomChanges {
 public:
  RandomChanges(Simulator& daemon, unsigned int seed)
      : simulator(daemon), random(seed), model(simulator.Truth()) {}

  Json Expected() const { return model.Document(); }

  void Step() {
    using Change = void (RandomChanges::*)();
    static constexpr Change kChanges[] = {
        &RandomChanges::CreateMachine, &RandomChanges::RemoveMachine,
        &RandomChanges::MoveMachine,   &RandomChanges::MoveMachine,
        &RandomChanges::ChangeHosts,   &RandomChanges::SetRole,
        &RandomChanges::SetPrivilege,  &RandomChanges::SetPermissions,
        &RandomChanges::ChangeMachine, &RandomChanges::ChangeMachine};
    (this->*kChanges[random() % std::size(kChanges)])();
  }

 private:
  std::string Any(const Json& list) {
    return std::next(list.begin(), static_cast<long>(random() % list.size())).key();
  }
  std::string Mark() { return std::to_string(random() % 1000) + " &amp; \xc3\xa4"; }

  Json Order(const char* kind, const char* what, const std::string& id, Json order = {}) {
    order["do"] = what;
    if (!id.empty()) order["id"] = id;
    return simulator.Control(kind, order);
  }
  // What nobody has said of the new object, the daemon has made up.
  Json& Create(const char* kind, Json& list, const char* listName, const Json& order) {
    const std::string id = Order(kind, "create", "", order)["id"];
    const Json truth = simulator.Truth()[listName];
    for (const Json& object : truth) {
      if (object["Name"] == id) list[id] = object;
    }
    return list[id];
  }

  void CreateMachine() {
    const std::string host = Any(hosts), name = "new " + Mark();
    Json& made = Create("machine", machines, "machines", {{"name", name}, {"host", host}});
    made["ElementName"] = name;
    made["host"] = host;
  }
  void RemoveMachine() {
    if (machines.size() <= 2) return CreateMachine();
    const std::string id = Any(machines);
    Order("machine", "remove", id);
    machines.erase(id);
  }
  void MoveMachine() { Move(Any(machines), Any(hosts)); }
  void Move(const std::string& id, const std::string& host) {
    Order("machine", "move", id, {{"host", host}});
    machines[id]["host"] = host;
  }
  void ChangeMachine() {
    static const Json kStates = {
        {"poweredOn", 2}, {"poweredOff", 10}, {"suspended", 15}, {"unheardOf", 0}};
    const std::string id = Any(machines);
    if (random() % 2 == 0) {
      const std::string state = Any(kStates);
      simulator.SetMachine(id, "runtime.powerState", state);
      machines[id]["PowerState"] = state;
      machines[id]["OperationalStatus"] = kStates[state];
    } else {
      const std::string name = random() % 5 == 0 ? "" : "renamed " + Mark();
      simulator.SetMachine(id, "name", name);
      machines[id]["ElementName"] = name;
    }
  }
  void ChangeHosts() {
    if (hosts.size() < 3) {
      Create("host", hosts, "hosts", {{"name", "h"}});
      return;
    }
    const std::string gone = Any(hosts);
    std::string other = gone;
    while (other == gone) other = Any(hosts);
    for (const auto& [id, machine] : machines.items()) {
      if (machine["host"] == gone) Move(id, other);
    }
    Order("host", "remove", gone);
    hosts.erase(gone);
  }
  void SetRole() {
    const std::string id = std::to_string(random() % 6);
    if (random() % 3 == 0 && roles.contains(id)) {
      Order("role", "remove", id);
      roles.erase(id);
      return;
    }
    Ids named;
    for (int i = 0; i < 4; ++i) named.insert("P." + std::to_string(random() % 6));
    const std::string name = "role " + Mark();
    const bool system = random() % 2 == 0;
    Order("role", "set", id,
          {{"name", name},
           {"label", "L"},
           {"summary", "S"},
           {"system", system},
           {"privileges", named}});
    roles[id] = {{"Name", id},          {"ElementName", name},
                 {"Caption", "L"},      {"Description", "S"},
                 {"privileges", named}, {"RoleType", system ? "SystemDefined" : "UserDefined"}};
  }
  void SetPrivilege() {
    const std::string id = "P." + std::to_string(random() % 6);
    if (random() % 3 == 0 && privileges.contains(id) && privileges.size() > 1) {
      Order("privilege", "remove", id);
      privileges.erase(id);
      return;
    }
    const std::string name = "may " + Mark();
    Order("privilege", "set", id, {{"name", name}});
    privileges[id] = {{"InstanceID", id}, {"ElementName", name}};
  }
  void SetPermissions() {
    Json all = Json::array();
    identities.clear();
    const auto grant = [&](const std::string& who, const std::string& role, bool group) {
      const std::string principal = group ? "group-" + who : who;
      all.push_back({{"principal", principal}, {"roleId", role}, {"group", group}});
      if (group) return;
      identities[who]["InstanceID"] = who;
      identities[who]["roles"].push_back(role);
    };
    for (unsigned int i = 0, n = 1 + random() % 6; i < n; ++i) {
      const std::string who = "user" + std::to_string(random() % 4);
      grant(who, std::to_string(random() % 6), random() % 4 == 0);
    }
    if (identities.empty()) grant("ann", "1", false);
    simulator.Control("permissions", all);
    ChangeMachine();  // permissions are asked for again when something else has changed
  }

  Simulator& simulator;
  std::mt19937 random;
  Model model;
  Json& hosts = model.lists["hosts"];
  Json& machines = model.lists["machines"];
  Json& roles = model.lists["roles"];
  Json& privileges = model.lists["privileges"];
  Json& identities = model.lists["identities"];
};

TEST(Model, TheCachesEqualThePlainModelAfterEveryChange) {
  const char* chosen = std::getenv("KECPP_MODEL_SEED");
  const unsigned int seed =
      chosen != nullptr ? static_cast<unsigned int>(std::atoi(chosen)) : std::random_device()();
  SCOPED_TRACE("repeat with KECPP_MODEL_SEED=" + std::to_string(seed));
  constexpr int kSteps = 2000;
  Simulator simulator({"--hosts", "3", "--machines", "8"});
  KELib::Logging::GetDefaultLogger()->SetLevelByName("error");
  KE::Service::KEServiceInstManager& manager = *KE::Service::GetServiceManagerInstance();
  KELib::KEString config(simulator.Config().c_str());
  KE::Service::KEServiceInst* agent =
      manager.GetServiceInstance(config, KE::Service::DEFAULT_CONFIG_CONTENT);
  ASSERT_NE(agent, nullptr);
  KE::Service::KEDataSync& sync = *agent->GetSession()->GetDataSync();
  WatchSystems(*agent, sync);
  const std::unique_ptr<KELib::KEWaiter> filled(KELib::CreateKEWaiter());
  WatchAuthorization(*agent, sync, filled.get());
  ASSERT_TRUE(filled->Wait(20000));
  const auto caches = [&] { return ReadCaches(*sync.GetCache()); };
  RandomChanges changes(simulator, seed);
  std::optional<FeedMirror> prompt(std::in_place, sync), slow(std::in_place, sync);
  for (int step = 0; step < kSteps; ++step) {
    changes.Step();
    const Json expected = changes.Expected();
    unsigned long long seen = 0;
    bool equal = caches() == expected;
    while (!equal && sync.WaitForChange(seen, 20000)) equal = caches() == expected;
    ASSERT_TRUE(equal) << "step " << step << ": " << Json::diff(caches(), expected).dump(1);
    const std::string dump = DumpCaches(*sync.GetCache());
    ASSERT_EQ(prompt->Dump(), dump) << "step " << step;
    if (step % 100 != 99) continue;
    ASSERT_EQ(slow->Dump(), dump) << "step " << step;
    slow.emplace(sync);
  }
  prompt.reset();
  slow.reset();
  manager.FreeServiceInstance(agent);
  KE::Service::FreeServiceManagerInstance();
}

}  // namespace
}  // namespace endtoend
