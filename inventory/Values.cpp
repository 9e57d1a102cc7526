// SPDX-License-Identifier: MIT
#include "inventory/Values.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace kecpp {
namespace {

using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using Slots = std::unique_ptr<KELib::KEVector<KEAssocStubBase*>>;

std::string_view Text(const KEString& text) {
  return text.Cstr();
}

// Calls `use` with the stub at the end `end` of each link in `slots`.
template <class Link, class Partner, class Use>
void ForEachPartner(const Slots& slots, Partner* Link::*end, Use use) {
  if (!slots) return;
  for (unsigned int i = 0; i < slots->Count(); ++i) {
    auto* link = dynamic_cast<Link*>(slots->Get(i));  // null where a partner was deleted
    if (link != nullptr && link->*end != nullptr) use(*(link->*end));
  }
}

template <class Link, class Partner, class Owner>
void FillKeys(std::vector<std::string_view>& keys, const Slots& slots, Partner* Link::*end,
              KEString Owner::*key) {
  keys.clear();
  ForEachPartner(slots, end, [&](const Partner& partner) { keys.push_back(Text(partner.*key)); });
}

std::vector<std::string> DecodeAll(const std::vector<std::string_view>& keys) {
  std::vector<std::string> decoded;
  decoded.reserve(keys.size());
  for (const std::string_view key : keys) decoded.push_back(Decode(key));
  std::sort(decoded.begin(), decoded.end());
  return decoded;
}

PowerState PowerStateOf(std::string_view word) {
  if (word == "poweredOn") return PowerState::on;
  if (word == "poweredOff") return PowerState::off;
  return word == "suspended" ? PowerState::suspended : PowerState::unknown;
}

using KE::Stub::ZORBEL_HostedDependency;
using KE::Stub::Zorbel_IdentityMemberOfCollection;
using KE::Stub::Zorbel_PrivilegeMemberOfCollection;

}  // namespace

const char* NameOf(Kind kind) {
  constexpr const char* kNames[] = {"host", "machine", "role", "privilege", "identity"};
  return kNames[static_cast<int>(kind)];
}

const char* CacheOf(Kind kind) {
  switch (kind) {
    case Kind::host:
      return KE::Stub::ZORBEL_ORXComputerSystemClass;
    case Kind::machine:
      return KE::Stub::ZORBEL_VMComputerSystemClass;
    case Kind::role:
      return KE::Stub::Zorbel_RoleClass;
    case Kind::privilege:
      return KE::Stub::Zorbel_PrivilegeClass;
    default:
      return KE::Stub::Zorbel_IdentityClass;
  }
}

bool FindKind(const char* cacheClass, Kind& kind) {
  for (const Kind candidate : kKinds) {
    if (std::strcmp(CacheOf(candidate), cacheClass) != 0) continue;
    kind = candidate;
    return true;
  }
  return false;
}

void Fill(HostView& view, const KE::Stub::ZORBEL_ORXComputerSystem& stub) {
  view.key = Text(stub.Name);
  view.name = Text(stub.ElementName);
  view.description = Text(stub.Description);
  view.uuid = Text(stub.UUID);
  view.vendor = Text(stub.Vendor);
  view.model = Text(stub.Model);
  view.operationalStatus = stub.OperationalStatus;
  FillKeys(view.machines, stub.HostedDependencies, &ZORBEL_HostedDependency::Dependent,
           &KE::Stub::ZORBEL_VMComputerSystem::Name);
}

void Fill(MachineView& view, const KE::Stub::ZORBEL_VMComputerSystem& stub) {
  view.key = Text(stub.Name);
  view.name = Text(stub.ElementName);
  view.description = Text(stub.Description);
  view.uuid = Text(stub.UUID);
  view.guestFullName = Text(stub.GuestFullName);
  view.guestHostName = Text(stub.GuestHostName);
  view.guestIPAddress = Text(stub.GuestIPAddress);
  view.path = Text(stub.VMPathName);
  view.powerStateText = Text(stub.PowerState);
  view.powerState = PowerStateOf(view.powerStateText);
  view.operationalStatus = stub.OperationalStatus;
  view.host.reset();
  ForEachPartner(
      stub.HostedDependencies, &ZORBEL_HostedDependency::Antecedent,
      [&](const KE::Stub::ZORBEL_ORXComputerSystem& host) { view.host = Text(host.Name); });
}

void Fill(RoleView& view, const KE::Stub::Zorbel_Role& stub) {
  view.key = Text(stub.Name);
  view.name = Text(stub.ElementName);
  view.caption = Text(stub.Caption);
  view.description = Text(stub.Description);
  view.type = Text(stub.RoleType);
  FillKeys(view.privileges, stub.PrivilegeMembers, &Zorbel_PrivilegeMemberOfCollection::Member,
           &KE::Stub::Zorbel_Privilege::InstanceID);
  FillKeys(view.identities, stub.IdentityMembers, &Zorbel_IdentityMemberOfCollection::Member,
           &KE::Stub::Zorbel_Identity::InstanceID);
}

void Fill(PrivilegeView& view, const KE::Stub::Zorbel_Privilege& stub) {
  view.key = Text(stub.InstanceID);
  view.name = Text(stub.ElementName);
  FillKeys(view.roles, stub.MemberOfCollections, &Zorbel_PrivilegeMemberOfCollection::Collection,
           &KE::Stub::Zorbel_Role::Name);
}

void Fill(IdentityView& view, const KE::Stub::Zorbel_Identity& stub) {
  view.key = Text(stub.InstanceID);
  FillKeys(view.roles, stub.MemberOfCollections, &Zorbel_IdentityMemberOfCollection::Collection,
           &KE::Stub::Zorbel_Role::Name);
}

Host Decode(const HostView& view) {
  return {Decode(view.key),       Decode(view.name),       Decode(view.description),
          Decode(view.uuid),      Decode(view.vendor),     Decode(view.model),
          view.operationalStatus, DecodeAll(view.machines)};
}

Machine Decode(const MachineView& view) {
  Machine copy{Decode(view.key),
               Decode(view.name),
               Decode(view.description),
               Decode(view.uuid),
               Decode(view.guestFullName),
               Decode(view.guestHostName),
               Decode(view.guestIPAddress),
               Decode(view.path),
               Decode(view.powerStateText),
               view.powerState,
               view.operationalStatus,
               {}};
  if (view.host) copy.host = Decode(*view.host);
  return copy;
}

Role Decode(const RoleView& view) {
  return {Decode(view.key),          Decode(view.name), Decode(view.caption),
          Decode(view.description),  Decode(view.type), DecodeAll(view.privileges),
          DecodeAll(view.identities)};
}

Privilege Decode(const PrivilegeView& view) {
  return {Decode(view.key), Decode(view.name), DecodeAll(view.roles)};
}

Identity Decode(const IdentityView& view) {
  return {Decode(view.key), DecodeAll(view.roles)};
}

std::string Decode(std::string_view xmlText) {
  std::string text(xmlText);
  if (text.find('&') == std::string::npos) return text;
  KEString decoded;
  KELib::Xml::DecodeEntities(text.c_str(), decoded);
  return decoded.Cstr();
}

const char* Version() {
  return KELib::Version();
}

std::string Encode(const std::string& raw) {
  KEString encoded;
  KELib::Xml::EscapeText(raw.c_str(), encoded);
  return encoded.Cstr();
}

}  // namespace kecpp
