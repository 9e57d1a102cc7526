// SPDX-License-Identifier: MIT
//
// kecpp-inventory: shows the inventory of a virtualization host. It uses nothing but the library's
// installed headers and is meant to be copied from.
#include <kecpp.h>

#include <cstdlib>
#include <exception>
#include <iostream>

#include "tools/common/CellText.h"
#include "tools/common/DaemonConnection.h"
#include "tools/common/EndOfRun.h"
#include "tools/common/Library.h"
#include "tools/common/ProcessEnd.h"
#include "tools/common/Terminal.h"
#include "tools/inventory/InventoryRun.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/TaskRun.h"

namespace tools::inventory {
namespace {

int ReportTask(KE::Service::KEServiceInstManager& manager, const Options& options,
               const EndOfRun& end) {
  DaemonConnection connection(manager, NeedsOf(options), end);
  const bool success = RunTask(connection, *options.task, end);
  std::cout << options.task->method << (success ? ": success" : ": no success") << std::endl;
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Run(const Options& options) {
  Library library;
  ApplyLogLevel(options.config, options.logLevel);
  const EndOfRun end(options.duration);
  if (options.task) return ReportTask(library.manager, options, end);
  InventoryRun run(library.manager, options, end);
  run.ShowOnce();
  if (options.follow) run.Follow();
  return EXIT_SUCCESS;
}

int RunGuarded(const Options& options) {
  const ProcessEndGuard guard(PROGRAM);
  try {
    return Run(options);
  } catch (const KELib::Throwable& error) {
    std::cerr << PROGRAM << ": " << Printable(error.What()) << '\n';
  } catch (const std::exception& error) {
    std::cerr << PROGRAM << ": " << Printable(error.what()) << '\n';
  }
  return EXIT_FAILURE;
}

int RunCommand(int argc, char** argv) {
  if (!HasStandardStreams(PROGRAM)) return EXIT_FAILURE;
  Options options;
  const std::optional<int> done = ParseOptions(argc, argv, options);
  return FinishOutput(PROGRAM, done ? *done : RunGuarded(options));
}

}  // namespace
}  // namespace tools::inventory

int main(int argc, char** argv) {
  return tools::inventory::RunCommand(argc, argv);
}
