// SPDX-License-Identifier: MIT
#include "stress/Scene.h"

namespace stress {
namespace {

using namespace KE::Instance;
using namespace KE::Stub;
using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using KELib::Stub::KEStubBase;

void Expect(bool holds, const char* what, Tally& tally) {
  if (!holds) tally.Wrong(what);
}

// The caches of some types, all found and then locked in this order.
class HeldCaches {
 public:
  HeldCaches(KETypeCache& all, Seat& seat, const std::vector<const char*>& named)
      : cache(all), types(named), found(Find()) {
    for (std::size_t i = 0; i < types.size(); ++i) {
      guards.emplace_front(seat, types[i], found[i] ? found[i]->GetMutex() : nullptr);
    }
  }
  KEDataCache* operator[](std::size_t index) const { return found[index]; }
  std::size_t SizeOf(std::size_t index) const { return found[index] ? found[index]->Size() : 0; }

  // Whether no login has put others in their place.
  bool AreCurrent(Tally& tally) const {
    const bool same = Find() == found;
    if (!same) tally.Count("walks through caches that a login replaced");
    return same;
  }

 private:
  std::vector<KEDataCache*> Find() const {
    std::vector<KEDataCache*> caches;
    for (const char* type : types) {
      KEString name(type);
      caches.push_back(cache.GetDataCache(name));
    }
    return caches;
  }

  KETypeCache& cache;
  const std::vector<const char*> types;
  const std::vector<KEDataCache*> found;
  std::list<ShownGuard> guards;  // the last one first
};

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
  const std::string state = machine.PowerState.Cstr();
  return state.empty() || machine.OperationalStatus == (state == "poweredOn"    ? 2u
                                                        : state == "poweredOff" ? 10u
                                                                                : 15u);
}

template <class Link>
unsigned LinksOfRole(Zorbel_Role& role, const char* linkClass, Tally& tally) {
  return Links<Link>(role, linkClass, tally,
                     [&](const Link& link) { return link.Collection == &role && link.Member; });
}

// Of all the members in a cache.
template <class Link, class Member>
unsigned LinksOfMembers(KEDataCache* cache, KEString Member::*key, const char* linkClass,
                        Tally& tally) {
  unsigned count = 0;
  ForEach<Member>(cache, key, tally, [&](Member& member) {
    count += Links<Link>(member, linkClass, tally, [&](const Link& link) {
      return link.Member == &member && link.Collection;
    });
  });
  return count;
}

}  // namespace

void WalkSystems(KETypeCache& cache, Seat& seat, Tally& tally) {
  using Hosted = ZORBEL_HostedDependency;
  seat.Does("walks through machines and hosts");
  const HeldCaches held(cache, seat, {ZORBEL_VMComputerSystemClass, ZORBEL_ORXComputerSystemClass});
  if (!held.AreCurrent(tally)) return;
  unsigned fromMachines = 0, fromHosts = 0;
  ForEach<ZORBEL_VMComputerSystem>(
      held[0], &ZORBEL_VMComputerSystem::Name, tally, [&](ZORBEL_VMComputerSystem& machine) {
        Expect(IsWhole(machine), "a machine's state and status differ", tally);
        fromMachines +=
            Links<Hosted>(machine, ZORBEL_HostedDependencyClass, tally, [&](const Hosted& link) {
              return link.Dependent == &machine && link.Antecedent &&
                     !link.Antecedent->Name.Empty();
            });
      });
  ForEach<ZORBEL_ORXComputerSystem>(
      held[1], &ZORBEL_ORXComputerSystem::Name, tally, [&](ZORBEL_ORXComputerSystem& host) {
        fromHosts +=
            Links<Hosted>(host, ZORBEL_HostedDependencyClass, tally, [&](const Hosted& link) {
              return link.Antecedent == &host && link.Dependent && !link.Dependent->Name.Empty();
            });
      });
  Expect(fromMachines == fromHosts, "machines and hosts list different links", tally);
  tally.Count("machines seen", held.SizeOf(0));
}

void WalkAuthorization(KETypeCache& cache, Seat& seat, Tally& tally) {
  using Privileges = Zorbel_PrivilegeMemberOfCollection;
  using Identities = Zorbel_IdentityMemberOfCollection;
  const char* const privilegeLink = Zorbel_PrivilegeMemberOfCollectionClass;
  const char* const identityLink = Zorbel_IdentityMemberOfCollectionClass;
  seat.Does("walks through roles, privileges and identities");
  const HeldCaches held(cache, seat,
                        {Zorbel_RoleClass, Zorbel_PrivilegeClass, Zorbel_IdentityClass});
  if (!held.AreCurrent(tally)) return;
  unsigned fromRoles = 0;
  ForEach<Zorbel_Role>(held[0], &Zorbel_Role::Name, tally, [&](Zorbel_Role& role) {
    fromRoles += LinksOfRole<Privileges>(role, privilegeLink, tally) +
                 LinksOfRole<Identities>(role, identityLink, tally);
  });
  const unsigned fromMembers =
      LinksOfMembers<Privileges>(held[1], &Zorbel_Privilege::InstanceID, privilegeLink, tally) +
      LinksOfMembers<Identities>(held[2], &Zorbel_Identity::InstanceID, identityLink, tally);
  Expect(fromRoles == fromMembers, "roles and their members list different links", tally);
  tally.Count("roles seen", held.SizeOf(0));
}

}  // namespace stress
