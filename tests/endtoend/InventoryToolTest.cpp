// SPDX-License-Identifier: MIT
//
// kecpp-inventory and the example agent, as a user runs them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>

#include "endtoend/Tool.h"
#include "simulator/driver/Simulator.h"
#include "support/Rows.h"

namespace endtoend {
namespace {

using driver::ChildProcess;
using driver::Eventually;
using driver::Json;
using driver::Simulator;
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
    EXPECT_EQ(tool.LastDocument(), Decoded(simulator.Truth()));
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
  EXPECT_EQ(roles.LastDocument(), Decoded({{"roles", simulator.Truth()["roles"]}}));
}

// A row's elements get their texts.
std::string Changed(std::string config, const std::string& elements) {
  for (const std::string& element : Split(elements, ";")) {
    const std::string name = element.substr(0, element.find(' '));
    const std::size_t from = config.find("<" + name + ">") + name.size() + 2;
    if (name.empty()) continue;
    const std::string text = element.substr(std::min(name.size() + 1, element.size()));
    config.replace(from, config.find("</" + name + ">") - from, text);
  }
  return config;
}

TEST(InventoryTool, FailsWithAReasonWhenThereIsNoInventory) {
  Simulator simulator({});
  const std::string config = simulator.Config();
  const std::size_t from = config.find("<url>") + 5;
  const std::string url = config.substr(from, config.find("</url>") - from);
  for (Row row : ReadRows(KECPP_TEST_DATA "/failures.txt")) {
    for (std::string& field : row) {
      field = std::regex_replace(field, std::regex("TLSURL"), "https" + url.substr(4));
      field = std::regex_replace(field, std::regex("URL"), url);
    }
    const Row fault = Split(row[0], " ");
    if (fault.size() == 3) {
      simulator.Control("fault", {{"method", fault[0]},
                                  {"kind", fault[1]},
                                  {"fault", "Unwilling"},
                                  {"count", std::stoi(fault[2])}});
    }
    Tool tool(Changed(config, row[1]), {"--format", "json"});
    EXPECT_EQ(tool.Wait(), 1) << row[2];
    EXPECT_THAT(tool.Errors(), testing::StartsWith("kecpp-inventory: " + row[2]));
    EXPECT_EQ(tool.Errors().find('\n'), tool.Errors().size() - 1) << "one line";
    EXPECT_EQ(tool.Output(), "");
    simulator.Control("fault", {{"kind", "clear"}});
  }
}

// The configured time-out is as long as the test waits.
TEST(InventoryTool, EndsInTimeWhateverItIsWaitingFor) {
  for (const char* method : {"RetrieveServiceContent", "AcquireLocalTicket", "Login",
                             "CreateFilter", "WaitForUpdates", "RetrieveAllPermissions"}) {
    SCOPED_TRACE(method);
    Simulator simulator({});
    simulator.Control("fault", {{"method", method}, {"kind", "hang"}});
    const bool byTime = method[0] == 'R';
    const std::vector<std::string> options = {"--format", "json", "--duration", "0.5"};
    Tool tool(simulator.Config(), {options.begin(), options.end() - (byTime ? 0 : 2)});
    EXPECT_TRUE(Eventually([&] { return simulator.Stats()["calls"].contains(method); }));
    if (!byTime) tool.Signal(method[0] == 'L' ? SIGINT : SIGTERM);
    EXPECT_EQ(tool.Wait(), 1);
    EXPECT_THAT(tool.Errors(),
                testing::AnyOf(HasSubstr(": interrupted\n"),
                               HasSubstr(": ended before the inventory was read\n")));
    if (*method == 'L') continue;  // the daemon may have let it in all the same
    EXPECT_EQ(simulator.Stats()["sessions"], 0) << "the tool logs out";
  }
}

// What a shell makes of the tool and its configuration: standard output and standard error.
std::pair<std::string, int> Shell(const Simulator& simulator, const std::string& command) {
  ChildProcess shell(
      {"/bin/sh", "-c", command, KECPP_TOOL_PROGRAM, simulator.ConfigFile(simulator.Config())});
  const int status = shell.Wait();
  return {shell.Output() + shell.Errors(), status};
}

TEST(InventoryTool, FailsWhenStandardOutputDoesNotTakeTheText) {
  Simulator simulator({});
  for (const char* options : {"--version", "--help", "--config \"$1\"", "--config \"$1\" --follow",
                              "--config \"$1\" --run-task StartTask:VirtualMachine:success"}) {
    const std::string command = std::string("exec \"$0\" ") + options;
    const auto [full, fullStatus] = Shell(simulator, command + " > /dev/full");
    EXPECT_EQ(fullStatus, 1) << options;
    EXPECT_EQ(full, "kecpp-inventory: cannot write to standard output\n") << options;
    const auto [closed, closedStatus] = Shell(simulator, command + " >&-");
    EXPECT_EQ(closedStatus, 1) << options;
    EXPECT_EQ(closed, "kecpp-inventory: standard output is closed\n") << options;
  }
}

TEST(InventoryTool, FitsTablesToATerminalAndNothingElse) {
  Simulator simulator({"--hosts", "1", "--machines", "1"});
  simulator.SetMachine("vm-1", "name", std::string(200, 'n'));
  const auto onTerminal = [&](const std::string& name) {
    return Shell(simulator, "export tool=\"$0\" config=\"$1\" TERM=" + name +
                                "; exec script -qec 'stty cols 40; \"$tool\" --config "
                                "\"$config\" --duration 1 --follow' /dev/null < /dev/null");
  };
  const auto [clever, status] = onTerminal("xterm");
  EXPECT_EQ(status, 0) << clever;
  EXPECT_THAT(clever, HasSubstr("\x1b[2J"));
  EXPECT_THAT(clever, HasSubstr("n\xe2\x80\xa6"));
  EXPECT_THAT(clever, testing::Not(HasSubstr(std::string(40, 'n'))));
  const std::string dumb = onTerminal("dumb").first;
  EXPECT_THAT(dumb, HasSubstr("n\xe2\x80\xa6"));
  EXPECT_THAT(dumb, testing::Not(HasSubstr("\x1b")));
  EXPECT_THAT(Shell(simulator, "\"$0\" --config \"$1\" | cat").first,
              HasSubstr(std::string(200, 'n')));
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
  EXPECT_THAT(tool.Errors(), testing::ContainsRegex(
                                 "connection lost .NotAuthenticated(; .*)?., connecting again"));
  EXPECT_THAT(tool.Errors(), HasSubstr("answer not understood"));
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(simulator.Stats()["sessions"], 0) << "the tool logs out";
}

// What a reader makes of the events, by key.
std::map<std::string, Json> Replayed(const std::string& events) {
  std::map<std::string, Json> machines;
  std::istringstream lines(events.substr(0, events.rfind('\n') + 1));
  for (std::string line; std::getline(lines, line);) {
    const Json event = Json::parse(line);
    if (event["change"] == "removed") {
      machines.erase(event["key"]);
    } else {
      machines[event["key"]] = event["object"];
    }
  }
  return machines;
}

TEST(Follow, EventsMakeTheTruthAndAreAsFewAsTheChanges) {
  Simulator simulator({"--hosts", "2", "--machines", "50"});
  Tool tool(simulator.Config(), {"--format", "events", "--show", "machines", "--follow"});
  const auto becomesTrue = [&] {
    return Eventually([&] {
      const auto machines = Replayed(tool.Output());
      Json list = Json::array();
      for (const auto& [key, machine] : machines) list.push_back(machine);
      return list == Decoded(simulator.Truth()["machines"]);
    });
  };
  ASSERT_TRUE(becomesTrue()) << tool.Errors();
  simulator.SetMachine("vm-1", "name", "R&amp;D");
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-2"}});
  EXPECT_TRUE(becomesTrue());
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  simulator.SetMachine("vm-3", "name", "again");
  EXPECT_TRUE(becomesTrue());
  const std::string events = tool.Output();
  EXPECT_EQ(std::count(events.begin(), events.end(), '\n'), 53) << events;
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
      for (std::size_t at = 0; (at = output.find(text, at)) != std::string::npos; ++at) ++found;
      return found >= times;
    });
  }
};

