// SPDX-License-Identifier: MIT
#include "tools/agent/api/Items.h"

namespace tools::agent::api {
namespace {

Json HostItem(const std::string& key, const Row& row, const HostInfo& machines) {
  return {{"key", key},
          {"name", row.texts.At(0)},
          {"vendor", row.texts.At(1)},
          {"model", row.texts.At(2)},
          {"status", HEALTH_NAMES[static_cast<std::size_t>(row.health)]},
          {"machines", row.numbers[1]},
          {"power", NumbersOf(POWER_NAMES, machines.byPower)}};
}

Json HostLink(const HostTable::value_type* host) {
  if (!host) return nullptr;
  return {{"key", host->first}, {"name", host->second.name}};
}

Json MachineItem(const std::string& key, const Row& row) {
  return {{"key", key},
          {"name", row.texts.At(0)},
          {"power", POWER_NAMES[static_cast<std::size_t>(row.power)]},
          {"status", HEALTH_NAMES[static_cast<std::size_t>(row.health)]},
          {"host", HostLink(row.host)},
          {"system", row.texts.At(3)},
          {"address", row.texts.At(2)},
          {"hostName", row.texts.At(1)}};
}

Json RoleItem(const std::string& key, const Row& row) {
  return {{"key", key},
          {"name", row.texts.At(0)},
          {"caption", row.texts.At(1)},
          {"type", row.texts.At(2)},
          {"privileges", row.numbers[0]},
          {"identities", row.numbers[1]}};
}

}  // namespace

Json NumbersOf(const std::array<const char*, 4>& names, const std::array<std::size_t, 4>& numbers) {
  Json json = Json::object();
  for (std::size_t i = 0; i < names.size(); ++i) json[names[i]] = numbers[i];
  return json;
}

Json ItemOf(kecpp::Kind kind, const std::string& key, const Row& row, const HostInfo* host) {
  switch (kind) {
    case kecpp::Kind::host:
      return HostItem(key, row, host ? *host : HostInfo());
    case kecpp::Kind::machine:
      return MachineItem(key, row);
    case kecpp::Kind::role:
      return RoleItem(key, row);
    case kecpp::Kind::privilege:
      return {{"key", key}, {"name", row.texts.At(0)}, {"roles", row.numbers[0]}};
    default:
      return {{"key", key}, {"roles", row.numbers[0]}};
  }
}

}  // namespace tools::agent::api
