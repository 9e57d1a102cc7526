// SPDX-License-Identifier: MIT
#include "instance/CacheConversion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "InstanceFixture.h"
#include "foundation/KEException.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
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

// --- references and status words -----------------------------------------------------------------

TEST(ConvertReference, PassesOverTheSchemaType) {
  for (const char* xml :
       {"<x/><obj xsi:type=\"ManagedObjectReference\" type=\"HostSystem\">ha</obj>z",
        "<obj type=\"HostSystem\">ha</obj>z"}) {
    KEString text(xml);
    KELib::Xml::KEXmlReader reader(text, true, 0);
    ManagedObjectReference* made = nullptr;
    ConvertManagedObjectReference("obj", reader, made);
    const std::unique_ptr<ManagedObjectReference> reference(made);
    EXPECT_STREQ("HostSystem", reference->type.Cstr());
    EXPECT_STREQ("ha", reference->value.Cstr());
    EXPECT_STREQ("z", reader.Str() + reader.Pos());
  }
}

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

using Convert = void (*)(KEString&, unsigned short&);

TEST(ConvertStatus, ComparesExactlyAndAlwaysAnswers) {
  const std::tuple<Convert, const char*, int> cases[] = {
      {ConvertVMPowerState, "poweredOff", 10}, {ConvertVMPowerState, "poweredOn", 2},
      {ConvertVMPowerState, "suspended", 15},  {ConvertVMPowerState, "PoweredOn", 0},
      {ConvertHostOverallStatus, "gray", 0},   {ConvertHostOverallStatus, "green", 2},
      {ConvertHostOverallStatus, "red", 6},    {ConvertHostOverallStatus, "yellow", 3},
      {ConvertHostOverallStatus, "GREEN", 0},  {ConvertHostOverallStatus, "", 0}};
  for (const auto& [convert, word, expected] : cases) {
    KEString text(word);
    unsigned short code = 99;
    convert(text, code);
    EXPECT_EQ(expected, code) << word;
  }
}

// --- links ---------------------------------------------------------------------------------------

class Links : public testing::Test {
 protected:
  Links()
      : hosts(MakeCache(types, KE::Stub::ZORBEL_ORXComputerSystemClass)),
        machines(MakeCache(types, KE::Stub::ZORBEL_VMComputerSystemClass)) {}

  template <typename System>
  System* File(KEDataCache& cache, const std::string& name) {
    auto* system = new System;
    system->Name = name.c_str();
    system->MoRef.value = name.c_str();
    cache.SetVal(system->Name, system);
    return system;
  }
  Host* AddHost(const std::string& name) { return File<Host>(hosts, name); }
  Machine* AddMachine(const std::string& name) { return File<Machine>(machines, name); }

  void MachineReports(Machine* machine, const char* hostId) {
    KEString type("HostSystem"), id(hostId);
    ChangeVMsHostRef(machine, type, id, &types);
  }
  void HostReports(Host* host, const std::string& machineId) {
    ManagedObjectReference reference;
    reference.value = machineId.c_str();
    ChangeHostsVMRefs(host, &reference, &types);
  }

  static std::string MachinesOf(Host* host) {
    std::string names;
    KEString type(KE::Stub::ZORBEL_HostedDependencyClass);
    for (auto it = host->GetAssocIterator(type); !it.End(); ++it) {
      auto* link = dynamic_cast<KE::Stub::ZORBEL_HostedDependency*>(*it);
      EXPECT_EQ(host, link->Antecedent);
      EXPECT_EQ(link, link->Dependent->HostedDependencies->Get(0));
      names += std::string(link->Dependent->Name.Cstr()) + " ";
    }
    return names;
  }

  KETypeCache types;
  KEDataCache& hosts;
  KEDataCache& machines;
};

TEST_F(Links, AreMadeOnceBothEndsAreCached) {
  Host* host = AddHost("h1");
  HostReports(host, "vm1");
  EXPECT_EQ("", MachinesOf(host));
  Machine* machine = AddMachine("vm1");
  MachineReports(machine, "h9");
  EXPECT_EQ(nullptr, machine->HostedDependencies);
  for (int round = 0; round < 2; ++round) {
    MachineReports(machine, "h1");
    HostReports(host, "vm1");
    MachineReports(machine, "h9");
  }
  EXPECT_EQ("vm1 ", MachinesOf(host));
  EXPECT_EQ(1u, machine->HostedDependencies->Count());
}

TEST_F(Links, MoveFromHostToHostOnEitherReport) {
  Host* from = AddHost("h1");
  Host* to = AddHost("h2");
  for (const char* name : {"vm1", "vm2", "vm3"}) {
    AddMachine(name);
    HostReports(from, name);
  }
  MachineReports(static_cast<Machine*>(Find(machines, "vm2")), "h2");
  HostReports(to, "vm1");
  EXPECT_EQ("vm3 ", MachinesOf(from));
  EXPECT_EQ("vm2 vm1 ", MachinesOf(to));
}

TEST_F(Links, AnEmptySlotListIsAnErrorThatChangesNothing) {
  Host* host = AddHost("h1");
  Machine* machine = AddMachine("vm1");
  machine->HostedDependencies = std::make_unique<KELib::KEVector<KELib::Stub::KEAssocStubBase*>>(1);
  EXPECT_THROW(MachineReports(machine, "h1"), KELib::IndexOutOfBoundsException);
  EXPECT_THROW(HostReports(host, "vm1"), KELib::IndexOutOfBoundsException);
  EXPECT_EQ("", MachinesOf(host));
}

// Quadratic work on so many links would run into the test's time limit.
TEST_F(Links, OfManyMachinesAreFilledRefilledMovedAndDropped) {
  constexpr unsigned int kMany = 100000;
  Host* host = AddHost("h1");
  Host* other = AddHost("h2");
  std::vector<Machine*> all;
  for (unsigned int i = 0; i < kMany; ++i) all.push_back(AddMachine("vm-" + std::to_string(i)));
  for (int round = 0; round < 3; ++round) {
    for (Machine* machine : all) HostReports(host, machine->Name.Cstr());
  }
  EXPECT_EQ(kMany, host->HostedDependencies->Count());
  for (unsigned int i = 0; i < kMany; i += 20) MachineReports(all[i], "h2");
  EXPECT_EQ(kMany - kMany / 20, host->HostedDependencies->Count());
  EXPECT_EQ(kMany / 20, other->HostedDependencies->Count());
  KEString type(KE::Stub::ZORBEL_VMComputerSystemClass);
  types.DeleteDataCache(type);
  EXPECT_EQ(nullptr, host->HostedDependencies->Get(0));
}

}  // namespace
}  // namespace KE::Instance