TEST(Examples, FollowMachinesAndLiveThroughALostSession) {
  Simulator simulator({"--hosts", "1", "--machines", "3"});
  Example agent("agent", simulator, {"5"}), follow("follow", simulator);
  ASSERT_TRUE(agent.Writes("added vm-", 3)) << agent.Errors();
  ASSERT_TRUE(follow.Writes("\n", 3)) << follow.Output() << follow.Errors();
  int entries = 0;
  for (const char* state : {"unheardOf", "unknown"}) {
    simulator.SetMachine("vm-1", "runtime.powerState", state);
    ASSERT_TRUE(agent.Writes("changed vm-1 ", ++entries)) << agent.Output();
    ASSERT_TRUE(follow.Writes(std::string(": ") + state + "\n", 1)) << follow.Output();
  }
  EXPECT_EQ(agent.Wait(), 0) << agent.Errors();
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["sessions"] == 1; }));
  simulator.Control("machine", {{"do", "remove"}, {"id", "vm-1"}});
  EXPECT_TRUE(follow.Writes("vm-1: gone\n", 1)) << follow.Output() << follow.Errors();
}

TEST(Examples, ListRolesWithTheirMembersAndWaitForTasks) {
  Simulator simulator({});
  Example roles("roles", simulator);
  EXPECT_EQ(roles.Wait(), 0) << roles.Errors();
  EXPECT_THAT(roles.Output(), HasSubstr("Op\n  gives P.Start P.View\n  held by ann\n"));
  Example success("task", simulator, {"StartTask", "VirtualMachine", "success"});
  EXPECT_EQ(success.Wait(), 0) << success.Errors();
  Example error("task", simulator, {"StartTask", "VirtualMachine", "error"});
  EXPECT_EQ(error.Wait(), 1) << error.Output();
}

}  // namespace
}  // namespace endtoend
