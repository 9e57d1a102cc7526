// SPDX-License-Identifier: MIT
//
// kecpp-inventory follows the daemon's inventory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "endtoend/Simulator.h"
#include "endtoend/Tool.h"

namespace endtoend {
namespace {

using testing::HasSubstr;

Json Rename(const std::string& id, const std::string& name) {
  return {{"do", "set"}, {"id", id}, {"property", "name"}, {"value", name}};
}

TEST(Follow, TheToolPrintsADocumentALineUntilItIsInterrupted) {
  Simulator simulator({"--hosts", "2", "--machines", "5"});
  Tool tool(simulator.Config(), {"--format", "json", "--follow"});
  ASSERT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  const std::string id = simulator.Truth()["machines"][0]["Name"];
  simulator.Control("machine", Rename(id, "renamed"));
  EXPECT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(tool.Errors(), "");
  EXPECT_EQ(simulator.Stats()["sessions"], 0) << "the tool logs out";
}

TEST(Follow, TheToolConnectsAgainWhenItsSessionIsLost) {
  Simulator simulator({"--hosts", "2", "--machines", "5"});
  Tool tool(simulator.Config(), {"--format", "json", "--follow"});
  ASSERT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  simulator.Control("session-lost");
  simulator.Control("fault", {{"method", "Login"}, {"kind", "garbage"}});
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  const std::string id = simulator.Truth()["machines"][0]["Name"];
  simulator.Control("machine", Rename(id, "renamed"));
  EXPECT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  EXPECT_THAT(tool.Errors(), HasSubstr("connection lost (NotAuthenticated), connecting again"));
  EXPECT_THAT(tool.Errors(), HasSubstr("cannot log in"));
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
}

}  // namespace
}  // namespace endtoend
