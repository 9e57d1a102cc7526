// SPDX-License-Identifier: MIT
//
// kecpp-publish and kecpp-publish-setup as processes, with a real cluster of one member.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

#include "endurance/Replay.h"
#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "simulator/driver/EtcdCluster.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"
#include "support/ServiceMessages.h"

namespace kecpp::fleet {
namespace {

using driver::ChildProcess;
using driver::Eventually;
using driver::Json;
using testing::HasSubstr;
using Words = std::vector<std::string>;

class Publish : public testing::Test {
 protected:
  void SetUp() override {
    if (driver::EtcdCluster::Programs().empty()) GTEST_SKIP() << "scripts/etcd cannot have etcd";
  }

  void StartCluster(const Words& options = {}) {
    cluster = std::make_unique<driver::EtcdCluster>(1, options);
    client = std::make_unique<EtcdClient>(Options());
  }

  EtcdOptions Options(const std::string& credentials = {}) const {
    EtcdOptions options;
    options.members = {cluster->Url(0)};
    options.tls.authorities = cluster->Certificate(0);
    if (options.members[0].compare(0, 5, "https") != 0) options.tls = {};
    if (credentials.empty()) return options;
    std::ifstream file(credentials);
    std::getline(file, options.user, ':');
    std::getline(file, options.password);
    return options;
  }

  Words Command(const std::string& site) const {
    return {KECPP_PUBLISH_PROGRAM, "--config", simulator.Config(), "--site", site, "--to",
            cluster->Urls()};
  }
  std::unique_ptr<ChildProcess> Start(const std::string& site, const Words& more = {}) const {
    return std::make_unique<ChildProcess>(Command(site), more);
  }

  static std::optional<KeyValue> Get(EtcdClient& from, const std::string& key) {
    Transaction look;
    look.Get(key);
    return from.Commit(look).read.front();
  }

  static bool Put(EtcdClient& to, const std::string& key, const std::string& value) {
    Transaction put;
    put.Put(key, value);
    try {
      return to.Commit(put).succeeded;
    } catch (const EtcdError&) {
      return false;
    }
  }

  SiteDocument Site(const std::string& site) const {
    const auto found = Get(*client, SiteOf(site));
    return (found ? ReadSite(found->value) : std::nullopt).value_or(SiteDocument());
  }

  std::size_t Count(const std::string& site) const {
    std::size_t count = 0;
    ReadPrefix(*client, ObjectsOf(site), [&](KeyValue&&) { ++count; });
    return count;
  }

