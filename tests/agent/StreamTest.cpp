// SPDX-License-Identifier: MIT
//
// Answers that are made while they are sent: what is in them when the inventory changes meanwhile,
// what they take of memory, and what a client sees that is slow, old or cut off.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <kecpp/inventory.h>

#include <algorithm>
#include <thread>

#include "agent/AgentProcess.h"
#include "agent/RawClient.h"
#include "simulator/driver/Simulator.h"
#include "tools/agent/Errors.h"
#include "tools/agent/InteropModel.h"
#include "tools/agent/Operations.h"
#include "tools/agent/SocketStream.h"

namespace agenttest {
namespace {

using driver::Eventually;
using driver::Simulator;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr int MACHINES = 4000;
constexpr const char* LINKS =
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_HostedDependency\"/></IPARAMVALUE>";
constexpr const char* ALL_MACHINES =
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZORBEL_VMComputerSystem\"/></IPARAMVALUE>";
constexpr const char* OF_THE_HOST =
    "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"CIM_System\"><KEYBINDING "
    "NAME=\"Name\"><KEYVALUE>host-1</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>";

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

const std::string KEY = "<KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\" TYPE=\"string\">";

std::vector<std::string> KeysIn(const std::string& text) {
  std::vector<std::string> keys;
  for (std::size_t at = 0; (at = text.find(KEY, at)) != std::string::npos;) {
    at += KEY.size();
    keys.push_back(text.substr(at, text.find('<', at) - at));
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

std::string Rest(tools::agent::Reply& reply) {
  std::string all(reply.Piece());
  while (reply.Next()) all += reply.Piece();
  return all;
}

class Pieces : public testing::Test {
 protected:
  std::unique_ptr<tools::agent::Reply> Ask(const std::string& method, const std::string& what) {
    auto reply =
        operations.Answer(tools::agent::ParseRequest(CimCall(method, what)), "host.example");
    EXPECT_FALSE(reply->IsLast());
    return reply;
  }

  // Removes a machine that is not in the text, and waits until the inventory knows.
  void RemoveOneThatIsNotIn(std::string_view text) {
    for (const kecpp::Machine& machine : inventory.Machines()) {
      if (text.find(KEY + machine.key + "<") != std::string_view::npos) continue;
      simulator.Control("machine", {{"do", "remove"}, {"id", machine.key}});
      EXPECT_TRUE(Eventually([&] { return !inventory.FindMachine(machine.key); }));
      return;
    }
  }

  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    for (const kecpp::Machine& machine : inventory.Machines()) keys.push_back(machine.key);
    return keys;
  }

  Simulator simulator{{"--hosts", "1", "--machines", std::to_string(MACHINES)}};
  kecpp::Inventory inventory{{simulator.Config()}};
  tools::agent::InventoryGate gate{inventory, std::chrono::seconds(10)};
  tools::agent::InteropModel interop{"host.example", false};
  tools::agent::Operations operations{gate, interop};
};

TEST_F(Pieces, LackWhatHasGoneAndNothingElse) {
  for (const auto& [method, what] :
       {std::pair("EnumerateInstances", ALL_MACHINES), std::pair("Associators", OF_THE_HOST)}) {
    SCOPED_TRACE(method);
    const auto reply = Ask(method, what);
    RemoveOneThatIsNotIn(reply->Piece());
    const std::string all = Rest(*reply);
    EXPECT_THAT(KeysIn(all), testing::ContainerEq(Keys()));
    EXPECT_EQ(CountOf(all, "<INSTANCE "), Keys().size());
    EXPECT_THAT(all, EndsWith("</CIM>"));
  }
}

// Their memory is a piece, and the keys of what one object is linked to.
TEST_F(Pieces, TakeLittleMemoryWhateverTheWholeHas) {
  std::size_t bytes = 0;
  for (const char* method : {"EnumerateInstances", "EnumerateInstanceNames"}) {
    for (const char* what : {ALL_MACHINES, LINKS}) bytes += Rest(*Ask(method, what)).size();
  }
  for (const char* method : {"Associators", "AssociatorNames", "References", "ReferenceNames"}) {
    bytes += Rest(*Ask(method, OF_THE_HOST)).size();
  }
  EXPECT_GT(bytes, 30u << 20);
  EXPECT_LT(operations.PeakBytes(), 1u << 20);
}

TEST_F(Pieces, EndWhenAnotherConnectionTookThePlace) {
  const auto reply = Ask("EnumerateInstances", ALL_MACHINES);
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return inventory.State().connections == 2; }));
  EXPECT_THROW(Rest(*reply), tools::agent::NotReady);
}

