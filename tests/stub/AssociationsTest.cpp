// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "stub/classes/AssocList.h"
#include "stub/classes/RoleLinks.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"
#include "support/Counted.h"

namespace KE::Stub {
namespace {

using Host = ZORBEL_ORXComputerSystem;
using Machine = ZORBEL_VMComputerSystem;
using KELib::KEString;

void Join(Host& host, Machine& machine, int& alive) {
  auto* link = new Counted<ZORBEL_HostedDependency>(alive);
  link->Antecedent = &host;
  link->Dependent = &machine;
  Append<ZORBEL_HostedDependency>(host.HostedDependencies, link,
                                  &ZORBEL_HostedDependency::originIndex);
  Append<ZORBEL_HostedDependency>(machine.HostedDependencies, link,
                                  &ZORBEL_HostedDependency::memberIndex);
}

// Its slots, or those of them that hold a link.
unsigned int SlotsOf(KELib::Stub::KEStubBase& stub, const char* assocClass, bool filled = false) {
  KEString name(assocClass);
  unsigned int slots = 0;
  for (auto it = stub.GetAssocIterator(name); !it.End(); ++it) slots += !filled || *it != nullptr;
  return slots;
}

template <typename Link>
void ExpectEnds(Link& link, KELib::Stub::KEStubBase* origin, KELib::Stub::KEStubBase* result,
                const std::string& names) {
  EXPECT_EQ(names, std::string(link.GetStubClassName()) + " " + link.GetOriginRole() + " " +
                       link.GetResultRole());
  KEString originClass(link.GetOriginClassName()), resultClass(link.GetResultClassName());
  KEString lowerCase(originClass);
  lowerCase.ToLower();
  // From the named end one walks to its partner, while keys are those of the named end.
  EXPECT_EQ(result, link.GetAssocInstance(originClass));
  EXPECT_EQ(origin, link.GetAssocInstance(resultClass));
  EXPECT_EQ(nullptr, link.GetAssocInstance(lowerCase));
  EXPECT_EQ(nullptr, link.GetAssocInstance(originClass.Cstr()));
  EXPECT_TRUE(link.KeyEquals(lowerCase.Cstr(), "origin-key"));
  EXPECT_TRUE(link.KeyEquals(resultClass.Cstr(), "result-key"));
  EXPECT_FALSE(link.KeyEquals(resultClass.Cstr(), "origin-key"));
  EXPECT_FALSE(link.KeyEquals("CIM_ComputerSystem", "result-key"));
  EXPECT_FALSE(link.KeyEquals(originClass.Cstr(), nullptr));
  EXPECT_FALSE(Link().KeyEquals(originClass.Cstr(), "origin-key"));
  EXPECT_STREQ("Name", link.GetKey(originClass));
}

TEST(Associations, NameTheirEnds) {
  Host host;
  Machine machine;
  host.Name = "origin-key";
  machine.Name = "result-key";
  ZORBEL_HostedDependency runs;
  runs.Antecedent = &host;
  runs.Dependent = &machine;
  ExpectEnds(runs, &host, &machine, "ZORBEL_HostedDependency Antecedent Dependent");
  EXPECT_STREQ("Name", runs.GetKey("no class of this library"));

  Zorbel_Role role;
  Zorbel_Identity identity;
  Zorbel_Privilege privilege;
  role.Name = "origin-key";
  identity.InstanceID = privilege.InstanceID = "result-key";
  Zorbel_IdentityMemberOfCollection holds;
  Zorbel_PrivilegeMemberOfCollection gives;
  holds.Collection = gives.Collection = &role;
  holds.Member = &identity;
  gives.Member = &privilege;
  ExpectEnds(holds, &role, &identity, "Zorbel_IdentityMemberOfCollection Collection Member");
  ExpectEnds(gives, &role, &privilege, "Zorbel_PrivilegeMemberOfCollection Collection Member");
  EXPECT_STREQ("InstanceID", holds.GetKey(Zorbel_IdentityClass));
  EXPECT_STREQ("", holds.GetKey(Zorbel_PrivilegeClass));
  EXPECT_STREQ("InstanceID", gives.GetKey(Zorbel_PrivilegeClass));
}

TEST(Associations, AreListedByClassExceptOfRoleMembers) {
  int alive = 0;
  Host host;
  Machine machine;
  EXPECT_EQ(0u, SlotsOf(host, ZORBEL_HostedDependencyClass));
  EXPECT_EQ(0u, SlotsOf(machine, ZORBEL_HostedDependencyClass));
  Join(host, machine, alive);
  EXPECT_EQ(1u, SlotsOf(machine, ZORBEL_HostedDependencyClass));
  EXPECT_EQ(0u, SlotsOf(host, "zorbel_hosteddependency"));

  Zorbel_Role role;
  Zorbel_Privilege privilege;
  Zorbel_Identity identity;
  SetPrivileges(role, {&privilege, &privilege});
  EXPECT_EQ(1u, SlotsOf(role, Zorbel_PrivilegeMemberOfCollectionClass));
  EXPECT_EQ(0u, SlotsOf(role, Zorbel_IdentityMemberOfCollectionClass));
  for (int i = 0; i < 2; ++i) LinkMember(role, identity);
  EXPECT_EQ(1u, SlotsOf(role, Zorbel_IdentityMemberOfCollectionClass));
  EXPECT_EQ(1u, SlotsOf(privilege, ZORBEL_HostedDependencyClass));
  EXPECT_EQ(1u, SlotsOf(identity, ""));
  // Either end may have the shorter list.
  Zorbel_Role others[2];
  Zorbel_Identity friends[2];
  for (auto& one : friends) LinkMember(others[0], one);
  LinkMember(others[0], identity);
  LinkMember(others[1], friends[0]);
  EXPECT_EQ(3u, SlotsOf(others[0], Zorbel_IdentityMemberOfCollectionClass));
  EXPECT_EQ(2u, SlotsOf(friends[0], ""));
  LinkMember(others[1], identity);
  EXPECT_EQ(3u, SlotsOf(identity, ""));
}

TEST(Associations, DieOnceWithWhicheverEndGoesFirst) {
  int alive = 0;
  std::vector<std::unique_ptr<Machine>> machines(3);
  {
    Host host;
    for (auto& machine : machines) Join(host, *(machine = std::make_unique<Machine>()), alive);
    machines[1].reset();
    EXPECT_EQ(2, alive);
    EXPECT_EQ(3u, SlotsOf(host, ZORBEL_HostedDependencyClass));
    EXPECT_EQ(2u, SlotsOf(host, ZORBEL_HostedDependencyClass, true));
  }
  EXPECT_EQ(0, alive);
  EXPECT_EQ(1u, SlotsOf(*machines[0], ZORBEL_HostedDependencyClass));
  EXPECT_EQ(0u, SlotsOf(*machines[0], ZORBEL_HostedDependencyClass, true));

  for (int last = 0; last < 3; ++last) {
    auto* role = CreateZorbel_Role();
    auto* privilege = CreateZorbel_Privilege();
    auto* identity = CreateZorbel_Identity();
    std::unique_ptr<KELib::Stub::KEStubBase> ends[3];
    ends[0].reset(role);
    ends[1].reset(privilege);
    ends[2].reset(identity);
    SetPrivileges(*role, {privilege});
    SetRoles(*identity, {role});
    ends[(last + 1) % 3].reset();
    ends[(last + 2) % 3].reset();
    EXPECT_EQ(1u, SlotsOf(*ends[last], Zorbel_IdentityMemberOfCollectionClass));
    EXPECT_EQ(0u, SlotsOf(*ends[last], Zorbel_IdentityMemberOfCollectionClass, true));
  }
}

TEST(Associations, WithoutAnEndOrItsListAreDeletedAllTheSame) {
  Host unlisted;
  Machine machine;
  machine.HostedDependencies = std::make_unique<AssocVector>(2);
  machine.HostedDependencies->Add(CreateZORBEL_HostedDependency());
  auto* half = CreateZORBEL_HostedDependency();
  half->Antecedent = &unlisted;
  machine.HostedDependencies->Add(half);
  machine.HostedDependencies->Add(CreateZorbel_IdentityMemberOfCollection());
  machine.HostedDependencies->Add(CreateZorbel_PrivilegeMemberOfCollection());
}

// Quadratic work on so many links would run into the tests' time limit.
constexpr unsigned int kMany = 100000;

TEST(LongLists, LoseTheirMembersInAnyOrder) {
  for (const unsigned long long stride : {1ull, kMany - 1ull, 7919ull}) {  // up, down, mixed
    int alive = 0;
    Host host;
    std::vector<std::unique_ptr<Machine>> machines(kMany);
    for (auto& machine : machines) Join(host, *(machine = std::make_unique<Machine>()), alive);
    for (unsigned int i = 0; i < kMany; ++i) machines[i * stride % kMany].reset();
    EXPECT_EQ(0, alive);
    EXPECT_EQ(0u, SlotsOf(host, ZORBEL_HostedDependencyClass, true));
  }
}

TEST(LongLists, StayBoundedWhileMembersComeAndGo) {
  int alive = 0;
  Host host;
  std::vector<std::unique_ptr<Machine>> machines(2000);
  for (unsigned int i = 0; i < kMany; ++i) {
    auto& machine = machines[i * 7919ull % machines.size()];
    Join(host, *(machine = std::make_unique<Machine>()), alive);
  }
  EXPECT_EQ(2000, alive);
  EXPECT_EQ(2000u, SlotsOf(host, ZORBEL_HostedDependencyClass, true));
  EXPECT_LE(host.HostedDependencies->Capacity(), 8192u);
}

TEST(LongLists, RenewTheirPlacesWhenALinkHasMovedFar) {
  constexpr auto kPlace = &ZORBEL_HostedDependency::originIndex;
  std::vector<ZORBEL_HostedDependency*> links(300);
  AssocVector list(2);
  for (auto& link : links) list.Add(link = new ZORBEL_HostedDependency);
  links.back()->originIndex = 600;
  EXPECT_EQ(299u, PlaceIn(list, links.back(), kPlace));
  for (unsigned int i = 0; i < list.Count(); ++i) EXPECT_EQ(i, links[i]->originIndex);
}

using PrivilegeLink = Zorbel_PrivilegeMemberOfCollection;
using Pairs = std::multiset<std::pair<Zorbel_Role*, Zorbel_Privilege*>>;

// The ends of all links that are in the lists of these stubs.
template <typename End>
Pairs PairsOf(const std::vector<std::unique_ptr<End>>& ends, AssocList End::*listOf,
              unsigned int PrivilegeLink::*place) {
  Pairs pairs;
  for (const auto& end : ends) {
    const AssocList& list = (*end).*listOf;
    for (unsigned int i = 0; list != nullptr && i < list->Count(); ++i) {
      const auto* link = dynamic_cast<PrivilegeLink*>(list->Get(i));
      if (link == nullptr) continue;
      EXPECT_LT(link->*place - i, kLongList) << "a search for the link would be long";
      pairs.emplace(link->Collection, link->Member);
    }
  }
  return pairs;
}

TEST(LongLists, AgreeOnBothSidesWhateverComesAndGoes) {
  std::vector<std::unique_ptr<Zorbel_Role>> roles(1500);  // so that a list of either kind gets long
  std::vector<std::unique_ptr<Zorbel_Privilege>> privileges(roles.size());
  for (auto& role : roles) role = std::make_unique<Zorbel_Role>();
  for (auto& privilege : privileges) privilege = std::make_unique<Zorbel_Privilege>();
  Pairs expected;
  const auto forget = [&expected](Zorbel_Role* role) {
    expected.erase(expected.lower_bound({role, nullptr}),
                   expected.lower_bound({role + 1, nullptr}));
  };
  std::mt19937 random(7);
  const auto oneOf = [&random](auto& all) -> auto& {
    return all[random() % all.size()];
  };
  for (int step = 0; step < 6000; ++step) {
    const unsigned int kind = random() % 20;
    if (kind == 0) {
      auto& role = oneOf(roles);
      forget(role.get());
      role = std::make_unique<Zorbel_Role>();
    } else if (kind == 1) {
      auto& privilege = oneOf(privileges);
      for (const auto& role : roles) expected.erase({role.get(), privilege.get()});
      privilege = std::make_unique<Zorbel_Privilege>();
    } else {
      std::vector<Zorbel_Privilege*> wanted;
      if (kind < 18) wanted.push_back(privileges[0].get());  // which nearly all roles share
      const int more = step % 500 == 9 ? 2000 : 6;
      for (int i = 0; i < more; ++i) wanted.push_back(oneOf(privileges).get());
      Zorbel_Role* role = step % 5 == 0 ? roles[0].get() : oneOf(roles).get();
      for (int i = 0; i < 1 + (step % 3 == 0); ++i) SetPrivileges(*role, wanted);
      forget(role);
      const std::set<Zorbel_Privilege*> once(wanted.begin(), wanted.end());
      for (Zorbel_Privilege* privilege : once) expected.emplace(role, privilege);
    }
    if (step % 1000 != 999) continue;
    EXPECT_TRUE(expected ==
                PairsOf(roles, &Zorbel_Role::PrivilegeMembers, &PrivilegeLink::originIndex));
    EXPECT_TRUE(expected == PairsOf(privileges, &Zorbel_Privilege::MemberOfCollections,
                                    &PrivilegeLink::memberIndex));
  }
}

}  // namespace
}  // namespace KE::Stub
