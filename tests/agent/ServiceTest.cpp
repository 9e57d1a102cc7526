// SPDX-License-Identifier: MIT
//
// The agent and systemd: what it says, and the socket that it gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>

#include <thread>

#include "simulator/driver/ChildProcess.h"
#include "simulator/driver/Simulator.h"
#include "support/ServiceMessages.h"

namespace agenttest {
namespace {

using testing::HasSubstr;

// Takes systemd's place: has a socket for messages, and one that listens on a port of its choice.
class Service : public testing::Test, protected ServiceMessages {
 protected:
  Service() {
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof loopback;
    auto* const any = reinterpret_cast<sockaddr*>(&loopback);
    EXPECT_EQ(bind(listening, any, length) + listen(listening, 8), 0);
    EXPECT_EQ(getsockname(listening, any, &length), 0);
    port = ntohs(loopback.sin_port);
  }

  ~Service() override { close(listening); }

  // The command that systemd would run.
  std::vector<std::string> Command(const std::string& config) const {
    return {"/bin/sh",
            "-c",
            Exports() + "export LISTEN_FDS=1 LISTEN_PID=$$\nexec \"$0\" \"$@\" 3<&" +
                std::to_string(listening),
            KECPP_AGENT_PROGRAM,
            "--config",
            config};
  }

  const int listening = socket(AF_INET, SOCK_STREAM, 0);
  int port = 0;
};

TEST_F(Service, HearsHowTheAgentIsAndKeepsItsSocket) {
  driver::Simulator simulator({"--machines", "3"});
  simulator.Control("fault", {{"method", "CreateFilter"}, {"kind", "hang"}, {"delayMs", 700}});
  driver::ChildProcess agent(Command(simulator.Config()));
  EXPECT_THAT(agent.AwaitUrl(), HasSubstr(":" + std::to_string(port) + "/"));
  EXPECT_TRUE(Says("WATCHDOG=1"));
  EXPECT_THAT(said, testing::Not(HasSubstr("READY=1"))) << "nothing is known yet";
  EXPECT_TRUE(Says("READY=1\nSTATUS=connected"));
  said.clear();
  agent.Signal(SIGHUP);
  EXPECT_TRUE(Says("READY=1")) << said;
  EXPECT_THAT(said, testing::ContainsRegex("RELOADING=1\nMONOTONIC_USEC=[1-9][0-9]*\n"));
  agent.Signal(SIGTERM);
  EXPECT_EQ(agent.Wait(), 0) << agent.Errors();
  EXPECT_TRUE(Says("STOPPING=1"));

  // A client that comes meanwhile waits for the next one.
  httplib::Client client("127.0.0.1", port);
  std::thread asking([&] {
    const auto answer = client.Get("/");
    EXPECT_TRUE(answer && answer->status == 200);
  });
  driver::ChildProcess next(Command(simulator.Config()));
  asking.join();
}

}  // namespace
}  // namespace agenttest
