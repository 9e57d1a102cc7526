// SPDX-License-Identifier: MIT
#include "tools/agent/api/Row.h"

#include <vector>

namespace tools::agent::api {
namespace {

std::uint32_t Digest(std::string_view text) {
  const std::uint64_t hash = std::hash<std::string_view>{}(text);
  return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

// Of keys in any order.
std::uint32_t Digest(const std::vector<std::string>& keys) {
  std::uint32_t sum = 0;
  for (const std::string& key : keys) sum += Digest(key);
  return sum;
}

std::uint32_t Number(std::size_t count) {
  return static_cast<std::uint32_t>(count);
}

}  // namespace

Power PowerOf(kecpp::PowerState state) {
  switch (state) {
    case kecpp::PowerState::on:
      return Power::on;
    case kecpp::PowerState::off:
      return Power::off;
    case kecpp::PowerState::suspended:
      return Power::suspended;
    default:
      return Power::unknown;
  }
}

Health HealthOf(unsigned operationalStatus) {
  switch (operationalStatus) {
    case 2:
      return Health::ok;
    case 3:
      return Health::degraded;
    case 6:
      return Health::error;
    default:
      return Health::unknown;
  }
}

Texts::Texts(std::initializer_list<std::string_view> texts) {
  std::size_t size = texts.size();
  for (std::string_view text : texts) size += text.size();
  bytes.reserve(size);
  std::size_t count = 0;
  for (std::string_view text : texts) {
    bytes.append(text) += '\0';
    ends[count++] = Number(bytes.size());
  }
}

Row RowOf(const kecpp::Host& host) {
  Row row;
  row.texts = {host.name, host.vendor, host.model};
  row.numbers = {host.operationalStatus, Number(host.machines.size())};
  row.digests = {Digest(host.description), Digest(host.uuid), Digest(host.machines)};
  row.health = HealthOf(host.operationalStatus);
  return row;
}

Row RowOf(const kecpp::Machine& machine) {
  Row row;
  row.texts = {machine.name, machine.guestHostName, machine.guestIPAddress, machine.guestFullName};
  row.numbers = {machine.operationalStatus};
  row.digests = {Digest(machine.description), Digest(machine.uuid), Digest(machine.path),
                 Digest(machine.powerStateText)};
  row.power = PowerOf(machine.powerState);
  row.health = HealthOf(machine.operationalStatus);
  return row;
}

Row RowOf(const kecpp::Role& role) {
  Row row;
  row.texts = {role.name, role.caption, role.type};
  row.numbers = {Number(role.privileges.size()), Number(role.identities.size())};
  row.digests = {Digest(role.description), Digest(role.privileges), Digest(role.identities)};
  return row;
}

Row RowOf(const kecpp::Privilege& privilege) {
  Row row;
  row.texts = {privilege.name};
  row.numbers = {Number(privilege.roles.size())};
  row.digests = {Digest(privilege.roles)};
  return row;
}

Row RowOf(const kecpp::Identity& identity) {
  Row row;
  row.numbers = {Number(identity.roles.size())};
  row.digests = {Digest(identity.roles)};
  return row;
}

}  // namespace tools::agent::api
