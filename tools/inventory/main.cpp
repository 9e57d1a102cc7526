// SPDX-License-Identifier: MIT
//
// kecpp-inventory: shows the inventory of a virtualization host, or of a fleet. It uses nothing but
// the installed headers kecpp/inventory.h and kecpp/fleet.h and is meant to be copied from.
#include <cstdlib>
#include <exception>
#include <iostream>

#include "tools/common/CellText.h"
#include "tools/common/EndOfRun.h"
#include "tools/common/EndWatch.h"
#include "tools/common/ProcessEnd.h"
#include "tools/common/Terminal.h"
#include "tools/inventory/FleetRun.h"
#include "tools/inventory/InventoryRun.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/TaskRun.h"

namespace tools::inventory {
namespace {

int ReportTask(const Options& options, const EndOfRun& end) {
  const bool success = RunTask(options, end);
  std::cout << options.task->method << (success ? ": success" : ": no success") << std::endl;
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
}

template <class Run>
int Show(const Options& options, const EndOfRun& end) {
  Run run(options, end);
  run.ShowOnce();
  if (options.follow) run.Follow();
  return EXIT_SUCCESS;
}

int Run(const Options& options) {
  const EndOfRun end(options.duration);
  const EndWatch watch(end, PROGRAM);
  WarnOfOpenDoors(options);
  if (options.task) return ReportTask(options, end);
  if (!options.clusters.empty()) return Show<FleetRun>(options, end);
  return Show<InventoryRun>(options, end);
}

int RunGuarded(const Options& options) {
  const ProcessEndGuard guard(PROGRAM);
  try {
    return Run(options);
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
