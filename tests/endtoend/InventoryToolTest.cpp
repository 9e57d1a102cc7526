// SPDX-License-Identifier: MIT
//
// kecpp-inventory and the example agent, as a user runs them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "endtoend/Simulator.h"
#include "endtoend/Tool.h"

namespace endtoend {
namespace {

using testing::HasSubstr;

TEST(WholeInventory, IsTheTruth) {
  const std::vector<std::string> daemons[] = {
      {"--hosts", "1", "--machines", "0"},
      {"--hosts", "3", "--machines", "50", "--seed", "2"},
      {"--hosts", "10", "--machines", "5000"},
      {"--hosts", "4", "--machines", "300", "--max-objects", "25"},
      {"--https", "--hosts", "2", "--machines", "20"}};
  for (const auto& options : daemons) {
    SCOPED_TRACE(testing::PrintToString(options));
    Simulator simulator(options);
    Tool tool(simulator.Config(), {"--format", "json"});
    EXPECT_EQ(tool.Wait(), 0) << tool.Errors();
    EXPECT_EQ(tool.LastDocument(), simulator.Truth());
    EXPECT_EQ(simulator.Stats()["sessions"], 0) << "the tool logs out";
  }
}

TEST(InventoryTool, ShowsTablesAndOnlyWhatIsAskedFor) {
  Simulator simulator({"--hosts", "1", "--machines", "2"});
  simulator.SetMachine("vm-1", "name", "a &lt;b&gt;");
  Tool people(simulator.Config(), {});
  EXPECT_EQ(people.Wait(), 0) << people.Errors();
  EXPECT_THAT(people.Output(), HasSubstr("Hosts (1)\n"));
  EXPECT_THAT(people.Output(), HasSubstr("Machines (2)\n"));
  EXPECT_THAT(people.Output(), HasSubstr("a <b>"));
  EXPECT_THAT(people.Output(), testing::Not(HasSubstr("Roles")));

  Tool roles(simulator.Config(), {"--show", "roles", "--format", "json"});
  EXPECT_EQ(roles.Wait(), 0) << roles.Errors();
  EXPECT_EQ(roles.LastDocument(), Json({{"roles", simulator.Truth()["roles"]}}));
}

TEST(InventoryTool, FailsWithAReasonWhenThereIsNoInventory) {
  const std::tuple<const char*, int, const char*> failures[] = {
      {"RetrieveServiceContent", 1, "cannot reach the management daemon"},
      {"Login", 1, "cannot log in"},
      {"CreateFilter", 1, "cannot watch hosts and machines: Unwilling"},
      {"WaitForUpdates", 3, "cannot read the inventory: Unwilling"}};
  for (const auto& [method, count, reason] : failures) {
    Simulator simulator({});
    const Json fault = {{"method", method}, {"kind", "soap-fault"}, {"fault", "Unwilling"}};
    for (int i = 0; i < count; ++i) simulator.Control("fault", fault);
    Tool tool(simulator.Config(), {"--format", "json"});
    EXPECT_EQ(tool.Wait(), 1) << method;
    EXPECT_THAT(tool.Errors(), HasSubstr(reason));
    EXPECT_EQ(tool.Output(), "");
  }
}

TEST(Follow, TheToolPrintsADocumentALineAlsoWithANewSessionUntilItIsInterrupted) {
  Simulator simulator({"--hosts", "2", "--machines", "5"});
  Tool tool(simulator.Config(), {"--format", "json", "--follow"});
  ASSERT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  const auto follows = [&](const char* name) {
    simulator.SetMachine("vm-1", "name", name);
    return tool.Becomes(simulator.Truth());
  };
  EXPECT_TRUE(follows("renamed"));
  EXPECT_EQ(tool.Errors(), "");
  simulator.Control("session-lost");
  simulator.Control("fault", {{"method", "Login"}, {"kind", "garbage"}});
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  EXPECT_TRUE(follows("again")) << tool.Errors();
  EXPECT_THAT(tool.Errors(), HasSubstr("connection lost (NotAuthenticated), connecting again"));
  EXPECT_THAT(tool.Errors(), HasSubstr("cannot log in"));
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(simulator.Stats()["sessions"], 0) << "the tool logs out";
}

// The object's key tells the simulated daemon how a task ends.
TEST(InventoryTool, ItsExitStatusIsTheOutcomeOfATask) {
  Simulator simulator({});
  for (const char* outcome : {"success", "error", "leave"}) {
    Tool tool(simulator.Config(),
              {"--run-task", std::string("StartTask:VirtualMachine:") + outcome});
    const bool succeeds = outcome == std::string("success");
    EXPECT_EQ(tool.Wait(), succeeds ? 0 : 1) << outcome << tool.Errors();
    EXPECT_EQ(tool.Output(), succeeds ? "StartTask: success\n" : "StartTask: no success\n");
  }
  Tool forever(simulator.Config(),
               {"--run-task", "StartTask:VirtualMachine:hang", "--duration", "0.5"});
  EXPECT_EQ(forever.Wait(), 1) << forever.Errors();
  EXPECT_EQ(simulator.Stats()["sessions"], 0);
}

// A private /run, so that the process-id file concerns nobody else. False where that is not
// allowed.
bool HavePrivateRun() {
  return unshare(CLONE_NEWNS) == 0 &&
         mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("none", "/run", "tmpfs", 0, nullptr) == 0 && mkdir("/run/zorbel", 0755) == 0;
}

TEST(InventoryTool, EndsWithADaemonThatWasRestarted) {
  if (!HavePrivateRun()) GTEST_SKIP() << "needs the right to mount";
  Simulator simulator({"--pid-file", "/run/zorbel/zorbel-mgmtd.PID"});
  Tool tool(simulator.Config(), {"--format", "json", "--follow"});
  ASSERT_TRUE(tool.Becomes(simulator.Truth())) << tool.Errors();
  simulator.Control("restart", {{"pid", 1}});
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_THAT(tool.Errors(), HasSubstr("the management daemon has gone"));
}

// An example program, with the configuration for `simulator` and these arguments behind it.
struct Example : ChildProcess {
  Example(const char* name, Simulator& simulator, const std::vector<std::string>& arguments = {})
      : ChildProcess({std::string(KECPP_EXAMPLES) + name, simulator.ConfigFile(simulator.Config())},
                     arguments) {}

