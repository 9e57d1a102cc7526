// SPDX-License-Identifier: MIT
//
// kecpp-agent as a process.
#ifndef KECPP_TESTS_AGENT_AGENTPROCESS_H
#define KECPP_TESTS_AGENT_AGENTPROCESS_H

#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "simulator/driver/ChildProcess.h"

namespace agenttest {

class AgentProcess : public driver::ChildProcess {
 public:
  // Starts it on a free port with `config` (an XML text) and these options besides, and waits until
  // it listens. Throws when it does not.
  explicit AgentProcess(const std::string& config, const std::vector<std::string>& options = {})
      : ChildProcess({KECPP_AGENT_PROGRAM, "--config", config, "--listen", "127.0.0.1:0"}, options),
        url(AwaitUrl()) {}

  // Ends it, if it still runs, and expects that it ends well and that no sanitizer complained.
  ~AgentProcess() {
    if (IsRunning()) {
      Signal(SIGTERM);
      EXPECT_EQ(Wait(), 0);
    }
    EXPECT_EQ(Errors().find("Sanitizer"), std::string::npos) << Errors();
  }

  // "127.0.0.1:PORT"
  std::string Address() const { return "127.0.0.1:" + std::to_string(Port()); }
  int Port() const { return std::stoi(url.substr(url.rfind(':') + 1)); }

 private:
  const std::string url;
};

}  // namespace agenttest

#endif
