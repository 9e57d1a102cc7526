// SPDX-License-Identifier: MIT
//
// A CIM client that was not written for this agent sees the daemon's inventory, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kecpp/inventory.h>

#include <atomic>
#include <thread>

#include "agent/AgentProcess.h"
#include "agent/WbemClient.h"
#include "simulator/driver/Simulator.h"

namespace agenttest {
namespace {

using driver::Json;
using testing::HasSubstr;

constexpr const char* HOST = "ZORBEL_ORXComputerSystem";
constexpr const char* MACHINE = "ZORBEL_VMComputerSystem";
constexpr const char* HOSTED = "ZORBEL_HostedDependency";

struct List {
  const char* name;  // in the truth
  const char* type;
  const char* key;
};
constexpr List LISTS[] = {{"hosts", HOST, "Name"},
                          {"machines", MACHINE, "Name"},
                          {"roles", "Zorbel_Role", "Name"},
                          {"privileges", "Zorbel_Privilege", "InstanceID"},
                          {"identities", "Zorbel_Identity", "InstanceID"}};

std::string NameOf(const List& list, const Json& item) {
  return std::string(list.type) + " " + kecpp::Decode(item[list.key].get<std::string>());
}

// What a system's class has besides, and the agent makes of the others.
void AddMade(const List& list, Properties& properties) {
  const std::map<std::string, const char*> enabled = {
      {"poweredOn", "2"}, {"poweredOff", "3"}, {"suspended", "6"}};
  const std::map<std::string, const char*> health = {
      {"0", "0"}, {"2", "5"}, {"3", "10"}, {"6", "20"}};
  properties.insert({{"NameFormat", "Other"},
                     {"RequestedState", "12"},
                     {"TransitioningToState", "12"},
                     {"OtherIdentifyingInfo", properties["UUID"]},
                     {"IdentifyingDescriptions", "UUID"}});
  if (list.type == std::string(HOST)) {
    properties["EnabledState"] = "5";
    properties["HealthState"] = health.at(properties["OperationalStatus"]);
  } else {
    properties["EnabledState"] = enabled.at(properties["PowerState"]);
    properties["StatusDescriptions"] = properties["PowerState"];
  }
}

// The properties that the truth tells, whose texts are XML text; the lists of links are no
// properties, and what is empty the client leaves out.
Properties PropertiesOf(const List& list, const Json& item) {
  Properties properties = {{"CreationClassName", list.type}};
  for (const auto& [name, value] : item.items()) {
    if (name == "host" || value.is_array()) continue;
    const std::string text =
        value.is_string() ? kecpp::Decode(value.get<std::string>()) : value.dump();
    if (!text.empty()) properties[name] = text;
  }
  if (properties.count("UUID") != 0) AddMade(list, properties);
  return properties;
}

Instances Expected(const Json& truth, std::size_t firstList, std::size_t lists) {
  Instances instances;
  for (std::size_t i = firstList; i < firstList + lists; ++i) {
    for (const Json& item : truth[LISTS[i].name]) {
      instances[NameOf(LISTS[i], item)] = PropertiesOf(LISTS[i], item);
    }
  }
  return instances;
}

Names KeysOf(const Instances& instances) {
  Names names;
  for (const auto& [name, properties] : instances) names.insert(name);
  return names;
}

class Client : public testing::Test {
 protected:
  void SetUp() override {
    if (!WbemClient::IsInstalled()) GTEST_SKIP() << "wbemcli is not installed";
  }

  // Waits until all that the client sees is the truth.
  void ExpectTruth() {
    Instances expected, seen;
    driver::Eventually([&] {
      expected = Expected(simulator.Truth(), 0, std::size(LISTS));
      seen = client.GetInstances("ei", "CIM_ManagedElement");
      return seen == expected;
    });
    EXPECT_EQ(KeysOf(seen), KeysOf(expected));
    for (const auto& [name, properties] : expected) EXPECT_EQ(seen[name], properties) << name;
  }

  Names Linked(const List& list, const std::string& key) {
    return client.GetNames("ain", ObjectPath(list.type, list.key, key));
  }

