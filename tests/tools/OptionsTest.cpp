// SPDX-License-Identifier: MIT
#include "agent/Options.h"

#include <gtest/gtest.h>

#include <vector>

namespace inventory {
namespace {

std::optional<int> Parse(std::vector<const char*> words, Options& options) {
  words.insert(words.begin(), "kecpp-inventory");
  return ParseOptions(static_cast<int>(words.size()), words.data(), options);
}

TEST(Options, ShowsPeopleComputersAndProgramsEverything) {
  Options people;
  ASSERT_FALSE(Parse({}, people));
  EXPECT_TRUE(people.lists.Systems());
  EXPECT_FALSE(people.lists.Authorization());

  Options program;
  ASSERT_FALSE(Parse({"--format", "json"}, program));
  EXPECT_TRUE(program.json);
  EXPECT_TRUE(program.lists.Systems());
  EXPECT_TRUE(program.lists.Authorization());
  EXPECT_FALSE(program.wantsAuthorization);

  Options chosen;
  ASSERT_FALSE(Parse({"--format=json", "--show", "roles,hosts"}, chosen));
  EXPECT_TRUE(chosen.lists.hosts && chosen.lists.roles && chosen.wantsAuthorization);
  EXPECT_FALSE(chosen.lists.machines || chosen.lists.privileges || chosen.lists.identities);
}

TEST(Options, TakesAnXmlTextAndRefusesAFileThatIsNotThere) {
  Options options;
  EXPECT_FALSE(Parse({"--config", "<?xml version=\"1.0\"?><Config/>"}, options));
  EXPECT_EQ(Parse({"--config", "/nowhere/config.xml"}, options), 2);
}

TEST(Options, RefusesMistakes) {
  Options options;
  for (auto words : std::vector<std::vector<const char*>>{{"--format", "xml"},
                                                          {"--settle", "0"},
                                                          {"--duration", "-1"},
                                                          {"--log-level", "VERBOSE"},
                                                          {"--show", "hosts,things"},
                                                          {"--run-task", "Start:VirtualMachine"},
                                                          {"--unknown"}}) {
    EXPECT_EQ(Parse(words, options), 2) << words.front();
  }
}

TEST(Options, SplitsATaskAtTheFirstTwoColons) {
  auto call = ParseTaskCall("StartTask:VirtualMachine:vm:1");
  ASSERT_TRUE(call);
  EXPECT_EQ(call->method, "StartTask");
  EXPECT_EQ(call->type, "VirtualMachine");
  EXPECT_EQ(call->value, "vm:1");
  EXPECT_FALSE(ParseTaskCall("StartTask::vm"));
  EXPECT_FALSE(ParseTaskCall(""));
}

}  // namespace
}  // namespace inventory
