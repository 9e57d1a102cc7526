// SPDX-License-Identifier: MIT
//
// Subscriptions: what a listener is told is what happened, whatever the listener does, also when a
// program starts again, and what becomes of subscriptions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "agent/AgentProcess.h"
#include "agent/Listener.h"
#include "agent/RawClient.h"
#include "simulator/driver/Simulator.h"
#include "support/Rows.h"
#include "tools/agent/indications/IndicationService.h"

namespace agenttest {
namespace {

using driver::Eventually;
using driver::Simulator;
using testing::HasSubstr;
using tools::agent::AllowedHosts;

std::string TextOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

constexpr const char* USERS = KECPP_AGENT_TESTS "/subscribers.txt";

class Indications : public testing::Test {
 protected:
  std::unique_ptr<AgentProcess> Start(const Simulator& simulator, const char* retry = "1") const {
    return std::make_unique<AgentProcess>(
        simulator.Config(),
        std::vector<std::string>{"--users", USERS, "--indications-to", "127.0.0.1", "--state",
                                 folder.path, "--delivery-retry", retry});
  }

  static std::string Ask(const AgentProcess& agent, const std::string& method,
                         const std::string& parameters, bool ofInterop = true) {
    httplib::Client client("http://" + agent.Address());
    client.set_basic_auth("ann", "pw");
    const auto answer = client.Post(
        "/cimom", CimCall(method, parameters, ofInterop ? "interop" : ""), "application/xml");
    return answer ? answer->body : "";
  }

  static std::string Property(const std::string& name, const std::string& value) {
    return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\"><VALUE>" + value +
           "</VALUE></PROPERTY>";
  }
  static std::string Reference(const std::string& name, const std::string& type,
                               const std::string& key) {
    return "<PROPERTY.REFERENCE NAME=\"" + name + "\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"" +
           type + "\"><KEYBINDING NAME=\"Name\"><KEYVALUE>" + key +
           "</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>";
  }
  static void Create(const AgentProcess& agent, const std::string& type,
                     const std::string& properties) {
    EXPECT_THAT(Ask(agent, "CreateInstance",
                    "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"" + type + "\">" +
                        properties + "</INSTANCE></IPARAMVALUE>"),
                HasSubstr("<INSTANCENAME "));
  }
  static void Subscribe(const AgentProcess& agent, const std::string& query,
                        const std::string& url) {
    Create(agent, "CIM_IndicationFilter",
           Property("Name", "f") + Property("SourceNamespace", "root/cimv2") +
               Property("QueryLanguage", "WQL") + Property("Query", query));
    Create(agent, "CIM_ListenerDestinationCIMXML",
           Property("Name", "d") + Property("Destination", url));
    Create(agent, "CIM_IndicationSubscription",
           Reference("Filter", "CIM_IndicationFilter", "f") +
               Reference("Handler", "CIM_ListenerDestinationCIMXML", "d"));
  }

  driver::TemporaryFolder folder;
};

// What a client knows that has read everything once and then only takes what it is told.
class Mirror {
 public:
  explicit Mirror(std::map<std::string, std::string> all) : known(std::move(all)) {}

  void Take(const std::vector<Indication>& indications) {
    for (const Indication& indication : indications) {
      SCOPED_TRACE(indication.type + " " + indication.source.key);
      EXPECT_EQ(indication.number, next++);
      if (context.empty()) context = indication.context;
      EXPECT_EQ(indication.context, context);
      const auto at = known.find(indication.source.key);
      EXPECT_EQ(at == known.end(), indication.type == "CIM_InstCreation");
      if (at != known.end() && indication.type != "CIM_InstModification") {
        EXPECT_EQ(at->second, indication.source.text);
      } else if (at != known.end()) {
        EXPECT_EQ(at->second, indication.previous.text);
        EXPECT_NE(at->second, indication.source.text);
      }
      known[indication.source.key] = indication.source.text;
      if (indication.type == "CIM_InstDeletion") known.erase(indication.source.key);
    }
  }

  std::map<std::string, std::string> known;
  std::string context;
  long long next = 0;
};

class RandomChanges : public Indications, public testing::WithParamInterface<const char*> {
 protected:
  static std::map<std::string, std::string> ReadAll(const AgentProcess& agent) {
    std::map<std::string, std::string> all;
    for (const char* type :
         {"CIM_ManagedElement", "CIM_HostedDependency", "CIM_MemberOfCollection"}) {
      pugi::xml_document document;
      document.load_string(Ask(agent, "EnumerateInstances",
                               "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" +
                                   std::string(type) + "\"/></IPARAMVALUE>",
                               false)
                               .c_str());
      for (pugi::xpath_node node : document.select_nodes("//VALUE.NAMEDINSTANCE/INSTANCE")) {
        const Instance instance = ReadInstance(node.node());
        all[instance.key] = instance.text;
      }
    }
    return all;
  }

  // Nothing else names hosts.
  static void NameHost(Simulator& simulator, const std::string& name) {
    simulator.Control("host",
                      {{"do", "set"}, {"id", "host-1"}, {"property", "name"}, {"value", name}});
  }

