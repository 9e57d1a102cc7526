// SPDX-License-Identifier: MIT
#include "stress/Walk.h"

namespace stress {
namespace {

using namespace KE::Instance;
using namespace KE::Stub;
using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using KELib::Stub::KEStubBase;

KEDataCache* Find(KETypeCache& cache, const char* type) {
  KEString name(type);
  return cache.GetDataCache(name);
}

KELib::KEMutex* MutexOf(KEDataCache* cache) {
  return cache ? cache->GetMutex() : nullptr;
}

void Expect(bool holds, const char* what, Tally& tally) {
  if (!holds) tally.Wrong(what);
}

// Calls `look` with every stub. Each is of class `Stub`, filed under its `key` and found by it.
template <class Stub, class KeyOwner, class Look>
void ForEach(KEDataCache* cache, KEString KeyOwner::*key, Tally& tally, Look look) {
  if (!cache) return;
  unsigned seen = 0;
  for (KEDataIterator it = cache->Iterator(); !it.End(); it++, ++seen) {
    auto* stub = dynamic_cast<Stub*>(it->value);
    Expect(stub && (stub->*key).Equals(it->key), "a stub is not what its key says", tally);
    KELib::Stub::KEStubRef found;
    cache->GetVal(it->key, found);
    Expect(found.GetData() == it->value, "a key that was walked over is not found", tally);
    if (stub) look(*stub);
  }
  Expect(seen == cache->Size(), "a walk meets another number than the cache's size", tally);
}

// The number of the stub's links of that class; each has to satisfy `agrees`.
template <class Link, class Agrees>
unsigned Links(KEStubBase& stub, const char* linkClass, Tally& tally, Agrees agrees) {
  unsigned count = 0;
  KEString name(linkClass);
  for (auto it = stub.GetAssocIterator(name); !it.End(); ++it) {
    if (!*it) continue;
    auto* link = dynamic_cast<Link*>(*it);
    if (!link) continue;  // privileges and identities list all their links whatever is asked for
    Expect(agrees(*link), "a link does not name the stub that lists it", tally);
    ++count;
  }
  return count;
}

bool IsWhole(const ZORBEL_VMComputerSystem& machine) {
  const char* state = machine.PowerState.Cstr();
  const unsigned status = machine.OperationalStatus;
  return machine.PowerState.Empty() || status == (std::string(state) == "poweredOn"    ? 2u
                                                  : std::string(state) == "poweredOff" ? 10u
                                                                                       : 15u);
}

unsigned LinksOfMachine(ZORBEL_VMComputerSystem& machine, Tally& tally) {
  Expect(IsWhole(machine), "a machine's state and status differ", tally);
  return Links<ZORBEL_HostedDependency>(
      machine, ZORBEL_HostedDependencyClass, tally, [&](const ZORBEL_HostedDependency& link) {
        return link.Dependent == &machine && link.Antecedent && !link.Antecedent->Name.Empty();
      });
}

unsigned LinksOfHost(ZORBEL_ORXComputerSystem& host, Tally& tally) {
  return Links<ZORBEL_HostedDependency>(
      host, ZORBEL_HostedDependencyClass, tally, [&](const ZORBEL_HostedDependency& link) {
        return link.Antecedent == &host && link.Dependent && !link.Dependent->Name.Empty();
      });
}

template <class Link>
unsigned LinksOfRole(Zorbel_Role& role, const char* linkClass, Tally& tally) {
  return Links<Link>(role, linkClass, tally,
                     [&](const Link& link) { return link.Collection == &role && link.Member; });
}

template <class Link, class Member>
unsigned LinksOfMember(Member& member, const char* linkClass, Tally& tally) {
  return Links<Link>(member, linkClass, tally,
                     [&](const Link& link) { return link.Member == &member && link.Collection; });
}

}  // namespace

void WalkSystems(KETypeCache& cache, Seat& seat, Tally& tally) {
  seat.Does("walks through machines and hosts");
  KEDataCache* machines = Find(cache, ZORBEL_VMComputerSystemClass);
  KEDataCache* hosts = Find(cache, ZORBEL_ORXComputerSystemClass);
  const ShownGuard machinesGuard(seat, ZORBEL_VMComputerSystemClass, MutexOf(machines));
  const ShownGuard hostsGuard(seat, ZORBEL_ORXComputerSystemClass, MutexOf(hosts));
  if (Find(cache, ZORBEL_VMComputerSystemClass) != machines ||
      Find(cache, ZORBEL_ORXComputerSystemClass) != hosts)
    return tally.Count("walks through caches that a login replaced");
  unsigned fromMachines = 0, fromHosts = 0;
  ForEach<ZORBEL_VMComputerSystem>(
      machines, &ZORBEL_VMComputerSystem::Name, tally,
      [&](ZORBEL_VMComputerSystem& stub) { fromMachines += LinksOfMachine(stub, tally); });
  ForEach<ZORBEL_ORXComputerSystem>(
      hosts, &ZORBEL_ORXComputerSystem::Name, tally,
      [&](ZORBEL_ORXComputerSystem& stub) { fromHosts += LinksOfHost(stub, tally); });
  Expect(fromMachines == fromHosts, "machines and hosts list different links", tally);
  tally.Count("machines seen", machines ? machines->Size() : 0);
}

void WalkAuthorization(KETypeCache& cache, Seat& seat, Tally& tally) {
  seat.Does("walks through roles, privileges and identities");
  using Privileges = Zorbel_PrivilegeMemberOfCollection;
  using Identities = Zorbel_IdentityMemberOfCollection;
  KEDataCache* roles = Find(cache, Zorbel_RoleClass);
  KEDataCache* privileges = Find(cache, Zorbel_PrivilegeClass);
  KEDataCache* identities = Find(cache, Zorbel_IdentityClass);
  const ShownGuard rolesGuard(seat, Zorbel_RoleClass, MutexOf(roles));
  const ShownGuard privilegesGuard(seat, Zorbel_PrivilegeClass, MutexOf(privileges));
  const ShownGuard identitiesGuard(seat, Zorbel_IdentityClass, MutexOf(identities));
  if (Find(cache, Zorbel_RoleClass) != roles || Find(cache, Zorbel_PrivilegeClass) != privileges ||
      Find(cache, Zorbel_IdentityClass) != identities)
    return tally.Count("walks through caches that a login replaced");
  unsigned fromRoles = 0, fromMembers = 0;
  const char* const privilegeLink = Zorbel_PrivilegeMemberOfCollectionClass;
  const char* const identityLink = Zorbel_IdentityMemberOfCollectionClass;
  ForEach<Zorbel_Role>(roles, &Zorbel_Role::Name, tally, [&](Zorbel_Role& role) {
    fromRoles += LinksOfRole<Privileges>(role, privilegeLink, tally) +
                 LinksOfRole<Identities>(role, identityLink, tally);
  });
  ForEach<Zorbel_Privilege>(privileges, &Zorbel_Privilege::InstanceID, tally,
                            [&](Zorbel_Privilege& stub) {
                              fromMembers += LinksOfMember<Privileges>(stub, privilegeLink, tally);
                            });
  ForEach<Zorbel_Identity>(identities, &Zorbel_Identity::InstanceID, tally,
                           [&](Zorbel_Identity& stub) {
                             fromMembers += LinksOfMember<Identities>(stub, identityLink, tally);
                           });
  Expect(fromRoles == fromMembers, "roles and their members list different links", tally);
  tally.Count("roles seen", roles ? roles->Size() : 0);
}

}  // namespace stress
