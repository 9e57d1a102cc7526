// SPDX-License-Identifier: MIT
#include "fuzz/CacheChecks.h"

#include <map>
#include <set>

#include "fuzz/Fuzz.h"
#include "instance/KECacheGuard.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace fuzz {

namespace {

using namespace KE::Stub;
using KELib::Stub::KEAssocStubBase;
using Links = std::unique_ptr<KELib::KEVector<KEAssocStubBase*>>;

// How often each link was met, seen from its origin and from its member.
struct Met {
  unsigned int fromOrigin = 0, fromMember = 0;
};

class Checker {
 public:
  explicit Checker(KE::Instance::KETypeCache& cache) : types(cache), guard(&cache) {
    guard.LockAll();
  }

  void Run() {
    ForEach<ZORBEL_ORXComputerSystem>(ZORBEL_ORXComputerSystemClass, [&](auto& host) {
      Meet<ZORBEL_HostedDependency>(host.HostedDependencies, &Met::fromOrigin,
                                    [&](auto& link) { return link.Antecedent == &host; });
    });
    ForEach<ZORBEL_VMComputerSystem>(ZORBEL_VMComputerSystemClass, [&](auto& machine) {
      Meet<ZORBEL_HostedDependency>(machine.HostedDependencies, &Met::fromMember,
                                    [&](auto& link) { return link.Dependent == &machine; });
    });
    ForEach<Zorbel_Role>(Zorbel_RoleClass, [&](auto& role) {
      const auto ofRole = [&](auto& link) { return link.Collection == &role; };
      Meet<Zorbel_PrivilegeMemberOfCollection>(role.PrivilegeMembers, &Met::fromOrigin, ofRole);
      Meet<Zorbel_IdentityMemberOfCollection>(role.IdentityMembers, &Met::fromOrigin, ofRole);
    });
    ForEach<Zorbel_Privilege>(Zorbel_PrivilegeClass, [&](auto& member) {
      Meet<Zorbel_PrivilegeMemberOfCollection>(member.MemberOfCollections, &Met::fromMember,
                                               [&](auto& link) { return link.Member == &member; });
    });
    ForEach<Zorbel_Identity>(Zorbel_IdentityClass, [&](auto& member) {
      Meet<Zorbel_IdentityMemberOfCollection>(member.MemberOfCollections, &Met::fromMember,
                                              [&](auto& link) { return link.Member == &member; });
    });
    for (const auto& [link, times] : met) {
      FUZZ_CHECK(times.fromOrigin == 1 && times.fromMember == 1);
    }
  }

 private:
  template <typename Stub, typename Visit>
  void ForEach(const char* className, Visit visit) {
    KELib::KEString type(className);
    KE::Instance::KEDataCache* cache = types.GetDataCache(type);
    if (cache == nullptr) return;
    unsigned int count = 0;
    for (auto it = cache->Iterator(); !it.End(); ++it, ++count) {
      auto* stub = dynamic_cast<Stub*>(it->value);
      FUZZ_CHECK(stub != nullptr);
      FUZZ_CHECK(owned.insert(stub).second);
      visit(*stub);
    }
    FUZZ_CHECK(count == cache->Size());
  }

  template <typename Link, typename IsOwn>
  void Meet(const Links& links, unsigned int Met::*side, IsOwn isOwn) {
    for (unsigned int i = 0; links != nullptr && i < links->Count(); ++i) {
      if (links->Get(i) == nullptr) continue;
      auto* link = dynamic_cast<Link*>(links->Get(i));
      FUZZ_CHECK(link != nullptr && isOwn(*link));
      ++(met[link].*side);
    }
  }

  KE::Instance::KETypeCache& types;
  KE::Instance::KECacheGuard guard;
  std::set<const void*> owned;
  std::map<const KEAssocStubBase*, Met> met;
};

}  // namespace

void CheckCaches(KE::Instance::KETypeCache& types) {
  Checker(types).Run();
}

}  // namespace fuzz
