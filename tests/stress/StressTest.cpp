// SPDX-License-Identifier: MIT
#include "stress/Stress.h"

#include <gtest/gtest.h>
#include <kecpp.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace stress {
namespace {

std::chrono::seconds Duration() {
  const char* chosen = std::getenv("KECPP_STRESS_SECONDS");
  return std::chrono::seconds(chosen ? std::atoi(chosen) : 10);
}

TEST(Stress, TheCachesStayTrueUnderManyThreads) {
  const auto begin = std::chrono::steady_clock::now();
  Tally tally;
  Plan plan;
  plan.duration = Duration();
  Play(plan, tally);
  KE::Service::FreeServiceManagerInstance();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::cout << "stress, " << took.count() << " s\n";
  const auto counts = tally.Counts();
  for (const auto& [what, times] : counts) std::cout << "  " << times << " " << what << '\n';
  for (const auto& [what, times] : tally.Wrongs()) ADD_FAILURE() << times << " times: " << what;
  for (const char* what :
       {"walks", "machines seen", "roles seen", "filters", "property methods", "tasks",
        "waits restarted", "commutes", "instances freed", "times the caches equalled the truth"}) {
    EXPECT_TRUE(counts.count(what)) << "nothing came of the " << what;
  }
}

// The watchdog names who is stuck, who holds what that one waits for, and shows the library's own
// thread.
TEST(StressDeathTest, TheWatchdogTellsWhoHoldsWhat) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  Tally tally;
  Plan plan;
  plan.patience = std::chrono::seconds(3);
  plan.holdsForEver = true;
  EXPECT_DEATH(Play(plan, tally),
               "no progress of '.*"
               "'conductor' [^\n]*holds a mutex for ever[^\n]*; holds ZORBEL_VMComputerSystem\n.*"
               "'reader [^\n]*waits for ZORBEL_VMComputerSystem, held by 'conductor'\n.*"
               "thread [0-9]+:\n[^\n]*\\[0x");
}

}  // namespace
}  // namespace stress
