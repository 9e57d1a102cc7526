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

TEST(Follow, MachinesAndHostsComeMoveChangeAndGo) {
  Simulator simulator({"--hosts", "2", "--machines", "4"});
  LibraryAgent agent(simulator.Config());
  agent.ExpectToBecome(simulator.Truth());

  const Json before = simulator.Truth();
  const std::string moved = before["hosts"][0]["machines"][0];
  const std::string host = before["hosts"][1]["Name"];
  simulator.Control("machine", {{"do", "move"}, {"id", moved}, {"host", host}});
  agent.ExpectToBecome(simulator.Truth());

  const Json made = simulator.Control("host", {{"do", "create"}, {"name", "third &amp; last"}});
  simulator.Control("machine", {{"do", "create"}, {"name", "new"}, {"host", made["id"]}});
  simulator.Control("machine", Rename(moved, ""));
  agent.ExpectToBecome(simulator.Truth());

  simulator.Control("host", {{"do", "remove"}, {"id", host}});
  simulator.Control("machine", {{"do", "remove"}, {"id", before["machines"][0]["Name"]}});
  agent.ExpectToBecome(simulator.Truth());
}

TEST(Follow, RolesPrivilegesAndPermissionsChange) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  simulator.Control("privilege", {{"do", "set"}, {"id", "P.New"}, {"name", "New one"}});
  simulator.Control("role", {{"do", "set"},
                             {"id", "77"},
                             {"name", "op"},
                             {"label", "Operator"},
                             {"summary", "Runs &lt;machines&gt;"},
                             {"privileges", {"P.New", "P.Missing"}}});
  simulator.Control("permissions",
                    Json::array({{{"principal", "ann"}, {"roleId", "77"}},
                                 {{"principal", "staff"}, {"roleId", "77"}, {"group", true}}}));
  const std::string id = simulator.Truth()["machines"][0]["Name"];
  simulator.Control("machine", Rename(id, "a change that brings the permissions along"));
  agent.ExpectToBecome(simulator.Truth());

  // An empty answer counts as none; a list of groups alone leaves no identity.
  simulator.Control("permissions", Json::array());
  const int before = simulator.Stats()["calls"]["RetrieveAllPermissions"];
  simulator.Control("machine", Rename(id, "a change that brings no permissions along"));
  ASSERT_TRUE(
      Eventually([&] { return simulator.Stats()["calls"]["RetrieveAllPermissions"] > before; }));
  EXPECT_EQ(agent.Read()["identities"], Json::parse(R"([{"InstanceID":"ann","roles":["77"]}])"));
  simulator.Control("permissions", Json::array({{{"principal", "staff"}, {"group", true}}}));
  simulator.Control("role", {{"do", "remove"}, {"id", "77"}});
  simulator.Control("privilege", {{"do", "remove"}, {"id", "P.New"}});
  agent.ExpectToBecome(simulator.Truth());
}

// Many changes come with one update set; compared whenever the daemon rests.
TEST(Follow, AStormOfChanges) {
  Simulator simulator({"--hosts", "4", "--machines", "60"});
  LibraryAgent agent(simulator.Config());
  unsigned long long seen = 0;
  for (int round = 0; round < 20 && !testing::Test::HasFailure(); ++round) {
    simulator.Control("churn", {{"rate", 2000}});
    for (int sets = 0; sets < 30; ++sets) agent.Sync().WaitForChange(seen, 1000);
    simulator.Control("churn", {{"rate", 0}});
    agent.ExpectToBecome(simulator.Truth());
  }
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
