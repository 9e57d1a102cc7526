// SPDX-License-Identifier: MIT
//
// A daemon that misbehaves for a while: afterwards the caches are true again.
#include <gtest/gtest.h>

#include "endtoend/LibraryAgent.h"
#include "endtoend/Simulator.h"

namespace endtoend {
namespace {

class Misbehaviour : public testing::TestWithParam<const char*> {};

TEST_P(Misbehaviour, LeavesTheCachesTrue) {
  Simulator simulator({"--hosts", "2", "--machines", "20"});
  LibraryAgent agent(simulator.Config());
  simulator.Control("fault", {{"method", "WaitForUpdates"},
                              {"kind", GetParam()},
                              {"fault", "Unwilling"},
                              {"delayMs", 1},
                              {"count", 2}});
  const int before = simulator.Stats()["calls"]["WaitForUpdates"];
  auto rename = [&](int machine, const char* name) {
    const std::string id = simulator.Truth()["machines"][machine]["Name"];
    simulator.Control("machine",
                      {{"do", "set"}, {"id", id}, {"property", "name"}, {"value", name}});
  };
  for (int change = 0; change < 3; ++change) {
    rename(change, "while the daemon misbehaves");
    ASSERT_TRUE(
        Eventually([&] { return simulator.Stats()["calls"]["WaitForUpdates"] > before + change; }));
  }
  rename(3, "afterwards");
  agent.ExpectToBecome(simulator.Truth());
}

INSTANTIATE_TEST_SUITE_P(Kinds, Misbehaviour,
                         testing::Values("close-before", "close-middle", "truncate",
                                         "truncate-wrong-length", "garbage", "empty", "http500",
                                         "soap-fault", "soap-fault-no-detail", "wrong-prefix",
                                         "no-body", "drip", "hang", "huge", "malformed-set"),
                         [](const auto& made) {
                           std::string name = made.param;
                           for (char& c : name) c = c == '-' ? '_' : c;
                           return name;
                         });

}  // namespace
}  // namespace endtoend
