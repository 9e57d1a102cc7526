// SPDX-License-Identifier: MIT
#include "endtoend/Tool.h"

namespace endtoend {
namespace {

std::vector<std::string> Command(const std::string& config, std::vector<std::string> options) {
  options.insert(options.begin(), {KECPP_TOOL_PROGRAM, "--config", config});
  return options;
}

}  // namespace

Tool::Tool(const std::string& config, std::vector<std::string> options)
    : ChildProcess(Command(config, std::move(options))) {}

nlohmann::json Tool::LastDocument() const {
  std::string text = Output();
  text.erase(text.rfind('\n') + 1);
  if (text.empty()) return nullptr;
  text.pop_back();
  return nlohmann::json::parse(text.substr(text.rfind('\n') + 1));
}

bool Tool::Becomes(const nlohmann::json& truth) {
  return Eventually([&] { return LastDocument() == truth || !IsRunning(); }) &&
         LastDocument() == truth;
}

}  // namespace endtoend
