// SPDX-License-Identifier: MIT
//
// The library inside the test's own process, used as kecpp-inventory uses it.
#ifndef KECPP_TESTS_ENDTOEND_LIBRARYAGENT_H
#define KECPP_TESTS_ENDTOEND_LIBRARYAGENT_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "agent/Connection.h"
#include "agent/EndOfRun.h"
#include "agent/Options.h"

namespace endtoend {

class LibraryAgent {
 public:
  explicit LibraryAgent(const std::string& config);
  ~LibraryAgent();
  LibraryAgent(const LibraryAgent&) = delete;
  LibraryAgent& operator=(const LibraryAgent&) = delete;

  // A new connection in place of the old one, with watches for everything.
  void Connect();
  // Nobody reads or calls any more: the instance goes.
  void Disconnect() { connection.reset(); }

  inventory::Connection& Connection() { return *connection; }
  KE::Service::KEDataSync& Sync() { return connection->Sync(); }

  // The caches in the form of the tool's document. Any thread, while connected.
  nlohmann::json Read();

  // Waits until the caches are equal to `truth`.
  void ExpectToBecome(const nlohmann::json& truth);

 private:
  KE::Service::KEServiceInstManager& manager;
  inventory::Options options;
  inventory::EndOfRun end{0};
  std::unique_ptr<inventory::Connection> connection;
};

}  // namespace endtoend

#endif