  driver::Simulator simulator{Words{"--hosts", "2", "--machines", "8"}};
  driver::TemporaryFolder folder;
  std::unique_ptr<driver::EtcdCluster> cluster;
  std::unique_ptr<EtcdClient> client;
};

// A publisher that starts knows only the first part of what such a daemon reports.
TEST_F(Publish, RemovesNothingThatTheDaemonHasYetToReport) {
  StartCluster();
  driver::Simulator inParts(Words{"--machines", "20", "--max-objects", "1"});
  Words command = Command("s");
  command[2] = inParts.Config();
  const auto objects = [&] {
    std::map<std::string, std::int64_t> revisions;
    ReadPrefix(*client, ObjectsOf("s"), [&](KeyValue&& entry) {
      if (entry.key.find("/machine/") != std::string::npos) revisions[entry.key] = entry.revision;
    });
    return revisions;
  };
  const auto first = std::make_unique<ChildProcess>(command);
  ASSERT_TRUE(Eventually([&] { return objects().size() == 20; }));
  const auto published = objects();
  const std::uint64_t epoch = Site("s").epoch;
  inParts.Control("fault", {{"method", "WaitForUpdates"}, {"kind", "drip"}, {"count", 40}});
  const ChildProcess second(command);
  ASSERT_TRUE(Eventually([&] { return Site("s").epoch > epoch && Site("s").isComplete; }));
  EXPECT_EQ(objects(), published);
}

// What is wrong in the cluster is put right; what a lost daemon had stays.
TEST_F(Publish, MakesTheClusterTrueAndKeepsWhatALostDaemonHad) {
  StartCluster();
  const std::string machine = ObjectsOf("s") + ObjectPart(Kind::machine, "vm-1");
  const auto known = [&] { return Get(*client, machine).value_or(KeyValue()).value; };
  for (const std::string& wrong :
       {ObjectsOf("s") + "machine/ghost", ObjectsOf("s") + "odd", machine}) {
    ASSERT_TRUE(Put(*client, wrong, "{}"));
  }
  const auto publisher = Start("s", {"--metrics", "0"});
  ASSERT_TRUE(Eventually([&] { return Site("s").isComplete; }));
  const std::size_t objects = Site("s").objects;
  EXPECT_EQ(Count("s"), objects);
  EXPECT_FALSE(Get(*client, ObjectsOf("s") + "machine/ghost"));
  EXPECT_THAT(known(), HasSubstr("\"properties\""));
  EXPECT_TRUE(Get(*client, LivingOf("s")));

  const std::string metrics = publisher->AwaitUrl();
  const auto measured = [&] {
    ChildProcess curl({"/usr/bin/curl", "-s", metrics});
    EXPECT_EQ(curl.Wait(), 0);
    return curl.Output();
  };
  EXPECT_THAT(measured(), HasSubstr("\nkecpp_publish_objects " + std::to_string(objects) + "\n"));
  ChildProcess page({"/usr/bin/curl", "-sf", "-H", "Host: page.example", metrics});
  EXPECT_NE(page.Wait(), 0);

  simulator.SetMachine("vm-1", "name", "another");
  EXPECT_TRUE(Eventually([&] { return known().find("another") != std::string::npos; }));
  // A hand that writes where the publisher does is found when that writes next.
  ASSERT_TRUE(Put(*client, machine, "{}"));
  simulator.SetMachine("vm-1", "name", "a third");
  EXPECT_TRUE(Eventually([&] { return known().find("a third") != std::string::npos; }));

  // So is a cluster that has lost everything.
  ASSERT_EQ(cluster->Ctl({"del", "", "--from-key=true"}), 0);
  simulator.SetMachine("vm-1", "name", "a fourth");
  EXPECT_TRUE(Eventually([&] { return Site("s").isComplete && Count("s") == objects; }));
  EXPECT_TRUE(Eventually([&] { return Get(*client, LivingOf("s")).has_value(); }));

  // One that is away is no reason to be busy, though there is something to write.
  cluster->Kill(0);
  int changes = 0;
  const auto isWaiting = [&] {
    simulator.SetMachine("vm-2", "name", std::to_string(++changes));
    const std::string now = measured();
    return now.find("\nkecpp_publish_failing 1\n") != std::string::npos &&
           now.find("\nkecpp_publish_behind_objects 1\n") != std::string::npos;
  };
  ASSERT_TRUE(Eventually(isWaiting));
  const auto processorTime = [&] {
    return SampleOf("/proc/" + std::to_string(publisher->Pid())).cpuSeconds;
  };
  const double before = processorTime();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_LT(processorTime() - before, 0.2);
  cluster->Start(0);
  ASSERT_TRUE(cluster->Answers(0));

  simulator.Control("quit");
  EXPECT_TRUE(Eventually([&] { return !Site("s").isConnected; }));
  EXPECT_EQ(Count("s"), objects);
  publisher->Signal(SIGTERM);
  EXPECT_EQ(publisher->Wait(), 0);
  EXPECT_FALSE(Get(*client, LivingOf("s")));
  EXPECT_EQ(Count("s"), objects);
}

// What the last line of JSON of the inventory tool has, as the daemon would write it.
Json LastShown(const ChildProcess& tool) {
  const std::string text = tool.Output();
  const std::size_t end = text.rfind('\n');
  if (end == std::string::npos) return nullptr;
  const std::size_t before = end == 0 ? std::string::npos : text.rfind('\n', end - 1);
  const std::size_t begin = before == std::string::npos ? 0 : before + 1;
  Json document = Json::parse(text.substr(begin, end - begin));
  document.erase("sites");
  for (Json& list : document) {
    for (Json& object : list) EXPECT_EQ(object.erase("site"), 1U);
  }
  return document;
}

TEST_F(Publish, ReadersFollowTheDaemonThroughTheCluster) {
  StartCluster();
  cluster->Signal(0, SIGSTOP);
  ServiceMessages systemd;
  ChildProcess publisher({"/bin/sh", "-c", systemd.Exports() + "exec \"$0\" \"$@\""}, Command("s"));
  EXPECT_TRUE(systemd.Says("STATUS=trying to reach the cluster again"));
  EXPECT_TRUE(systemd.Says("WATCHDOG=1"));
  EXPECT_THAT(systemd.said, testing::Not(HasSubstr("READY=1"))) << "nothing is in the cluster yet";
  cluster->Signal(0, SIGCONT);
  ASSERT_TRUE(systemd.Says("READY=1\nSTATUS=publishing\n")) << publisher.Errors();
  EXPECT_TRUE(Eventually([&] { return Site("s").isComplete; }));
  ChildProcess tool({KECPP_TOOL_PROGRAM, "--fleet", cluster->Urls(), "--site", "s", "--format",
                     "json", "--follow"});
  ASSERT_TRUE(Eventually([&] { return !LastShown(tool).is_null(); })) << tool.Errors();
  simulator.Control("churn", {{"rate", 200}});
  cluster->Kill(0);
  EXPECT_TRUE(Eventually([&] { return tool.Errors().find("cluster lost") != std::string::npos; }));
  cluster->Start(0);
  ASSERT_TRUE(cluster->Answers(0));
  simulator.Control("churn", {{"rate", 0}});
  const Json truth = endurance::Decoded(simulator.Truth());
  EXPECT_TRUE(Eventually([&] { return LastShown(tool) == truth; }));
  publisher.Signal(SIGTERM);
  EXPECT_TRUE(systemd.Says("STOPPING=1"));
  tool.Signal(SIGTERM);
  EXPECT_EQ(tool.Wait(), 0);
}

TEST_F(Publish, ASiteCannotTouchAnother) {
  StartCluster({"--auto-tls"});
  const auto setUp = [&](Words words) {
    Words command = {KECPP_PUBLISH_SETUP, "--to", cluster->Url(0), "--ca", cluster->Certificate(0)};
    if (words[0] != "enable") {
      command.insert(command.end(), {"--credentials", folder.path + "/root"});
    }
    ChildProcess script(command, words);
    EXPECT_EQ(script.Wait(), 0) << script.Errors();
  };
  const auto file = [&](const char* name) { return folder.path + '/' + name; };
  setUp({"enable", file("root")});
  setUp({"site", "berlin 1/\xc3\xa4", file("berlin")});
  setUp({"site", "berlin 1", file("near")});
  setUp({"reader", "ann", file("ann")});
  setUp({"reader", "ann", file("ann")});  // again
  struct stat status = {};
  ASSERT_EQ(stat(file("berlin").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 077, 0U);

  const std::string site = "berlin 1/\xc3\xa4";
  const auto publisher =
      Start(site, {"--credentials", file("berlin"), "--ca", cluster->Certificate(0)});
  client = std::make_unique<EtcdClient>(Options(file("ann")));
  ASSERT_TRUE(Eventually([&] { return Site(site).isComplete; })) << publisher->Errors();
  EXPECT_EQ(Count(site), Site(site).objects);
  EXPECT_FALSE(Put(*client, SiteOf(site), "{}"));

  EtcdClient thief(Options(file("near")));
  EXPECT_TRUE(Put(thief, ObjectsOf("berlin 1") + "host/h", "{}"));
  for (const std::string& key :
       {ObjectsOf(site) + "host/h", EpochOf(site), SiteOf(site), LivingOf(site),
        ObjectsOf("berlin"), std::string("inv/"), std::string("other")}) {
    EXPECT_FALSE(Put(thief, key, "{}")) << key;
    EXPECT_THROW(Get(thief, key), EtcdError) << key;
  }
  const nlohmann::json all = thief.Call("lease/leases", "{}");
  ASSERT_EQ(all["leases"].size(), 1U);
  EXPECT_THROW(thief.Call("lease/revoke", all["leases"][0].dump()), EtcdError);
  setUp({"site", "berlin 1", file("new")});  // another password ends the thief's login
  EXPECT_FALSE(Put(thief, ObjectsOf("berlin 1") + "host/h", "{}"));
  EtcdOptions unsure = Options();
  unsure.tls = {};
  EXPECT_THROW(EtcdClient(unsure).Call("kv/range", R"({"key":"YQ=="})"), EtcdError);
}

// What the lines of events say of each object last: how many lines that takes is a matter of when
// the daemon told which object.
std::map<std::string, std::string> LastWords(const std::string& events) {
  std::map<std::string, std::string> words;
  std::istringstream lines(events);
  for (std::string line; std::getline(lines, line);) {
    const auto event = nlohmann::ordered_json::parse(line);
    words[event.at("kind").dump() + event.at("key").dump()] = event.at("object").dump();
  }
  return words;
}

TEST_F(Publish, PrintsTheEventsOfTheInventoryTool) {
  const Words common = {"--config", simulator.Config(), "--duration", "2"};
  ChildProcess publisher({KECPP_PUBLISH_PROGRAM}, common);
  ChildProcess tool({KECPP_TOOL_PROGRAM, "--format", "events", "--follow"}, common);
  EXPECT_EQ(publisher.Wait(), 0);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_THAT(publisher.Output(), HasSubstr("\"vm-1\""));
  EXPECT_EQ(LastWords(publisher.Output()), LastWords(tool.Output()));
}

}  // namespace
}  // namespace kecpp::fleet
