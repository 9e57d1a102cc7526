// SPDX-License-Identifier: MIT
//
// From the caches to what kecpp-inventory prints, without a daemon.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Rows.h"
#include "tools/common/CacheReader.h"
#include "tools/inventory/InventoryJson.h"
#include "tools/inventory/InventoryTable.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {
namespace {

using namespace KE::Stub;
using KELib::KEString;
using testing::HasSubstr;

template <class Stub>
Stub& File(KE::Instance::KETypeCache& cache, KEString Stub::*keyField, const char* key,
           const char* elementName) {
  auto* stub = new Stub;
  stub->*keyField = key;
  if constexpr (std::is_base_of_v<CIM_ManagedElement, Stub>) stub->ElementName = elementName;
  KEString type(stub->GetStubClassName()), name(key);
  cache.CreateDataCache(type);
  cache.SetVal(type, name, stub);
  return *stub;
}

template <class Link, class Origin, class Member, class List>
void Join(Origin& origin, Origin* Link::*toOrigin, List Origin::*ofOrigin, Member& member,
          Member* Link::*toMember, List Member::*ofMember) {
  auto* link = new Link;
  link->*toOrigin = &origin;
  link->*toMember = &member;
  for (List* list : {&(origin.*ofOrigin), &(member.*ofMember)}) {
    *list = std::make_unique<typename List::element_type>();
    (*list)->Add(link);
  }
}

// A host with one of two machines, a role with a privilege and an identity.
void Fill(KE::Instance::KETypeCache& cache) {
  using Host = ZORBEL_ORXComputerSystem;
  using Machine = ZORBEL_VMComputerSystem;
  auto& host = File<Host>(cache, &Host::Name, "h1", "R&amp;D");
  host.Vendor = "cut \xe2\x82";
  host.Model = "caf\xc3\xa9 \xff\n\"";
  host.OperationalStatus = 3;
  auto& off = File<Machine>(cache, &Machine::Name, "vm2", "two");
  off.OperationalStatus = 15;
  auto& on = File<Machine>(cache, &Machine::Name, "vm1", "a &lt;b&gt; &#233;");
  on.GuestFullName = "guest";
  on.PowerState = "poweredOn";
  on.OperationalStatus = 2;
  using Hosted = ZORBEL_HostedDependency;
  Join(host, &Hosted::Antecedent, &Host::HostedDependencies, on, &Hosted::Dependent,
       &Machine::HostedDependencies);
  auto& role = File<Zorbel_Role>(cache, &Zorbel_Role::Name, "7", "Op");
  role.Caption = "Operator";
  auto& right = File<Zorbel_Privilege>(cache, &Zorbel_Privilege::InstanceID, "P.View", "View");
  auto& user = File<Zorbel_Identity>(cache, &Zorbel_Identity::InstanceID, "ann", "");
  using Gives = Zorbel_PrivilegeMemberOfCollection;
  Join(role, &Gives::Collection, &Zorbel_Role::PrivilegeMembers, right, &Gives::Member,
       &Zorbel_Privilege::MemberOfCollections);
  using Holds = Zorbel_IdentityMemberOfCollection;
  Join(role, &Holds::Collection, &Zorbel_Role::IdentityMembers, user, &Holds::Member,
       &Zorbel_Identity::MemberOfCollections);
}

// Each row of a file: what is asked for and the document, in which bytes that are not UTF-8 are
// replaced and entities kept.
TEST(Inventory, IsWrittenAsJsonAndAsTables) {
  KE::Instance::KETypeCache cache;
  Fill(cache);
  for (const Row& row : ReadRows(KECPP_TEST_DATA "/json.txt")) {
    Options options;
    const char* const command[] = {"kecpp-inventory", "--show", row[0].c_str()};
    ASSERT_FALSE(ParseOptions(3, command, options));
    EXPECT_EQ(ToJson(ReadInventory(cache, options.lists), options.lists), row[1]);
  }
  const Lists all = {FindKind("hosts"), FindKind("machines"), FindKind("roles")};
  const std::string text = ToTables(ReadInventory(cache, all), all, {});
  EXPECT_THAT(text, HasSubstr("R&D    h1    degraded   cut ?"));
  EXPECT_THAT(text, HasSubstr("a <b> \xc3\xa9   vm1   R&D    poweredOn   OK        guest"));
  EXPECT_THAT(text, HasSubstr("two       vm2   -                  dormant"));
  EXPECT_THAT(text, HasSubstr("7     Op     Operator          1            ann"));
}

}  // namespace
}  // namespace tools::inventory
