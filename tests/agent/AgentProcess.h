// SPDX-License-Identifier: MIT
//
// kecpp-agent as a process.
#ifndef KECPP_TESTS_AGENT_AGENTPROCESS_H
#define KECPP_TESTS_AGENT_AGENTPROCESS_H

#include <string>
#include <vector>

#include "endtoend/ChildProcess.h"

namespace agenttest {

class AgentProcess : public endtoend::ChildProcess {
 public:
  // Starts it on a free port with `config` (an XML text) and these options besides, and waits until
  // it listens. Throws when it does not.
  explicit AgentProcess(const std::string& config, std::vector<std::string> options = {});

  // Ends it, if it still runs, and expects that it ends well and that no sanitizer complained.
  ~AgentProcess();

  const std::string& Address() const { return address; }  // "127.0.0.1:PORT"
  int Port() const;

 private:
  std::string address;
};

}  // namespace agenttest

#endif
