// SPDX-License-Identifier: MIT
//
// The caches follow the daemon's inventory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "endtoend/LibraryAgent.h"
#include "endtoend/Simulator.h"
#include "endtoend/Tool.h"

namespace endtoend {
namespace {

using testing::HasSubstr;

Json Rename(const std::string& id, const std::string& name) {
  return {{"do", "set"}, {"id", id}, {"property", "name"}, {"value", name}};
}

// Permissions are asked for again when something else has changed.
TEST(Follow, AnEmptyListOfPermissionsCountsAsNoneButOneOfGroupsLeavesNoIdentity) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  const std::string id = simulator.Truth()["machines"][0]["Name"];
  const Json grant = {{"principal", "ann"}, {"roleId", "1"}};
  const Json group = {{"principal", "staff"}, {"roleId", "1"}, {"group", true}};
  simulator.Control("permissions", Json::array({grant, group}));
  simulator.Control("machine", Rename(id, "a change that brings the permissions along"));
  agent.ExpectToBecome(simulator.Truth());

  const Json granted = agent.Read()["identities"];
  simulator.Control("permissions", Json::array());
  const int before = simulator.Stats()["calls"]["RetrieveAllPermissions"];
  simulator.Control("machine", Rename(id, "a change that brings no permissions along"));
  ASSERT_TRUE(
      Eventually([&] { return simulator.Stats()["calls"]["RetrieveAllPermissions"] > before; }));
  EXPECT_EQ(agent.Read()["identities"], granted);
  simulator.Control("permissions", Json::array({group}));
  simulator.Control("machine", Rename(id, "a change that brings a group along"));
  agent.ExpectToBecome(simulator.Truth());
  EXPECT_EQ(agent.Read()["identities"].size(), 0u);
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