  // Waits until it has written `text` `times` times.
  bool Writes(const std::string& text, int times) {
    return Eventually([&] {
      int found = 0;
      const std::string output = Output();
      for (std::size_t at = 0; (at = output.find(text, at)) != output.npos; ++at) ++found;
      return found >= times;
    });
  }
};

TEST(Examples, FollowMachinesAndLiveThroughALostSession) {
  Simulator simulator({"--hosts", "1", "--machines", "3"});
  Example agent("agent", simulator, {"2"}), reconnect("reconnect", simulator);
  ASSERT_TRUE(agent.Writes("\n", 3)) << agent.Output() << agent.Errors();
  ASSERT_TRUE(reconnect.Writes("3 machines\n", 1)) << reconnect.Errors();
  int lines = 3;
  for (const char* state : {"suspended", "poweredOn"}) {
    simulator.SetMachine("vm-1", "runtime.powerState", state);
    ASSERT_TRUE(agent.Writes("\n", lines += 3)) << agent.Output();
  }
  EXPECT_THAT(agent.Output(), HasSubstr(": suspended\n"));
  EXPECT_EQ(agent.Wait(), 0) << agent.Errors();
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-1"}});
  EXPECT_TRUE(reconnect.Writes("2 machines\n", 1)) << reconnect.Output() << reconnect.Errors();
}

TEST(Examples, ListRolesWithTheirMembersAndWaitForTasks) {
  Simulator simulator({});
  Example roles("roles", simulator);
  EXPECT_EQ(roles.Wait(), 0) << roles.Errors();
  EXPECT_THAT(roles.Output(), HasSubstr("Op\n  gives P.View P.Start\n  held by ann\n"));
  Example success("task", simulator, {"StartTask", "VirtualMachine", "success"});
  EXPECT_EQ(success.Wait(), 0) << success.Errors();
  Example error("task", simulator, {"StartTask", "VirtualMachine", "error"});
  EXPECT_EQ(error.Wait(), 1) << error.Output();
}

}  // namespace
}  // namespace endtoend
