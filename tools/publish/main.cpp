// SPDX-License-Identifier: MIT
//
// kecpp-publish: keeps the inventory of a virtualization host in an etcd cluster.
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "tools/common/CellText.h"
#include "tools/common/EndOfRun.h"
#include "tools/common/EndWatch.h"
#include "tools/common/ProcessEnd.h"
#include "tools/common/ServiceManager.h"
#include "tools/common/Terminal.h"
#include "tools/publish/Epoch.h"
#include "tools/publish/PublishOptions.h"
#include "tools/publish/PublishRun.h"

namespace tools::publish {
namespace {

constexpr int FENCED = 3;

int Report(const std::exception& error, int status) {
  std::cerr << std::string(PROGRAM) + ": " + Printable(error.what()) + '\n';
  return status;
}

int RunGuarded(const PublishOptions& options) {
  const ProcessEndGuard guard(PROGRAM);
  try {
    ServiceManager manager;
    const EndOfRun end(options.duration);
    const EndWatch watch(end, PROGRAM);
    if (options.HasCluster()) {
      // A member that ends while it is written to must not end the publisher.
      std::signal(SIGPIPE, SIG_IGN);
      Publish(options, end, manager);
    } else {
      PrintEvents(options, end, manager);
    }
    return EXIT_SUCCESS;
  } catch (const Fenced& error) {
    return Report(error, FENCED);
  } catch (const std::exception& error) {
    return Report(error, EXIT_FAILURE);
  }
}

int RunCommand(int argc, char** argv) {
  if (!HasStandardStreams(PROGRAM)) return EXIT_FAILURE;
  PublishOptions options;
  const std::optional<int> done = ParsePublishOptions(argc, argv, options);
  return FinishOutput(PROGRAM, done ? *done : RunGuarded(options));
}

}  // namespace
}  // namespace tools::publish

int main(int argc, char** argv) {
  return tools::publish::RunCommand(argc, argv);
}