  driver::Simulator simulator{{"--hosts", "3", "--machines", "30", "--seed", "5"}};
  AgentProcess agent{simulator.Config()};
  WbemClient client{agent.Address()};
};

TEST_F(Client, SeesEveryInstanceByItsClassAndByThoseAbove) {
  const Json truth = simulator.Truth();
  ExpectTruth();
  const Instances systems = Expected(truth, 0, 2);
  EXPECT_EQ(client.GetInstances("ei", "CIM_ComputerSystem"), systems);
  EXPECT_EQ(client.GetNames("ein", "cim_computersystem"), KeysOf(systems)) << "in any letter case";
  for (std::size_t i = 0; i < std::size(LISTS); ++i) {
    const List& list = LISTS[i];
    const Instances ofClass = Expected(truth, i, 1);
    EXPECT_EQ(client.GetNames("ein", list.type), KeysOf(ofClass));
    const std::string key = truth[list.name][0][list.key];
    const auto one = client.GetInstances("gi", ObjectPath(list.type, list.key, key));
    EXPECT_THAT(ofClass, testing::IsSupersetOf(one));
    EXPECT_EQ(one.size(), 1u);
  }
}

TEST_F(Client, WalksFromAMachineToItsHostAndFromARoleToItsMembers) {
  const Json truth = simulator.Truth();
  for (const Json& machine : truth["machines"]) {
    EXPECT_EQ(Linked(LISTS[1], machine["Name"]),
              Names{std::string(HOST) + " " + machine["host"].get<std::string>()});
  }
  Names links;
  for (const Json& host : truth["hosts"]) {
    Names machines, hostLinks;
    for (const std::string machine : host["machines"]) {
      machines.insert(std::string(MACHINE) + " " + machine);
      hostLinks.insert(HOSTED + (" " + host["Name"].get<std::string>()) + " " + machine);
    }
    EXPECT_EQ(Linked(LISTS[0], host["Name"]), machines);
    const std::string path = ObjectPath(HOST, "Name", host["Name"]);
    EXPECT_EQ(KeysOf(client.GetInstances("ai", path)), machines);
    EXPECT_EQ(client.GetNames("rin", path), hostLinks);
    for (const auto& [name, ends] : client.GetInstances("ri", path)) {
      EXPECT_EQ(HOSTED + ends.at("Antecedent").substr(std::string(HOST).size()) +
                    ends.at("Dependent").substr(std::string(MACHINE).size()),
                name);
    }
    links.insert(hostLinks.begin(), hostLinks.end());
  }
  EXPECT_EQ(client.GetNames("ein", "CIM_HostedDependency"), links);
  for (const Json& role : truth["roles"]) {
    Names members;
    for (const std::string id : role["privileges"]) members.insert("Zorbel_Privilege " + id);
    for (const std::string id : role["identities"]) members.insert("Zorbel_Identity " + id);
    EXPECT_EQ(Linked(LISTS[2], role["Name"]), members);
  }
}

TEST_F(Client, ReadsClassesAndErrors) {
  const std::string classes = client.Run("ecn", "");
  for (const List& list : LISTS) EXPECT_THAT(classes, HasSubstr(std::string(":") + list.type));
  EXPECT_THAT(client.Run("gc", HOSTED), HasSubstr("-Antecedent="));
  EXPECT_THAT(client.Run("gi", ObjectPath(MACHINE, "Name", "nobody")),
              HasSubstr("(6) CIM_ERR_NOT_FOUND"));
}

TEST_F(Client, ReadsWhatTheAgentTellsOfItself) {
  const WbemClient interop(agent.Address(), "http", "interop");
  const std::string manager = interop.Run("ein", "CIM_ObjectManager");
  EXPECT_THAT(manager, HasSubstr("Name=\"kecpp-agent\""));
  const std::string path = manager.substr(manager.find(":CIM_") + 1);
  EXPECT_THAT(interop.Run("gi", path.substr(0, path.find('\n'))), HasSubstr("-Started=TRUE"));
  EXPECT_THAT(interop.Run("ain", path.substr(0, path.find('\n'))), HasSubstr("root/cimv2"));
  EXPECT_THAT(interop.Run("gc", "CIM_RegisteredProfile"), HasSubstr("-RegisteredName="));
}

// Text goes through two parsers and two writers of XML on its way.
TEST_F(Client, SeesAnyText) {
  const char* const texts[] = {"R&amp;D &lt;b&gt; &quot;q&quot; &apos;a&apos;",
                               "&amp;amp;lt;",
                               "",
                               "Größe 東京 🖥",
                               "&#x5b57; &#233;",
                               "&unknown; &amp",
                               "a  b ",
                               "%n%s ]]&gt;"};
  // First: identities are asked for only after something else has changed.
  simulator.Control(
      "permissions",
      {{{"principal", "ZORBEL\\&#228;nn &amp; co"}, {"roleId", "7"}, {"group", false}}});
  const Json machines = simulator.Truth()["machines"];
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    simulator.SetMachine(machines[i]["Name"], i % 2 ? "name" : "config.annotation", texts[i]);
  }
  ExpectTruth();
  // The key as a person types it: the client sends it as it is.
  EXPECT_EQ(Linked(LISTS[4], "ZORBEL\\änn &amp; co"), Names{"Zorbel_Role 7"});
}

TEST_F(Client, FollowsADaemonThatNeverRests) {
  simulator.Control("churn", {{"rate", 500}});
  for (int i = 0; i < 20; ++i) {
    for (const auto& [name, properties] : client.GetInstances("ei", MACHINE)) {
      const bool isOn = properties.at("PowerState") == "poweredOn";
      EXPECT_EQ(properties.at("OperationalStatus") == "2", isOn) << "half of a change: " << name;
    }
    for (const std::string& machine : Linked(LISTS[0], "host-1")) {
      const std::string key = machine.substr(machine.find(' ') + 1);
      const std::string host = client.Run("ain", ObjectPath(MACHINE, "Name", key));
      EXPECT_THAT(host, testing::AnyOf(HasSubstr(HOST), HasSubstr("NOT_FOUND"), ""));
    }
  }
  simulator.Control("churn", {{"rate", 0}});
  ExpectTruth();
}

TEST_F(Client, SeesAllOrNothingWhileTheDaemonRestarts) {
  const Names machines = client.GetNames("ein", MACHINE);
  std::atomic<bool> done{false};
  std::thread polling([&] {
    while (!done) {
      try {
        EXPECT_EQ(client.GetNames("ein", MACHINE), machines);
      } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("not read yet"));
      }
    }
  });
  for (int logins = 2; logins < 5; ++logins) {
    simulator.Control("restart", {{"pid", logins}});
    EXPECT_TRUE(driver::Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  }
  done = true;
  polling.join();
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-1"}});
  ExpectTruth();
}

}  // namespace
}  // namespace agenttest
