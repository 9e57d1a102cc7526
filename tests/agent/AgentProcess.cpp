// SPDX-License-Identifier: MIT
#include "agent/AgentProcess.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <stdexcept>

namespace agenttest {
namespace {

std::vector<std::string> Command(const std::string& config, std::vector<std::string> options) {
  options.insert(options.begin(),
                 {KECPP_AGENT_PROGRAM, "--config", config, "--listen", "127.0.0.1:0"});
  return options;
}

std::string AddressIn(const std::string& output) {
  const std::size_t begin = output.find("://");
  const std::size_t end = output.find("/\n");
  if (begin == std::string::npos || end == std::string::npos) return {};
  return output.substr(begin + 3, end - begin - 3);
}

}  // namespace

AgentProcess::AgentProcess(const std::string& config, std::vector<std::string> options)
    : ChildProcess(Command(config, std::move(options))) {
  endtoend::Eventually([this] {
    address = AddressIn(Output());
    return !address.empty() || !IsRunning();
  });
  if (address.empty()) throw std::runtime_error("no agent: " + Errors());
}

AgentProcess::~AgentProcess() {
  if (IsRunning()) {
    Signal(SIGTERM);
    EXPECT_EQ(Wait(), 0);
  }
  EXPECT_EQ(Errors().find("Sanitizer"), std::string::npos) << Errors();
}

int AgentProcess::Port() const {
  return std::stoi(address.substr(address.rfind(':') + 1));
}

}  // namespace agenttest