  // Changes everything for a while.
  static void Change(Simulator& simulator, Listener& listener, Mirror& mirror, std::size_t least) {
    const long long end = mirror.next + static_cast<long long>(least);
    simulator.Control("churn", {{"rate", 100}});
    for (int i = 0; i < 5; ++i) {
      const std::string id = "r" + std::to_string(i);
      simulator.Control("privilege", {{"do", "set"}, {"id", id}, {"name", "&lt;" + id}});
      simulator.Control("role", {{"do", "set"}, {"id", id}, {"privileges", {id}}, {"name", id}});
      simulator.Control("permissions", {{{"principal", id}, {"roleId", id}}});
    }
    EXPECT_TRUE(Eventually([&] {
      mirror.Take(listener.Take());
      return mirror.next >= end;
    }));
  }

  static void ExpectTheTruth(Simulator& simulator, const AgentProcess& agent, Listener& listener,
                             Mirror& mirror) {
    simulator.Control("churn", {{"rate", 0}});
    NameHost(simulator, "the last one");
    std::map<std::string, std::string> truth;
    EXPECT_TRUE(Eventually([&] {
      mirror.Take(listener.Take());
      truth = ReadAll(agent);
      return mirror.known == truth;
    }));
    std::vector<std::pair<std::string, std::string>> differ;
    std::set_symmetric_difference(mirror.known.begin(), mirror.known.end(), truth.begin(),
                                  truth.end(), std::back_inserter(differ));
    EXPECT_THAT(differ, testing::IsEmpty());
    std::size_t machines = 0;
    for (const auto& [key, text] : truth) machines += key.find("ZORBEL_VMC") == 0 ? 1 : 0;
    EXPECT_EQ(machines, simulator.Truth()["machines"].size());
    EXPECT_EQ(listener.Strange(), "");
  }
};

TEST_P(RandomChanges, AreToldAsTheyAreThoughListenerDaemonAndAgentStartAgain) {
  Simulator simulator({"--machines", GetParam(), "--hosts", "12"});
  const char* const patient = "3";  // seconds: a loaded machine starts a listener slowly
  auto agent = Start(simulator, patient);
  auto listener = std::make_unique<Listener>();
  const int port = listener->Port();
  Mirror mirror(ReadAll(*agent));
  Subscribe(*agent, "SELECT * FROM CIM_InstIndication", listener->Url());
  Change(simulator, *listener, mirror, 150);
  simulator.Control("churn", {{"rate", 20}});
  listener->RefuseAll(true);  // nothing is taken that is not looked at
  mirror.Take(listener->Take());
  listener.reset();
  listener = std::make_unique<Listener>(port);
  Change(simulator, *listener, mirror, 150);
  simulator.Control("session-lost");
  Change(simulator, *listener, mirror, 300);
  ExpectTheTruth(simulator, *agent, *listener, mirror);

  agent.reset();
  listener->Take();
  NameHost(simulator, "nobody sees it");
  agent = Start(simulator, patient);
  Mirror again(ReadAll(*agent));
  int tries = 0;
  EXPECT_TRUE(Eventually([&] {  // the subscription works
    NameHost(simulator, "seen " + std::to_string(++tries));
    again.Take(listener->Take());
    return again.next > 0;
  }));
  EXPECT_NE(again.context, mirror.context);
  Change(simulator, *listener, again, 150);
  ExpectTheTruth(simulator, *agent, *listener, again);
}

INSTANTIATE_TEST_SUITE_P(Sizes, RandomChanges, testing::Values("10", "5000"));

TEST_F(Indications, AreSentAgainUntilTheyAreTakenOrGivenUp) {
  Simulator simulator({"--machines", "3"});
  const auto agent = Start(simulator);
  Listener listener;
  Subscribe(*agent,
            "SELECT * FROM CIM_InstModification WHERE SourceInstance ISA CIM_ComputerSystem AND "
            "SourceInstance.ElementName &lt;&gt; PreviousInstance.ElementName",
            listener.Url());
  std::vector<Indication> taken;
  const auto takesUntil = [&](const std::string& text) {
    return Eventually([&] {
      for (Indication& one : listener.Take()) taken.push_back(std::move(one));
      return !taken.empty() && taken.back().source.text.find(text) != std::string::npos;
    });
  };
  using Fault = Listener::Fault;
  const std::pair<const char*, std::vector<Fault>> changes[] = {
      {"a", {Fault::LosesAnswer}},  // is sent again, perhaps into the next faults
      {"b", {Fault::SaysNonsense, Fault::Redirects}},
      {"c", {Fault::Refuses, Fault::SaysError, Fault::IsSlow}},
      {"d", {}},
  };
  for (const auto& [name, faults] : changes) {
    listener.Misbehave(faults);
    simulator.SetMachine("vm-1", "config.annotation", name);  // not what was asked for
    simulator.SetMachine("vm-1", "name", name);
    EXPECT_TRUE(takesUntil(std::string("<VALUE>") + name + "</VALUE>")) << name;
    EXPECT_TRUE(Eventually([&] { return listener.Faults() == 0; }));
  }
  EXPECT_EQ(listener.Strange(), "") << "a redirect is not followed";
  const long long last = taken.back().number;
  EXPECT_EQ(last + 1, static_cast<long long>(taken.size()));

  listener.RefuseAll(true);
  simulator.SetMachine("vm-1", "name", "lost");
  EXPECT_TRUE(Eventually([&] { return agent->Errors().find("are dropped") != std::string::npos; }));
  listener.RefuseAll(false);
  simulator.SetMachine("vm-1", "name", "e");
  EXPECT_TRUE(takesUntil("<VALUE>e</VALUE>"));
  EXPECT_EQ(taken.back().number, last + 2) << "the listener sees that one is missing";
  httplib::Client client("http://" + agent->Address());
  client.set_basic_auth("ann", "pw");
  EXPECT_THAT(client.Get("/metrics")->body,
              testing::AllOf(HasSubstr("kecpp_indications_total{outcome=\"dropped\"} 1\n"),
                             HasSubstr("kecpp_subscriptions 1\n")));
}

TEST_F(Indications, AreNotForgottenWithADamagedFile) {
  const std::string file = folder.path + "/subscriptions.json";
  std::ofstream(file) << "{\"format\":1,\"instances\":[{}]}";
  const auto agent = Start(Simulator({"--machines", "1"}));
  EXPECT_THAT(agent->Errors(), HasSubstr("cannot be understood"));
  EXPECT_EQ(TextOf(file + ".damaged-1"), "{\"format\":1,\"instances\":[{}]}");
  driver::ChildProcess second({KECPP_AGENT_PROGRAM},
                              {"--listen", "127.0.0.1:0", "--users", USERS, "--indications-to",
                               "::1", "--state", folder.path});
  EXPECT_EQ(second.Wait(), 1);
  EXPECT_THAT(second.Errors(), HasSubstr("another agent uses the folder"));
}

// The service without the agent around it, where policies can be other ones.
TEST(Subscriptions, GoWhenNobodyListens) {
  Simulator simulator({"--machines", "2"});
  const kecpp::Inventory inventory({simulator.Config()});
  tools::agent::DeliveryPolicy policy;
  policy.hosts = AllowedHosts("localhost");
  policy.retries = 0;
  policy.removalInterval = std::chrono::seconds(0);
  policy.mostQueued = 1;
  tools::agent::DeliveryCounters counters;
  const tools::agent::InteropModel interop("host.example", true,
                                           tools::agent::InteropModel::Indications{});
  tools::agent::IndicationService service(inventory, interop, "host.example", "", policy, counters);
  const std::size_t own = service.All().size();
  const auto text = [](const char* name, const char* value) {
    return tools::agent::GivenProperty{name, "string", false, false, {value}, {}};
  };
  const auto reference = [](const char* name, const char* type) {
    tools::agent::GivenProperty given;
    given.name = name;
    given.isNull = false;
    given.reference.isReference = true;
    given.reference.referenceClass = type;
    given.reference.referenceKeys = {tools::agent::NameKey("x")};
    return given;
  };
  const auto create = [&](const char* type, std::vector<tools::agent::GivenProperty> properties) {
    service.Create(*tools::FindClass(type), properties);
  };
  create("CIM_IndicationFilter",
         {text("Name", "x"), text("SourceNamespace", "root/cimv2"), text("QueryLanguage", "WQL"),
          text("Query", "SELECT * FROM CIM_InstDeletion")});
  create("CIM_ListenerDestinationCIMXML",
         {text("Name", "x"), text("Destination", "http://localhost:1/")});
  create("CIM_IndicationSubscription", {reference("Filter", "CIM_IndicationFilter"),
                                        reference("Handler", "CIM_ListenerDestinationCIMXML")});
  EXPECT_EQ(counters.subscriptions, 1u);
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-1"}});
  EXPECT_TRUE(Eventually([&] { return counters.subscriptions == 0; }));
  EXPECT_GE(counters.dropped, 1u);
  EXPECT_EQ(service.All().size(), own + 4) << "filter and destination stay";
}

TEST(Hosts, ThatIndicationsMayBeSentTo) {
  for (const Row& row : ReadRows(KECPP_AGENT_TESTS "/allowed-hosts.txt")) {
    SCOPED_TRACE(row[0] + " " + row[1] + " " + row[2]);
    const AllowedHosts hosts(row[0]);
    EXPECT_EQ(hosts.MayName(row[1]) ? "yes" : "no", row[3]);
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo* found = nullptr;
    ASSERT_EQ(getaddrinfo(row[2].c_str(), nullptr, &hints, &found), 0);
    EXPECT_EQ(hosts.MayReach(row[1], *found->ai_addr) ? "yes" : "no", row[4]);
    freeaddrinfo(found);
  }
  for (const char* list : {"10.0.0.0/33", "a b", "http://host/", "host:80", "10.0.0.0/x", "a,,b"}) {
    EXPECT_THROW(AllowedHosts{list}, std::runtime_error) << list;
  }
}

}  // namespace
}  // namespace agenttest
