// SPDX-License-Identifier: MIT
//
// The client with a real cluster of one member.
#include <gmock/gmock.h>
#include <signal.h>

#include "fleet/Base64.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "simulator/driver/EtcdCluster.h"

namespace kecpp::fleet {
namespace {

using driver::Eventually;

#define SKIP_WITHOUT_ETCD() \
  if (driver::EtcdCluster::Programs().empty()) GTEST_SKIP() << "scripts/etcd cannot have etcd"

EtcdOptions To(const std::string& members) {
  EtcdOptions options;
  options.members = ParseMembers(members);
  options.limit = std::chrono::seconds(2);
  return options;
}

bool Put(EtcdClient& client, const std::string& key, const std::string& value,
         std::int64_t expected) {
  Transaction put;
  put.Compare(key, expected);
  put.Put(key, value);
  put.ElseGet(key);
  return client.Commit(put).succeeded;
}

std::string WatchFrom(std::int64_t revision) {
  return R"({"create_request":{"key":"AA==","range_end":"AA==","start_revision":")" +
         std::to_string(revision) + "\"}}";
}

TEST(EtcdClient, ComparesPagesAndWatches) {
  SKIP_WITHOUT_ETCD();
  driver::EtcdCluster cluster(1);
  EtcdClient client(To(cluster.Urls()));
  const std::string any("a\0\xff/", 4);
  EXPECT_TRUE(Put(client, any, any, 0));
  EXPECT_FALSE(Put(client, any, "other", 0));

  Transaction look;
  look.Get(any);
  look.Get("none");
  const TransactionResult seen = client.Commit(look);
  ASSERT_EQ(seen.read.size(), 2U);
  EXPECT_EQ(seen.read[0]->value, any);
  EXPECT_FALSE(seen.read[1]);
  EXPECT_TRUE(Put(client, any, "", seen.read[0]->revision));

  for (int batch = 0; batch < 11; ++batch) {
    Transaction many;
    for (int i = 0; i < 100; ++i) many.Put("p/" + std::to_string(1000 + 100 * batch + i), "v");
    EXPECT_TRUE(client.Commit(many).succeeded);
  }
  std::vector<std::string> keys;
  ReadPrefix(client, "p/", [&](KeyValue&& entry) { keys.push_back(entry.key); });
  EXPECT_EQ(keys.size(), 1100U);
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));

  std::size_t events = 0;
  client.Stream("watch", WatchFrom(1), std::chrono::seconds(5), [&](const nlohmann::json& line) {
    const auto found = line.find("events");
    if (found != line.end()) events += found->size();
    return events < 1102;
  });
  EXPECT_EQ(events, 1102U);
  EXPECT_THROW(client.Stream("watch", WatchFrom(0), std::chrono::seconds(1),
                             [](const nlohmann::json&) { return true; }),
               EtcdError);
}

// Which outcomes are known decides whether something may be written again.
TEST(EtcdClient, KnowsWhatCannotHaveBeenCarriedOut) {
  SKIP_WITHOUT_ETCD();
  driver::EtcdCluster cluster(1);
  const auto outcome = [](EtcdClient& client) {
    try {
      Put(client, "k", "v", 0);
      return "done";
    } catch (const EtcdError& error) {
      return error.IsUncertain() ? "uncertain" : "not done";
    }
  };
  EtcdClient client(To("http://127.0.0.1:1," + cluster.Urls()));
  EXPECT_STREQ(outcome(client), "not done");  // and the next member is asked
  EXPECT_STREQ(outcome(client), "done");
  cluster.Signal(0, SIGSTOP);
  EXPECT_STREQ(outcome(client), "uncertain");
  cluster.Signal(0, SIGCONT);
  Transaction twice;
  twice.Put("k", "v");
  twice.Put("k", "v");
  try {
    EtcdClient again(To(cluster.Urls()));
    again.Commit(twice);
    ADD_FAILURE();
  } catch (const EtcdError& error) {
    EXPECT_FALSE(error.IsUncertain()) << error.what();
  }
  client.Cut();
  EXPECT_THROW(client.Call("kv/range", "{}"), EtcdError);
}

TEST(EtcdClient, LogsInAndLogsInAgain) {
  SKIP_WITHOUT_ETCD();
  driver::EtcdCluster cluster(1);
  EtcdOptions options = To(cluster.Urls());
  options.user = "root";
  options.password = "secret \"word\"";
  EtcdClient client(options);
  EXPECT_TRUE(Put(client, "before", "users", 0));  // nobody has to log in yet
  ASSERT_EQ(cluster.Ctl({"user", "add", "root:" + options.password}), 0);
  ASSERT_EQ(cluster.Ctl({"auth", "enable"}), 0);
  EXPECT_TRUE(Put(client, "k", "1", 0));
  cluster.Kill(0);  // its tokens are in its memory
  cluster.Start(0);
  ASSERT_TRUE(cluster.Answers(0));
  ASSERT_TRUE(Eventually([&] {
    try {
      Put(client, "k", "2", 0);
      return true;
    } catch (const EtcdError&) {
      return false;
    }
  }));
  options.password = "wrong";
  EtcdClient wrong(options);
  EXPECT_THROW(Put(wrong, "k", "3", 0), EtcdError);
}

}  // namespace
}  // namespace kecpp::fleet
