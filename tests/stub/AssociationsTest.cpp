// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "CountedStub.h"
#include "stub/classes/AssocList.h"
#include "stub/classes/RoleLinks.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {
namespace {

using Host = ZORBEL_ORXComputerSystem;
using Machine = ZORBEL_VMComputerSystem;
using KELib::KEString;

using HostedLink = Counted<ZORBEL_HostedDependency>;

HostedLink* Join(Host& host, Machine& machine, int& alive) {
  auto* link = new HostedLink(alive);
  link->Antecedent = &host;
  link->Dependent = &machine;
  AppendToOrigin<ZORBEL_HostedDependency>(host.HostedDependencies, link);
  Prepare(machine.HostedDependencies);
  machine.HostedDependencies->Add(link);
  return link;
}

unsigned int SlotsOf(KELib::Stub::KEStubBase& stub, const char* assocClass,
                     bool alsoEmpty = false) {
  KEString name(assocClass);
  unsigned int slots = 0;
  for (auto it = stub.GetAssocIterator(name); !it.End(); ++it) {
    if (alsoEmpty || *it != nullptr) ++slots;
  }
  return slots;
}

// --- what a link says about its ends ----------------------------------------------------------

template <typename Link>
void ExpectEnds(Link& link, KELib::Stub::KEStubBase* origin, KELib::Stub::KEStubBase* result) {
  KEString originClass(link.GetOriginClassName()), resultClass(link.GetResultClassName());
  KEString lowerCase(originClass), other("CIM_ComputerSystem");
  lowerCase.ToLower();
  // From the named end one walks to its partner, while keys are those of the named end.
  EXPECT_EQ(result, link.GetAssocInstance(originClass));
  EXPECT_EQ(origin, link.GetAssocInstance(resultClass));
  EXPECT_EQ(nullptr, link.GetAssocInstance(lowerCase));
  EXPECT_EQ(nullptr, link.GetAssocInstance(other));
  EXPECT_EQ(nullptr, link.GetAssocInstance(originClass.Cstr()));
  EXPECT_TRUE(link.KeyEquals(lowerCase.Cstr(), "origin-key"));
  EXPECT_TRUE(link.KeyEquals(resultClass.Cstr(), "result-key"));
  EXPECT_FALSE(link.KeyEquals(resultClass.Cstr(), "origin-key"));
  EXPECT_FALSE(link.KeyEquals(other.Cstr(), "origin-key"));
  EXPECT_FALSE(link.KeyEquals(nullptr, "origin-key"));
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
  ExpectEnds(runs, &host, &machine);
  EXPECT_STREQ("Name", runs.GetKey("no class of this library"));

  Zorbel_Role role;
  Zorbel_Privilege privilege;
  Zorbel_Identity identity;
  role.Name = "origin-key";
  privilege.InstanceID = identity.InstanceID = "result-key";
  Zorbel_PrivilegeMemberOfCollection grants;
  Zorbel_IdentityMemberOfCollection holds;
  grants.Collection = holds.Collection = &role;
  grants.Member = &privilege;
  holds.Member = &identity;
  ExpectEnds(grants, &role, &privilege);
  ExpectEnds(holds, &role, &identity);
  EXPECT_STREQ("InstanceID", grants.GetKey(Zorbel_PrivilegeClass));
  EXPECT_STREQ("InstanceID", holds.GetKey(Zorbel_IdentityClass));
  EXPECT_STREQ("", holds.GetKey(Zorbel_PrivilegeClass));
}

// --- iterators --------------------------------------------------------------------------------

TEST(Associations, AreListedUnderTheirExactClassName) {
  int alive = 0;
  Host host;
  Machine machine;
  EXPECT_EQ(0u, SlotsOf(host, ZORBEL_HostedDependencyClass));
  Join(host, machine, alive);
  for (KELib::Stub::KEStubBase* end : {static_cast<KELib::Stub::KEStubBase*>(&host),
                                       static_cast<KELib::Stub::KEStubBase*>(&machine)}) {
    EXPECT_EQ(1u, SlotsOf(*end, ZORBEL_HostedDependencyClass));
    EXPECT_EQ(0u, SlotsOf(*end, "zorbel_hosteddependency"));
  }
}

TEST(Associations, MembersOfRolesListTheirOneKindUnderAnyName) {
  Zorbel_Role role;
  Zorbel_Privilege privilege;
  Zorbel_Identity identity;
  EXPECT_EQ(0u, SlotsOf(role, Zorbel_PrivilegeMemberOfCollectionClass));
  LinkMember(role, privilege);
  LinkMember(role, privilege);
  LinkMember(role, identity);
  EXPECT_EQ(1u, SlotsOf(role, Zorbel_PrivilegeMemberOfCollectionClass));
  EXPECT_EQ(1u, SlotsOf(role, Zorbel_IdentityMemberOfCollectionClass));
  EXPECT_EQ(0u, SlotsOf(role, CIM_MemberOfCollectionClass));
  EXPECT_EQ(1u, SlotsOf(privilege, ZORBEL_HostedDependencyClass));
  EXPECT_EQ(1u, SlotsOf(identity, ""));
}

// --- whichever end goes first deletes the link --------------------------------------------------

TEST(Associations, DieWithTheHostOnce) {
  int alive = 0;
  std::vector<std::unique_ptr<Machine>> machines(3);
  {
    Host host;
    for (auto& machine : machines) Join(host, *(machine = std::make_unique<Machine>()), alive);
    machines[1].reset();
    EXPECT_EQ(2, alive);
    EXPECT_EQ(3u, SlotsOf(host, ZORBEL_HostedDependencyClass, true));
    EXPECT_EQ(2u, SlotsOf(host, ZORBEL_HostedDependencyClass));
  }
  EXPECT_EQ(0, alive);
  EXPECT_EQ(1u, SlotsOf(*machines[0], ZORBEL_HostedDependencyClass, true));
  EXPECT_EQ(0u, SlotsOf(*machines[0], ZORBEL_HostedDependencyClass));
}

TEST(Associations, DieWithRolesAndMembersInAnyOrder) {
  for (int last = 0; last < 3; ++last) {
    std::unique_ptr<KELib::Stub::KEStubBase> ends[3];
    auto* role = new Zorbel_Role;
    auto* privilege = new Zorbel_Privilege;
    auto* identity = new Zorbel_Identity;
    LinkMember(*role, *privilege);
    LinkMember(*role, *identity);
    ends[0].reset(role);
    ends[1].reset(privilege);
    ends[2].reset(identity);
    ends[(last + 1) % 3].reset();
    ends[(last + 2) % 3].reset();
    const char* assocClass = last == 0 ? Zorbel_IdentityMemberOfCollectionClass
                                       : Zorbel_PrivilegeMemberOfCollectionClass;
    EXPECT_EQ(1u, SlotsOf(*ends[last], assocClass, true));
    EXPECT_EQ(0u, SlotsOf(*ends[last], assocClass));
  }
}

TEST(Associations, MissingEndsAndListsAreNoError) {
  Machine machine;
  machine.HostedDependencies = std::make_unique<AssocVector>(2);
  machine.HostedDependencies->Add(CreateZORBEL_HostedDependency());
  Host host, unlisted;
  auto* half = CreateZORBEL_HostedDependency();
  half->Antecedent = &unlisted;
  machine.HostedDependencies->Add(half);
  host.HostedDependencies = std::make_unique<AssocVector>(2);
  host.HostedDependencies->Add(new Zorbel_IdentityMemberOfCollection);
}

// --- long lists -------------------------------------------------------------------------------

constexpr unsigned int kMany = 100000;

// Quadratic work on so many links would run into the test's time limit.
TEST(LongLists, LoseTheirMembersInAnyOrder) {
  std::vector<std::function<unsigned int(unsigned int)>> orders = {
      [](unsigned int i) { return i; }, [](unsigned int i) { return kMany - 1 - i; },
      [](unsigned int i) { return static_cast<unsigned int>(i * 7919ull % kMany); }};
  for (const auto& order : orders) {
    int alive = 0;
    Host host;
    std::vector<std::unique_ptr<Machine>> machines(kMany);
    for (auto& machine : machines) Join(host, *(machine = std::make_unique<Machine>()), alive);
    for (unsigned int i = 0; i < kMany; ++i) machines[order(i)].reset();
    EXPECT_EQ(0, alive);
    EXPECT_EQ(0u, SlotsOf(host, ZORBEL_HostedDependencyClass));
  }
}

TEST(LongLists, StayBoundedWhileMembersComeAndGo) {
  int alive = 0;
  Host host;
  std::vector<std::unique_ptr<Machine>> machines(2000);
  for (unsigned int i = 0; i < kMany; ++i) {
    auto& machine = machines[i * 7919ull % machines.size()];
    machine = std::make_unique<Machine>();
    Join(host, *machine, alive);
  }
  EXPECT_EQ(2000, alive);
  EXPECT_EQ(2000u, SlotsOf(host, ZORBEL_HostedDependencyClass));
  EXPECT_LE(host.HostedDependencies->Capacity(), 8192u);
  machines.clear();
  EXPECT_EQ(0u, SlotsOf(host, ZORBEL_HostedDependencyClass));
}

TEST(RoleLinks, RefreshingManyMembersKeepsTheListsBounded) {
  Zorbel_Role role;
  std::vector<Zorbel_Identity> identities(kMany);
  for (int round = 0; round < 3; ++round) {
    for (Zorbel_Identity& identity : identities) {
      UnlinkAll(identity);
      LinkMember(role, identity);
    }
  }
  EXPECT_EQ(kMany, SlotsOf(role, Zorbel_IdentityMemberOfCollectionClass));
  EXPECT_LE(role.IdentityMembers->Capacity(), 4 * kMany);
  EXPECT_EQ(1u, identities[0].MemberOfCollections->Count());
}

class KeepNamed final : public PrivilegeFilter {
 public:
  bool Keep(const Zorbel_Privilege& privilege) override {
    return privilege.InstanceID.Equals("kept");
  }
};

TEST(RoleLinks, WhatIsTakenOutLeavesNoSlotInShortLists) {
  Zorbel_Role role;
  std::vector<Zorbel_Privilege> privileges(5);
  for (Zorbel_Privilege& privilege : privileges) LinkMember(role, privilege);
  privileges[2].InstanceID = "kept";
  KeepNamed filter;
  UnlinkPrivileges(role, filter);
  ASSERT_EQ(1u, role.PrivilegeMembers->Count());
  KEString roleClass(Zorbel_RoleClass);
  EXPECT_EQ(&privileges[2], role.PrivilegeMembers->Get(0)->GetAssocInstance(roleClass));
  EXPECT_EQ(0u, privileges[0].MemberOfCollections->Count());
  LinkMember(role, privileges[0]);
  EXPECT_EQ(2u, role.PrivilegeMembers->Count());
}

}  // namespace
}  // namespace KE::Stub
