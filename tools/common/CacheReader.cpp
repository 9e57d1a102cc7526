// SPDX-License-Identifier: MIT
#include "tools/common/CacheReader.h"

#include <algorithm>

namespace tools {
namespace {

using namespace KE::Instance;
using namespace KE::Stub;
using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using KELib::Stub::KEStubBase;

// Null until the first watch that names the type was set up.
KEDataCache* Find(KETypeCache& cache, const char* typeName) {
  KEString name(typeName);
  return cache.GetDataCache(name);
}

KELib::KEMutex* MutexOf(KEDataCache* cache) {
  return cache ? cache->GetMutex() : nullptr;
}

std::string Text(const KEString& text) {
  return text.Cstr();
}

// Calls `copy` with every stub of the cache, whose mutex the caller holds.
template <class Stub, class Copy>
void ForEach(KEDataCache* cache, Copy copy) {
  if (!cache) return;
  for (KEDataIterator it = cache->Iterator(); !it.End(); ++it) {
    if (auto* stub = dynamic_cast<Stub*>((*it)->value)) copy(*stub);
  }
}

// The keys of the stubs that `stub`, of class `ownClass`, is linked to. An association answers the
// name of one end with the stub at the other. The caller holds the mutexes of both ends' caches.
template <class Partner>
std::vector<std::string> Partners(KEStubBase& stub, const char* assocClass, const char* ownClass,
                                  KEString Partner::*key) {
  std::vector<std::string> keys;
  KEString assocName(assocClass);
  KEString endName(ownClass);
  for (auto it = stub.GetAssocIterator(assocName); !it.End(); ++it) {
    KEAssocStubBase* link = *it;  // null where a partner was deleted
    auto* partner = link ? dynamic_cast<Partner*>(link->GetAssocInstance(endName)) : nullptr;
    if (partner) keys.push_back(Text(partner->*key));
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

template <class Record>
void SortByKey(std::vector<Record>& records, std::string Record::*key) {
  std::sort(records.begin(), records.end(),
            [key](const Record& a, const Record& b) { return a.*key < b.*key; });
}

Host CopyOf(ZORBEL_ORXComputerSystem& stub) {
  Host host;
  host.name = Text(stub.Name);
  host.elementName = Text(stub.ElementName);
  host.description = Text(stub.Description);
  host.uuid = Text(stub.UUID);
  host.vendor = Text(stub.Vendor);
  host.model = Text(stub.Model);
  host.operationalStatus = stub.OperationalStatus;
  host.machines = Partners<ZORBEL_VMComputerSystem>(stub, ZORBEL_HostedDependencyClass,
                                                    ZORBEL_ORXComputerSystemClass,
                                                    &ZORBEL_VMComputerSystem::Name);
  return host;
}

Machine CopyOf(ZORBEL_VMComputerSystem& stub) {
  Machine machine;
  machine.name = Text(stub.Name);
  machine.elementName = Text(stub.ElementName);
  machine.description = Text(stub.Description);
  machine.uuid = Text(stub.UUID);
  machine.guestFullName = Text(stub.GuestFullName);
  machine.guestHostName = Text(stub.GuestHostName);
  machine.guestIPAddress = Text(stub.GuestIPAddress);
  machine.vmPathName = Text(stub.VMPathName);
  machine.powerState = Text(stub.PowerState);
  machine.operationalStatus = stub.OperationalStatus;
  auto hosts = Partners<ZORBEL_ORXComputerSystem>(stub, ZORBEL_HostedDependencyClass,
                                                  ZORBEL_VMComputerSystemClass,
                                                  &ZORBEL_ORXComputerSystem::Name);
  if (!hosts.empty()) machine.host = hosts.front();
  return machine;
}

Privilege CopyOf(Zorbel_Privilege& stub) {
  return {Text(stub.InstanceID), Text(stub.ElementName),
          Partners<Zorbel_Role>(stub, Zorbel_PrivilegeMemberOfCollectionClass,
                                Zorbel_PrivilegeClass, &Zorbel_Role::Name)};
}

Role CopyOf(Zorbel_Role& stub) {
  Role role;
  role.name = Text(stub.Name);
  role.elementName = Text(stub.ElementName);
  role.caption = Text(stub.Caption);
  role.description = Text(stub.Description);
  role.roleType = Text(stub.RoleType);
  role.privileges = Partners<Zorbel_Privilege>(stub, Zorbel_PrivilegeMemberOfCollectionClass,
                                               Zorbel_RoleClass, &Zorbel_Privilege::InstanceID);
  role.identities = Partners<Zorbel_Identity>(stub, Zorbel_IdentityMemberOfCollectionClass,
                                              Zorbel_RoleClass, &Zorbel_Identity::InstanceID);
  return role;
}

Identity CopyOf(Zorbel_Identity& stub) {
  return {Text(stub.InstanceID), Partners<Zorbel_Role>(stub, Zorbel_IdentityMemberOfCollectionClass,
                                                       Zorbel_IdentityClass, &Zorbel_Role::Name)};
}

}  // namespace

Systems ReadSystems(KETypeCache& cache) {
  Systems systems;
  {
    KEDataCache* machines = Find(cache, ZORBEL_VMComputerSystemClass);
    KEDataCache* hosts = Find(cache, ZORBEL_ORXComputerSystemClass);
    KEMutexGuard machinesGuard(MutexOf(machines));
    KEMutexGuard hostsGuard(MutexOf(hosts));
    ForEach<ZORBEL_VMComputerSystem>(machines,
                                     [&](auto& stub) { systems.machines.push_back(CopyOf(stub)); });
    ForEach<ZORBEL_ORXComputerSystem>(hosts,
                                      [&](auto& stub) { systems.hosts.push_back(CopyOf(stub)); });
  }
  SortByKey(systems.machines, &Machine::name);
  SortByKey(systems.hosts, &Host::name);
  return systems;
}

Authorization ReadAuthorization(KETypeCache& cache) {
  Authorization all;
  {
    KEDataCache* roles = Find(cache, Zorbel_RoleClass);
    KEDataCache* privileges = Find(cache, Zorbel_PrivilegeClass);
    KEDataCache* identities = Find(cache, Zorbel_IdentityClass);
    KEMutexGuard rolesGuard(MutexOf(roles));
    KEMutexGuard privilegesGuard(MutexOf(privileges));
    KEMutexGuard identitiesGuard(MutexOf(identities));
    ForEach<Zorbel_Role>(roles, [&](auto& stub) { all.roles.push_back(CopyOf(stub)); });
    ForEach<Zorbel_Privilege>(privileges,
                              [&](auto& stub) { all.privileges.push_back(CopyOf(stub)); });
    ForEach<Zorbel_Identity>(identities,
                             [&](auto& stub) { all.identities.push_back(CopyOf(stub)); });
  }
  SortByKey(all.roles, &Role::name);
  SortByKey(all.privileges, &Privilege::instanceID);
  SortByKey(all.identities, &Identity::instanceID);
  return all;
}

unsigned CountMachines(KETypeCache& cache) {
  KEDataCache* machines = Find(cache, ZORBEL_VMComputerSystemClass);
  KEMutexGuard guard(MutexOf(machines));
  return machines ? machines->Size() : 0;
}

}  // namespace tools
