// SPDX-License-Identifier: MIT
//
// What an agent knows that lives of a Follower alone: values of its own, each read again when a
// change names it. At a rest they equal the inventory and the daemon's truth.
//
// Thread safety: none.
#ifndef KECPP_ENDURANCE_REPLAY_H
#define KECPP_ENDURANCE_REPLAY_H

#include <kecpp/inventory.h>

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace endurance {

using Json = nlohmann::json;

// The objects as the simulated daemon and kecpp-inventory write them.
inline Json ToJson(const kecpp::Host& host) {
  return {{"Name", host.key},
          {"ElementName", host.name},
          {"Description", host.description},
          {"UUID", host.uuid},
          {"Vendor", host.vendor},
          {"Model", host.model},
          {"OperationalStatus", host.operationalStatus},
          {"machines", host.machines}};
}
inline Json ToJson(const kecpp::Machine& machine) {
  return {{"Name", machine.key},
          {"ElementName", machine.name},
          {"Description", machine.description},
          {"UUID", machine.uuid},
          {"GuestFullName", machine.guestFullName},
          {"GuestHostName", machine.guestHostName},
          {"GuestIPAddress", machine.guestIPAddress},
          {"VMPathName", machine.path},
          {"PowerState", machine.powerStateText},
          {"OperationalStatus", machine.operationalStatus},
          {"host", machine.host ? Json(*machine.host) : Json(nullptr)}};
}
inline Json ToJson(const kecpp::Role& role) {
  return {{"Name", role.key},
          {"ElementName", role.name},
          {"Caption", role.caption},
          {"Description", role.description},
          {"RoleType", role.type},
          {"privileges", role.privileges},
          {"identities", role.identities}};
}
inline Json ToJson(const kecpp::Privilege& privilege) {
  return {
      {"InstanceID", privilege.key}, {"ElementName", privilege.name}, {"roles", privilege.roles}};
}
inline Json ToJson(const kecpp::Identity& identity) {
  return {{"InstanceID", identity.key}, {"roles", identity.roles}};
}

// The daemon's truth, whose texts are XML text, with decoded ones.
inline Json Decoded(Json value) {
  if (value.is_string()) return kecpp::Decode(value.get<std::string>());
  if (!value.is_structured()) return value;
  for (Json& part : value) part = Decoded(part);
  return value;
}

class Replay {
 public:
  explicit Replay(const kecpp::Inventory& source) : inventory(source) {}

  void Apply(const kecpp::Change& change) {
    if (change.kind == kecpp::Kind::machine) namedMachines.insert(change.key);
    switch (change.kind) {
      case kecpp::Kind::host:
        return Apply(change, std::get<Objects<kecpp::Host>>(objects));
      case kecpp::Kind::machine:
        return Apply(change, std::get<Objects<kecpp::Machine>>(objects));
      case kecpp::Kind::role:
        return Apply(change, std::get<Objects<kecpp::Role>>(objects));
      case kecpp::Kind::privilege:
        return Apply(change, std::get<Objects<kecpp::Privilege>>(objects));
      case kecpp::Kind::identity:
        return Apply(change, std::get<Objects<kecpp::Identity>>(objects));
    }
  }

  // Applies all that the follower has; how many changes that were.
  std::size_t TakeAll(kecpp::Follower& follower) {
    std::size_t taken = 0;
    for (auto changes = follower.Next(7); !changes.empty(); changes = follower.Next(7)) {
      for (const kecpp::Change& change : changes) Apply(change);
      taken += changes.size();
    }
    return taken;
  }

  // Compares with what Inventory::All gives now.
  bool EqualsInventory() const {
    return std::apply([this](const auto&... kinds) { return (EqualsAll(kinds) && ...); }, objects);
  }

  // The whole, in the form of the daemon's truth.
  Json Document() const {
    return {{"hosts", List<kecpp::Host>()},
            {"machines", List<kecpp::Machine>()},
            {"roles", List<kecpp::Role>()},
            {"privileges", List<kecpp::Privilege>()},
            {"identities", List<kecpp::Identity>()}};
  }

  // Changes that did not fit what was given before: something added twice, or never.
  const std::string& Wrong() const { return wrong; }

  std::set<std::string> namedMachines;  // by changes, since the owner cleared it

 private:
  template <class Object>  // one that left after its change was given has no value
  using Objects = std::map<std::string, std::optional<Object>>;

  template <class Object>
  void Apply(const kecpp::Change& change, Objects<Object>& known) {
    using Type = kecpp::Change::Type;
    if ((known.count(change.key) == 0) != (change.type == Type::added)) {
      wrong += std::string(NameOf(change.kind)) + ' ' + change.key + " does not fit\n";
    }
    if (change.type == Type::removed) {
      known.erase(change.key);
    } else {
      known[change.key] = inventory.Find<Object>(change.key);
    }
  }

  template <class Object>
  bool EqualsAll(const Objects<Object>& known) const {
    const std::vector<Object> all = inventory.All<Object>();
    return std::equal(
        known.begin(), known.end(), all.begin(), all.end(),
        [](const auto& entry, const Object& object) { return entry.second == object; });
  }

  template <class Object>
  Json List() const {
    Json list = Json::array();
    for (const auto& [key, object] : std::get<Objects<Object>>(objects)) {
      list.push_back(object ? ToJson(*object) : Json(nullptr));
    }
    return list;
  }

  const kecpp::Inventory& inventory;
  std::tuple<Objects<kecpp::Host>, Objects<kecpp::Machine>, Objects<kecpp::Role>,
             Objects<kecpp::Privilege>, Objects<kecpp::Identity>>
      objects;
  std::string wrong;
};

}  // namespace endurance

#endif