std::string Post(const std::string& version, const std::string& what) {
  const std::string body = CimCall("EnumerateInstances", what);
  return "POST /cimom HTTP/" + version +
         "\r\nHost: localhost\r\nContent-Type: application/xml\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

// Answers of nine megabytes, which no socket's buffer holds.
class Streams : public testing::Test {
 protected:
  Simulator simulator{{"--hosts", "1", "--machines", std::to_string(MACHINES)}};
};

TEST_F(Streams, HaveNoChunksForClientsOfHttp10) {
  AgentProcess agent(simulator.Config());
  httplib::Client client("http://" + agent.Address());
  const auto chunked =
      client.Post("/cimom", CimCall("EnumerateInstances", LINKS), "application/xml");
  ASSERT_TRUE(chunked);
  EXPECT_EQ(chunked->get_header_value("Transfer-Encoding"), "chunked");
  EXPECT_FALSE(chunked->has_header("Content-Length"));
  EXPECT_EQ(CountOf(chunked->body, "<INSTANCE "), static_cast<std::size_t>(MACHINES));

  RawClient old(agent.Port());
  old.Send(Post("1.0", LINKS));
  const std::string answer = old.Receive();
  const std::size_t body = answer.find("\r\n\r\n") + 4;
  EXPECT_EQ(CountOf(answer.substr(0, body), "Connection: close"), 1u);
  EXPECT_THAT(answer.substr(0, body), Not(HasSubstr("Transfer-Encoding")));
  EXPECT_TRUE(answer.substr(body) == chunked->body);
}

// The first clients have all connections, and nothing else ends these.
TEST_F(Streams, EndWhenTheirClientsHaveGone) {
  AgentProcess agent(simulator.Config(), {"--time-limit", "3600", "--max-connections", "3"});
  for (int i = 0; i < 3; ++i) {
    RawClient client(agent.Port());
    client.Send(Post("1.1", LINKS));
    EXPECT_THAT(client.Receive("\r\n\r\n"), HasSubstr("200 OK"));
  }
  EXPECT_TRUE(Eventually([&] {
    RawClient client(agent.Port());
    client.Send("GET / HTTP/1.0\r\n\r\n");
    return client.Receive().find("200 OK") != std::string::npos;
  }));
}

// Two read nothing; others are answered meanwhile, and those two see that something is missing.
TEST_F(Streams, AreCutWhereNobodyReads) {
  AgentProcess agent(simulator.Config(), {"--time-limit", "3"});
  RawClient one(agent.Port()), old(agent.Port()), other(agent.Port());
  one.Send(Post("1.1", LINKS));
  old.Send(Post("1.0", LINKS));
  other.Send(Post("1.0", LINKS));
  EXPECT_THAT(other.Receive(), EndsWith("</CIM>"));
  std::this_thread::sleep_for(std::chrono::seconds(4));  // more patience than the agent has
  for (RawClient* client : {&one, &old}) {
    const std::string answer = client->Receive();
    EXPECT_THAT(answer.substr(0, 15), HasSubstr("200 OK"));
    EXPECT_THAT(answer.substr(answer.size() - 20), Not(HasSubstr("</CIM>")));
    EXPECT_THAT(answer.substr(answer.size() - 20), Not(HasSubstr("\r\n0\r\n")));
  }
}

// Each piece would be taken in time.
TEST(SocketStream, LimitsTheTimeOfAWholeAnswer) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  tools::agent::Limits limits;
  limits.time = std::chrono::seconds(1);
  std::thread slow([end = ends[1]] {
    char some[1600];
    while (recv(end, some, sizeof some, 0) > 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });
  {
    tools::agent::SocketStream stream(ends[0], nullptr, limits);
    const std::string piece(16384, 'x');
    int taken = 0;
    while (taken < 1000 && stream.write(piece.data(), piece.size()) > 0) ++taken;
    EXPECT_LT(taken, 1000);
  }
  slow.join();
  close(ends[1]);
}

}  // namespace
}  // namespace agenttest
