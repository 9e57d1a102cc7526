// SPDX-License-Identifier: MIT
//
// What reports of the server never bring about; what they do is in tests/datasync/cases.
#include "instance/CacheConversion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "InstanceFixture.h"
#include "foundation/KEException.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlException.h"

namespace KE::Instance {
namespace {

using Host = KE::Stub::ZORBEL_ORXComputerSystem;
using Machine = KE::Stub::ZORBEL_VMComputerSystem;
using KE::Stub::ManagedObjectReference;
using KELib::KEString;

TEST(ConvertReference, RefillsOneFromInsideTheTagAndMakesNoneOnError) {
  KEString text("<obj type=\"Folder\">f</obj><obj type=\"Fol");
  KELib::Xml::KEXmlReader reader(text, true, 0);
  ASSERT_TRUE(reader.FindElementTag("obj"));
  ManagedObjectReference reference, *ref = &reference, *made = nullptr;
  reference.type = reference.value = "old";
  ConvertManagedObjectReference("obj", reader, ref);
  EXPECT_STREQ("Folder", reference.type.Cstr());
  EXPECT_STREQ("f", reference.value.Cstr());
  EXPECT_THROW(ConvertManagedObjectReference("obj", reader, made), KELib::Xml::XmlException);
  EXPECT_EQ(nullptr, made);
}

class Links : public testing::Test {
 protected:
  template <typename System>
  System* Add(const std::string& name) {
    auto* system = new System;
    system->Name = system->MoRef.value = name.c_str();
    MakeCache(types, system->GetStubClassName()).SetVal(system->Name, system);
    return system;
  }

  void MachineReports(Machine* machine, const char* hostId) {
    KEString type("HostSystem"), id(hostId);
    ChangeVMsHostRef(machine, type, id, &types);
  }
  void HostReports(Host* host, Machine* machine) {
    ManagedObjectReference reference;
    reference.value = machine->Name;
    ChangeHostsVMRefs(host, &reference, &types);
  }

  KETypeCache types;
};

TEST_F(Links, AnEmptySlotListIsAnErrorThatChangesNothing) {
  Host* host = Add<Host>("h1");
  Machine* machine = Add<Machine>("vm1");
  machine->HostedDependencies = std::make_unique<KELib::KEVector<KELib::Stub::KEAssocStubBase*>>(1);
  EXPECT_THROW(MachineReports(machine, "h1"), KELib::IndexOutOfBoundsException);
  EXPECT_THROW(HostReports(host, machine), KELib::IndexOutOfBoundsException);
  HostReports(nullptr, machine);
  ChangeHostsVMRefs(host, nullptr, &types);
  EXPECT_EQ(nullptr, host->HostedDependencies);
}

TEST_F(Links, MoveWhenTheMachineReportsAndAreReplacedWhenTheHostDoes) {
  Host* hosts[] = {Add<Host>("h1"), Add<Host>("h2")};
  Machine* machines[] = {Add<Machine>("vm1"), Add<Machine>("vm2"), Add<Machine>("vm3")};
  for (Machine* machine : machines) MachineReports(machine, "h1");
  const auto linkOf = [](Machine* machine) { return machine->HostedDependencies->Get(0); };
  KELib::Stub::KEAssocStubBase* const before = linkOf(machines[0]);
  MachineReports(machines[0], "h2");
  EXPECT_EQ(before, linkOf(machines[0]));
  HostReports(hosts[0], machines[0]);
  EXPECT_NE(before, linkOf(machines[0]));
  EXPECT_EQ(0u, hosts[1]->HostedDependencies->Count());
  for (int place = 0; place < 3; ++place) {  // the others moved down, in their order
    EXPECT_EQ(linkOf(machines[(place + 1) % 3]), hosts[0]->HostedDependencies->Get(place));
  }
}

// Quadratic work on so many links would run into the test's time limit.
TEST_F(Links, OfManyMachinesAreFilledRefilledMovedAndDropped) {
  constexpr unsigned int kMany = 100000;
  Host *host = Add<Host>("h1"), *other = Add<Host>("h2");
  std::vector<Machine*> all;
  for (unsigned int i = 0; i < kMany; ++i) all.push_back(Add<Machine>("vm-" + std::to_string(i)));
  for (int round = 0; round < 3; ++round) {
    for (Machine* machine : all) HostReports(host, machine);
  }
  EXPECT_EQ(kMany, host->HostedDependencies->Count());
  for (unsigned int i = 0; i < kMany; ++i) {
    i % 20 == 0 ? HostReports(other, all[i]) : MachineReports(all[i], "h2");
  }
  EXPECT_EQ(0u, host->HostedDependencies->Count());
  EXPECT_EQ(kMany, other->HostedDependencies->Count());
  MachineReports(all[0], "h1");
  KEString type(KE::Stub::ZORBEL_VMComputerSystemClass);
  types.DeleteDataCache(type);
  EXPECT_EQ(nullptr, host->HostedDependencies->Get(0));
}

}  // namespace
}  // namespace KE::Instance
