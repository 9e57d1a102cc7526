// SPDX-License-Identifier: MIT
#include "tools/common/Library.h"

#include <memory>

namespace tools {

void ApplyLogLevel(const std::string& config, const std::string& level) {
  auto* logger = KELib::Logging::GetDefaultLogger();
  KELib::KEString source(config.c_str());
  // What is wrong with the document is logged when the service instance reads it.
  const auto before = logger->GetLevel();
  logger->SetLevel(KELib::Logging::LOG_LEVEL_NONE);
  const std::unique_ptr<KELib::KEConfig> document(
      KELib::CreateConfig(source, KE::Service::DEFAULT_CONFIG_CONTENT));
  logger->SetLevel(before);
  KELib::KEString configured;
  if (document && document->FindParentConfigKey("LogInfo") &&
      document->GetConfigValue("level", configured)) {
    logger->SetLevelByName(configured.Cstr());
  }
  if (!level.empty()) logger->SetLevelByName(level.c_str());
}

}  // namespace tools
