// SPDX-License-Identifier: MIT
//
// How the agent lives: before the daemon is there, when it goes, among slow clients, and its end.
#include <crypt.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "agent/AgentProcess.h"
#include "agent/RawClient.h"
#include "agent/WbemClient.h"
#include "simulator/driver/Simulator.h"
#include "support/Rows.h"
#include "tools/agent/Backlog.h"
#include "tools/agent/TlsContext.h"
#include "tools/agent/Users.h"

namespace agenttest {
namespace {

using driver::Eventually;
using driver::Simulator;
using testing::HasSubstr;

std::string Call(const std::string& method, const std::string& type) {
  return CimCall(
      method, "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + type + "\"/></IPARAMVALUE>");
}

// A request line and the headers that every request needs.
std::string Begin(const std::string& line) {
  return line + " HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml\r\n";
}

std::string Head(const std::string& line, const std::string& body) {
  return Begin(line) + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
}

std::string Post(const std::string& method, const std::string& type) {
  const std::string body = Call(method, type);
  return Head("POST /cimom", body) + body;
}

// The answer's first line and body, "" when the server cannot be reached.
std::string Ask(const AgentProcess& agent, const std::string& method, const std::string& type) {
  httplib::Client client("http://" + agent.Address());
  const auto answer = client.Post("/cimom", Call(method, type), "application/xml");
  return answer ? std::to_string(answer->status) + " " + answer->get_header_value("Retry-After") +
                      answer->body
                : "";
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

// Whether the agent ends within two seconds.
bool EndsQuickly(AgentProcess& agent) {
  const auto start = std::chrono::steady_clock::now();
  agent.Signal(SIGTERM);
  EXPECT_EQ(agent.Wait(), 0) << agent.Errors();
  return std::chrono::steady_clock::now() - start < std::chrono::seconds(2);
}

// A loaded machine may be slow, but not five times in a row.
void ExpectOneOfFive(const std::function<bool()>& attempt) {
  int attempts = 0;
  while (!attempt() && ++attempts < 5) {
  }
  EXPECT_LT(attempts, 5);
}

const char* const NO_DAEMON =
    "<?xml version=\"1.0\"?><Config><SSLInfo/><ConnectionInfo><url>http://127.0.0.1:1/</url>"
    "</ConnectionInfo><LoginInfo/><LogInfo><level>none</level></LogInfo></Config>";

TEST(Life, WithoutADaemonClassesAreAnsweredAndInstancesAreNotReady) {
  AgentProcess agent(NO_DAEMON, {"--ready-wait", "0"});
  EXPECT_THAT(Ask(agent, "EnumerateInstances", "CIM_System"), HasSubstr("503 5"));
  EXPECT_THAT(Ask(agent, "GetClass", "CIM_System"), HasSubstr("200 "));
  EXPECT_TRUE(Eventually([&] { return !agent.Errors().empty(); }));
  EXPECT_THAT(agent.Errors(), HasSubstr("connecting again"));
}

TEST(Life, ARequestWaitsForTheFirstFillAndALostSessionIsMadeAnew) {
  Simulator simulator({"--machines", "7"});
  simulator.Control("fault", {{"method", "CreateFilter"}, {"kind", "drip"}, {"delayMs", 1}});
  AgentProcess agent(simulator.Config());
  RawClient page(agent.Port());
  page.Send(Head("GET /api/v1/changes/stream", ""));
  EXPECT_EQ(CountOf(Ask(agent, "EnumerateInstanceNames", "CIM_ComputerSystem"), "<INSTANCENAME"),
            9u);
  simulator.Control("session-lost");
  EXPECT_TRUE(Eventually([&] { return simulator.Stats()["calls"]["Login"] == 2; }));
  const std::string machine =
      simulator.Control("machine", {{"do", "create"}, {"name", "late"}, {"host", "host-1"}})["id"];
  EXPECT_TRUE(Eventually([&] {
    return Ask(agent, "EnumerateInstanceNames", "CIM_ComputerSystem").find(">" + machine + "<") !=
           std::string::npos;
  }));
  EXPECT_THAT(page.Receive("\"late\""), HasSubstr("event: change")) << "a page follows both";
}

TEST(Life, AnAccountThatMayNotSeeRolesSeesMachines) {
  Simulator simulator({"--machines", "3"});
  simulator.Control("fault", {{"method", "CreateFilter"}, {"kind", "drip"}, {"delayMs", 1}});
  simulator.Control(
      "fault", {{"method", "CreateFilter"}, {"kind", "soap-fault"}, {"fault", "NoPermission"}});
  AgentProcess agent(simulator.Config());
  EXPECT_EQ(CountOf(Ask(agent, "EnumerateInstances", "CIM_ManagedElement"), "<INSTANCE "), 5u);
  for (const char* type : {"Zorbel_Role", "CIM_MemberOfCollection"}) {
    EXPECT_THAT(Ask(agent, "EnumerateInstances", type), HasSubstr("CODE=\"2\"")) << type;
  }
  if (!WbemClient::IsInstalled()) GTEST_SKIP() << "wbemcli is not installed";
  const WbemClient client(agent.Address());
  const std::string machine = "CIM_ManagedElement.Name=\"vm-1\"";  // a role's name, it may be
  EXPECT_THAT(client.Run("gi", machine), HasSubstr("PowerState="));
  EXPECT_THAT(client.Run("ain", machine), HasSubstr("ZORBEL_ORXComputerSystem"));
}

bool EndsQuicklyWhateverHangs() {
  Simulator simulator({"--machines", "2000"});
  AgentProcess agent(simulator.Config());
  RawClient idle(agent.Port()), half(agent.Port()), page(agent.Port()), slow(agent.Port());
  half.Send(Begin("POST /cimom") + "Content-Length: 100\r\n\r\n<CIM");
  page.Send(Head("GET /api/v1/changes/stream", ""));
  EXPECT_THAT(page.Receive("event: summary"), HasSubstr("text/event-stream"));
  for (int i = 0; i < 20; ++i) slow.Send(Post("EnumerateInstances", "CIM_System"));
  simulator.Control("fault", {{"method", "*"}, {"kind", "hang"}, {"count", 1000}});
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-1"}});  // ends the wait that is out
  EXPECT_TRUE(Eventually([&] { return simulator.Stats()["waits"] == 0; }));
  return EndsQuickly(agent);
}

bool EndsQuicklyBeforeTheFirstFill(const char* method) {
  Simulator simulator({"--machines", "3"});
  simulator.Control("fault", {{"method", method}, {"kind", "hang"}, {"count", 1000}});
  AgentProcess agent(simulator.Config());
  RawClient waiting(agent.Port());
  waiting.Send(Post("EnumerateInstances", "CIM_System"));
  EXPECT_TRUE(Eventually([&] { return simulator.Stats()["calls"].contains(method); }));
  return EndsQuickly(agent);
}

TEST(Life, ItEndsWithinTwoSecondsWhateverHangs) {
  ExpectOneOfFive(EndsQuicklyWhateverHangs);
}

TEST(Life, ItEndsWithinTwoSecondsBeforeTheFirstFill) {
  for (const char* method : {"RetrieveServiceContent", "Login", "CreateFilter", "WaitForUpdates",
                             "RetrieveAllPermissions"}) {
    SCOPED_TRACE(method);
    ExpectOneOfFive([&] { return EndsQuicklyBeforeTheFirstFill(method); });
  }
}

TEST(Life, SlowClientsHoldNobodyUp) {
  Simulator simulator({"--machines", "2000"});
  AgentProcess agent(simulator.Config());
  std::vector<std::unique_ptr<RawClient>> slow;
  for (int i = 0; i < 8; ++i) {
    slow.push_back(std::make_unique<RawClient>(agent.Port()));
    for (int request = 0; request < 5; ++request) {
      slow.back()->Send(Post("EnumerateInstances", "CIM_System"));
    }
    slow.back()->Receive("HTTP/1.1 200");  // the answer has begun, the rest is not taken
  }
  simulator.SetMachine("vm-9", "name", "changed");
  EXPECT_TRUE(Eventually([&] {
    return Ask(agent, "EnumerateInstances", "CIM_System").find(">changed<") != std::string::npos;
  }));
}

// One of these answers has 5 MB, which no socket's buffer holds; while it is sent it takes a
// quarter of a megabyte and more.
TEST(Life, AnswersThatNobodyTakesAreNotHeapedUp) {
  Simulator simulator({"--machines", "4000"});
  AgentProcess agent(simulator.Config(), {"--max-unsent", "500000", "--time-limit", "2"});
  {
    std::vector<std::unique_ptr<RawClient>> slow;
    for (int i = 0; i < 6; ++i) {
      slow.push_back(std::make_unique<RawClient>(agent.Port()));
      slow.back()->Send(Post("EnumerateInstances", "CIM_System"));
    }
    std::string answers;
    for (const auto& client : slow) answers += client->Receive("\r\n\r\n").substr(0, 12);
    EXPECT_GE(CountOf(answers, "HTTP/1.1 503"), 4u) << "the first one's time is over, too, by then";
    EXPECT_GE(CountOf(answers, "HTTP/1.1 200"), 1u);
  }
  EXPECT_TRUE(Eventually(
      [&] { return Ask(agent, "EnumerateInstances", "CIM_System").compare(0, 3, "200") == 0; }));
}

TEST(Backlog, HasRoomForOneOrForAllThatFit) {
  tools::agent::Backlog backlog(100);
  auto most = backlog.Reserve(60);
  EXPECT_FALSE(backlog.Reserve(41));
  EXPECT_FALSE(backlog.AwaitRoom(41, tools::agent::Backlog::Clock::now()));
  auto rest = backlog.Reserve(40);
  EXPECT_TRUE(rest);
  most.reset();
  EXPECT_FALSE(backlog.Reserve(1000));
  rest.reset();
  EXPECT_TRUE(backlog.Reserve(1000)) << "alone";
  rest = backlog.Reserve(10);
  rest->Resize(200);
  EXPECT_FALSE(backlog.Reserve(1)) << "an answer that goes on takes what it takes";
  rest->Resize(20);
  EXPECT_TRUE(backlog.Reserve(80)) << "given back";
}

// To who stands between, what comes last is a part of the first request.
TEST(Life, AfterARequestWithoutAClearEndNothingIsARequest) {
  AgentProcess agent(NO_DAEMON);
  for (const std::string& first :
       {Begin("GET /") + "Content-Length: 50\n\r\n",
        Begin("GET /") + "X: y\r\n Content-Length: 50\r\n\r\n",
        Begin("GET /") + "Content-Length : 50\r\n\r\n",
        Begin("POST /cimom") + "Transfer-Encoding: chunked\r\n\r\n1\r\n<GET / HTTP/1.1\r\n",
        Begin("POST /cimom") + "Transfer-Encoding: chunked\r\n\r\n0\r\nTrailer: x\r\n"}) {
    RawClient client(agent.Port());
    client.Send(first + Head("GET /", ""));
    EXPECT_EQ(CountOf(client.Receive(), "HTTP/1.1 "), 1u) << first;
  }
}

TEST(Life, ConnectionsAndTheirTimeAreLimited) {
  Simulator simulator({"--machines", "1"});
  AgentProcess agent(simulator.Config(), {"--max-connections", "2", "--time-limit", "2"});
  RawClient first(agent.Port()), second(agent.Port());
  first.Send(Begin("GET /") + "X: ");
  second.Send(Begin("POST /cimom") + "Content-Length: 5\r\n\r\n<");
  EXPECT_TRUE(Eventually([&] {
    RawClient third(agent.Port());
    return third.Receive().find("503 Service Unavailable") != std::string::npos;
  }));
  // Both are cut off, though one of them goes on sending.
  EXPECT_TRUE(Eventually([&] { return !first.Send("a"); }));
  EXPECT_THAT(second.Receive(), testing::Not(HasSubstr("no end")));
  EXPECT_TRUE(
      Eventually([&] { return Ask(agent, "GetClass", "CIM_System").compare(0, 3, "200") == 0; }));
}

class Users : public testing::Test {
 protected:
  void Allow(const std::string& user, const std::string& password) {
    std::ofstream(file) << "# who may ask\n\n" << Line(user, password, 0);
  }

  static std::string Line(const std::string& user, const std::string& password,
                          unsigned long rounds) {
    char salt[CRYPT_GENSALT_OUTPUT_SIZE] = {};
    crypt_gensalt_rn("$6$", rounds, nullptr, 0, salt, sizeof salt);
    return user + ":" + crypt(password.c_str(), salt) + "\n";
  }

  // The status of a request for the page.
  static int StatusFor(const AgentProcess& agent, const std::string& user,
                       const std::string& password) {
    httplib::Client client("https://" + agent.Address());
    client.enable_server_certificate_verification(false);
    client.set_basic_auth(user, password);
    const auto answer = client.Get("/");
    return answer ? answer->status : 0;
  }

  driver::TemporaryFolder folder;
  const std::string file = folder.path + "/users";
};

TEST_F(Users, OnlyTheyAreAnswered) {
  Allow("ann", "p:äss");
  AgentProcess agent(NO_DAEMON, {"--users", file});
  std::vector<Row> rows = ReadRows(KECPP_AGENT_TESTS "/users.txt");
  rows.push_back({"Basic " + std::string(7000, 'A'), "401", "too long"});
  for (const Row& row : rows) {
    httplib::Client client("http://" + agent.Address());
    const auto answer = client.Get("/", {{"Authorization", row[0]}, {"Host", "any.example.org"}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(std::to_string(answer->status), row[1]) << row[2];
  }
  EXPECT_THAT(Ask(agent, "GetClass", "CIM_System"), HasSubstr("401"));
  const std::string line = "wrong user name or password from 127.0.0.1";
  EXPECT_TRUE(Eventually([&] { return CountOf(agent.Errors(), line) > 0; }));
  EXPECT_LT(CountOf(agent.Errors(), line), rows.size() / 2) << agent.Errors();
}

TEST_F(Users, UnknownOnesCostWhatTheCostliestDoes) {
  std::ofstream(file) << Line("a", "a", 1000) << Line("b", "b", 400000) << Line("c", "c", 1000);
  tools::agent::Users users(file);
  const auto cost = [&](const char* credentials) {
    timespec start{}, end{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
    EXPECT_FALSE(users.Accepts(credentials, "here"));
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    return static_cast<double>(end.tv_sec - start.tv_sec) * 1e9 +
           static_cast<double>(end.tv_nsec - start.tv_nsec);
  };
  const double costliest = cost("Basic Yjp4");    // b:x
  EXPECT_GT(cost("Basic Ojp4"), costliest / 10);  // unknown
}

TEST_F(Users, AreReadAgainWithTheCertificate) {
  Allow("ann", "old");
  const std::string pem = folder.path + "/pem";
  std::filesystem::copy_file(KECPP_CLIENT_CERTIFICATE, pem);
  chmod(pem.c_str(), 0600);
  chmod(file.c_str(), 0644);
  AgentProcess agent(NO_DAEMON, {"--tls", pem + ":" + pem, "--users", file});
  EXPECT_EQ(StatusFor(agent, "ann", "old"), 200);
  Allow("ann", "new");
  std::ofstream(pem) << "half written";
  agent.Signal(SIGHUP);
  EXPECT_TRUE(Eventually([&] { return CountOf(agent.Errors(), "nothing has changed") == 1; }));
  EXPECT_EQ(StatusFor(agent, "ann", "old"), 200) << agent.Errors();
  std::filesystem::copy_file(KECPP_CLIENT_CERTIFICATE, pem,
                             std::filesystem::copy_options::overwrite_existing);
  chmod(pem.c_str(), 0600);
  agent.Signal(SIGHUP);
  EXPECT_TRUE(Eventually([&] { return CountOf(agent.Errors(), "were read again") == 1; }));
  EXPECT_EQ(StatusFor(agent, "ann", "old"), 401);
  EXPECT_EQ(StatusFor(agent, "ann", "new"), 200);
  EXPECT_THAT(agent.Errors(), HasSubstr("every user of this machine can read " + file));
  EXPECT_THAT(agent.Errors(), testing::Not(HasSubstr("can read " + pem)));
}

TEST(Tls, HasNoRsaKeyExchangeAndNoCbc) {
  const std::string pem = KECPP_CLIENT_CERTIFICATE;
  const auto context = tools::agent::MakeTlsContext(pem, pem);
  STACK_OF(SSL_CIPHER)* ciphers = SSL_CTX_get_ciphers(context.get());
  EXPECT_GT(sk_SSL_CIPHER_num(ciphers), 0);
  for (int i = 0; i < sk_SSL_CIPHER_num(ciphers); ++i) {
    const SSL_CIPHER* cipher = sk_SSL_CIPHER_value(ciphers, i);
    EXPECT_TRUE(SSL_CIPHER_is_aead(cipher)) << SSL_CIPHER_get_name(cipher);
    EXPECT_NE(SSL_CIPHER_get_kx_nid(cipher), NID_kx_rsa) << SSL_CIPHER_get_name(cipher);
  }
}

TEST_F(Users, MayComeOverTls) {
  if (!WbemClient::IsInstalled()) GTEST_SKIP() << "wbemcli is not installed";
  Allow("bob", "secret");
  const std::string pem = KECPP_CLIENT_CERTIFICATE;
  Simulator simulator({"--machines", "3"});
  AgentProcess agent(simulator.Config(), {"--tls", pem + ":" + pem, "--users", file});
  const WbemClient user("bob:secret@" + agent.Address(), "https");
  EXPECT_EQ(user.GetNames("ein", "ZORBEL_VMComputerSystem").size(), 3u);
  EXPECT_THAT(WbemClient("bob:wrong@" + agent.Address(), "https").Run("ecn", ""),
              HasSubstr("failed"));
  RawClient plain(agent.Port());
  plain.Send(Head("GET /", ""));
  EXPECT_THAT(plain.Receive(), testing::Not(HasSubstr("200 OK")));
}

TEST_F(Users, AndOtherOptionsAreCheckedBeforeAnythingIsServed) {
  std::ofstream(file) << "ann:correcthorsebattery\n";
  for (const Row& row : ReadRows(KECPP_AGENT_TESTS "/refused-options.txt")) {
    std::vector<std::string> options = Split(row[0], " ");
    std::replace(options.begin(), options.end(), std::string("USERS"), file);
    driver::ChildProcess agent({KECPP_AGENT_PROGRAM}, options);
    EXPECT_EQ(std::to_string(agent.Wait()), row[1]) << row[0];
    EXPECT_THAT(agent.Errors(), HasSubstr(row[2]));
  }
}

}  // namespace
}  // namespace agenttest
