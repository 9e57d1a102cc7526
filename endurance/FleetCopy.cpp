// SPDX-License-Identifier: MIT
#include "endurance/FleetCopy.h"

#include "fleet/Keys.h"

namespace endurance {

using kecpp::Change;
using kecpp::Kind;

FleetCopy::FleetCopy(const std::string& members)
    : lines(members), fleet({lines.Urls()}), follower(fleet.Follow()), thread([this] { Run(); }) {}

FleetCopy::~FleetCopy() {
  follower.Close();
  thread.join();
}

void FleetCopy::Run() {
  while (!follower.Closed()) {
    if (!follower.Wait(std::chrono::seconds(1))) continue;
    for (const kecpp::FleetChange& change : follower.Next()) Take(change);
  }
}

void FleetCopy::Take(const kecpp::FleetChange& change) {
  ++events;
  if (!change.kind) return;
  const Json object = change.type == Change::Type::removed ? Json() : Find(change);
  const std::string part = kecpp::fleet::ObjectPart(*change.kind, change.key);
  const std::lock_guard<std::mutex> lock(mutex);
  SiteContent& content = sites[change.site];
  if ((content.count(part) == 0) != (change.type == Change::Type::added)) {
    wrong += change.site + ": an event that cannot be, of " + part + '\n';
  }
  if (change.type == Change::Type::removed) {
    content.erase(part);
  } else {
    content[part] = object;  // null: it has gone since, and its removal comes
  }
}

Json FleetCopy::Find(const kecpp::FleetChange& change) const {
  const auto json = [](const auto& found) { return found ? ToJson(*found) : Json(); };
  switch (*change.kind) {
    case Kind::host:
      return json(fleet.FindHost(change.site, change.key));
    case Kind::machine:
      return json(fleet.FindMachine(change.site, change.key));
    case Kind::role:
      return json(fleet.FindRole(change.site, change.key));
    case Kind::privilege:
      return json(fleet.FindPrivilege(change.site, change.key));
    default:
      return json(fleet.FindIdentity(change.site, change.key));
  }
}

SiteContent FleetCopy::Of(const std::string& site) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = sites.find(site);
  return found == sites.end() ? SiteContent() : found->second;
}

std::string FleetCopy::Wrong() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return wrong;
}

}  // namespace endurance
