// SPDX-License-Identifier: MIT
#include "endtoend/LibraryAgent.h"

#include <gtest/gtest.h>

#include "endtoend/ChildProcess.h"
#include "support/ReadCaches.h"

namespace endtoend {

LibraryAgent::LibraryAgent(const std::string& config)
    : manager(*KE::Service::GetServiceManagerInstance()) {
  KELib::Logging::GetDefaultLogger()->SetLevelByName("error");
  options.config = config;
  options.lists = {true, true, true, true, true};
  options.wantsAuthorization = true;
  Connect();
}

LibraryAgent::~LibraryAgent() {
  Disconnect();
  KE::Service::FreeServiceManagerInstance();
}

void LibraryAgent::Connect() {
  Disconnect();
  connection = std::make_unique<inventory::Connection>(manager, options);
  connection->Watch(end);
}

nlohmann::json LibraryAgent::Read() {
  return ReadCaches(connection->Cache());
}

void LibraryAgent::ExpectToBecome(const nlohmann::json& truth) {
  const bool became = Eventually([&] { return Read() == truth; });
  EXPECT_TRUE(became) << "what would make the caches true:\n"
                      << nlohmann::json::diff(Read(), truth).dump(1);
}

}  // namespace endtoend
