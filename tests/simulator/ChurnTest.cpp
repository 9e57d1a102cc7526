// SPDX-License-Identifier: MIT
#include "simulator/Churn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "simulator/Truth.h"

namespace sim {
namespace {

TEST(Churn, RestsAsSoonAsItWasToldTo) {
  Inventory inventory({3, 20}, 1);
  Churn churn(inventory, 0, 1);
  for (int round = 0; round < 50; ++round) {
    const nlohmann::json before = Truth(inventory);
    churn.SetRate(20000);
    while (Truth(inventory) == before) std::this_thread::yield();
    churn.SetRate(0);
    const nlohmann::json rested = Truth(inventory);
    for (int look = 0; look < 20; ++look) ASSERT_EQ(Truth(inventory), rested);
  }
}

// Both ends of every link name each other, whatever was changed.
TEST(Churn, KeepsHostsAndMachinesInStep) {
  Inventory inventory({3, 10}, 1);
  {
    Churn churn(inventory, 1000000, 7);
    for (Version start = 0; start < 2000;) {
      const std::lock_guard<std::mutex> lock(inventory.Mutex());
      start = inventory.NowLocked();
    }
  }
  const nlohmann::json truth = Truth(inventory);
  std::size_t listed = 0;
  for (const auto& host : truth["hosts"]) {
    listed += host["machines"].size();
    for (const auto& machine : truth["machines"]) {
      const bool lists =
          std::count(host["machines"].begin(), host["machines"].end(), machine["Name"]) == 1;
      EXPECT_EQ(lists, machine["host"] == host["Name"]) << machine << host;
    }
  }
  EXPECT_EQ(listed, truth["machines"].size());
}

}  // namespace
}  // namespace sim
