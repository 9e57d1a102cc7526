// SPDX-License-Identifier: MIT
//
// kecpp-inventory as a process. The daemon's truth is compared with its texts decoded.
#ifndef KECPP_TESTS_ENDTOEND_TOOL_H
#define KECPP_TESTS_ENDTOEND_TOOL_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "endurance/Replay.h"
#include "simulator/driver/ChildProcess.h"

namespace endtoend {

using endurance::Decoded;

class Tool : public driver::ChildProcess {
 public:
  // Starts it with `config` (an XML text) and these options besides.
  Tool(const std::string& config, const std::vector<std::string>& options)
      : ChildProcess({KECPP_TOOL_PROGRAM, "--config", config}, options) {}

  // The last complete line of its output as JSON; null when there is none yet.
  nlohmann::json LastDocument() const {
    const std::string text = Output();
    const std::size_t end = text.rfind('\n');
    if (end == std::string::npos) return nullptr;
    const std::size_t begin = end == 0 ? 0 : text.rfind('\n', end - 1) + 1;
    return nlohmann::json::parse(text.substr(begin, end - begin));
  }

  // Waits until the last document is `truth`; gives up when the tool has ended.
  bool Becomes(const nlohmann::json& stored) {
    const nlohmann::json truth = Decoded(stored);
    return driver::Eventually([&] { return LastDocument() == truth || !IsRunning(); }) &&
           LastDocument() == truth;
  }
};

}  // namespace endtoend

#endif
