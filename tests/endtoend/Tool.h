// SPDX-License-Identifier: MIT
//
// kecpp-inventory as a process.
#ifndef KECPP_TESTS_ENDTOEND_TOOL_H
#define KECPP_TESTS_ENDTOEND_TOOL_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "endtoend/ChildProcess.h"

namespace endtoend {

class Tool : public ChildProcess {
 public:
  // Starts it with `config` (an XML text) and these options besides.
  Tool(const std::string& config, std::vector<std::string> options);

  // The last complete line of its output as JSON; null when there is none yet.
  nlohmann::json LastDocument() const;

  // Waits until the last document is `truth`; gives up when the tool has ended.
  bool Becomes(const nlohmann::json& truth);
};

}  // namespace endtoend

#endif
