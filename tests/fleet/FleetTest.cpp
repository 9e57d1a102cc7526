// SPDX-License-Identifier: MIT
//
// What a Fleet knows and gives its followers, beside a plain model.
#include <gmock/gmock.h>
#include <kecpp/fleet.h>
#include <signal.h>

#include <random>
#include <set>
#include <tuple>

#include "FakeGateway.h"
#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "fleet/Watch.h"
#include "simulator/driver/EtcdCluster.h"

namespace kecpp::fleet {
namespace {

using driver::Eventually;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string KeyOf(const std::string& site, Kind kind, const std::string& key) {
  return ObjectsOf(site) + ObjectPart(kind, key);
}
std::string Text(const Object& object) {
  return ObjectText("s", object).Whole(1, TimeText(1000));
}
Machine OnHost(const std::string& key, const std::optional<std::string>& host,
               unsigned status = 2) {
  return {key, "n" + key, "", "", "", "", "", "", "", PowerState::unknown, status, host};
}

std::string Written(const FleetChange& change) {
  constexpr const char* kTypes[] = {"+", "~", "-"};
  return kTypes[static_cast<int>(change.type)] + change.site +
         (change.kind ? std::string("/") + NameOf(*change.kind) + '/' + change.key : "");
}
std::vector<std::string> Taken(FleetFollower& follower) {
  std::vector<std::string> taken;
  for (const FleetChange& change : follower.Next()) taken.push_back(Written(change));
  return taken;
}
// What comes until `last` does.
std::set<std::string> Until(FleetFollower& follower, const std::string& last) {
  std::set<std::string> all;
  while (all.count(last) == 0 && follower.Wait(seconds(60))) {
    for (std::string& one : Taken(follower)) all.insert(std::move(one));
  }
  return all;
}

TEST(Fleet, GoesOnBehindTheLastEventHoweverAWatchEnds) {
  FakeGateway member;
  member.Change(KeyOf("a", Kind::host, "h"), Text(Host{"h", "", "", "", "", "", 2, {}}));
  member.Change(LivingOf("a"), "{}");
  const auto machine = [&](const std::string& key) {
    return member.Change(KeyOf("a", Kind::machine, key), Text(OnHost(key, "h")));
  };
  member.Push([&] {
    const std::string error = R"({"error":{"grpc_code":14,"message":"server is stopping"}})";
    return FakeGateway::Stream(machine("1") + error + '\n').AndClose();
  });
  member.Push([&] { return FakeGateway::Stream(machine("2")).AndClose(); });
  member.Push([&] { return FakeGateway::Stream(machine("3")).Hanging(FakeGateway::kAll); });
  Fleet fleet({"http://127.0.0.1:1," + member.Url(), "a*"});
  FleetFollower follower = fleet.Follow();
  EXPECT_TRUE(Eventually([&] { return fleet.Count("a", Kind::machine) == 3; }));
  ASSERT_TRUE(Eventually([&] { return member.Watches() == 4; }));  // after the silence
  EXPECT_EQ(fleet.State().readings, 1U);
  EXPECT_EQ(fleet.State().state, FleetStatus::State::connected);
  EXPECT_THAT(member.From(1), ElementsAre("14", "13", "13"));
  EXPECT_THAT(member.From(3), ElementsAre("16", "13", "13"));
  EXPECT_TRUE(member.AllAskForALeader());
  EXPECT_THAT(fleet.FindHost("a", "h")->machines, ElementsAre("1", "2", "3"));
  EXPECT_EQ(Taken(follower).size(), 5U);
  fleet.Close();
  EXPECT_TRUE(follower.Closed());
  EXPECT_TRUE(fleet.Follow().Closed());
  EXPECT_FALSE(follower.Wait(seconds(60)));
}

// Whether events are missing or the cluster is another one: followers get what differs.
TEST(Fleet, GivesWhatDiffersWhenEverythingIsReadAgain) {
  FakeGateway member;
  const auto put = [&](const std::string& key, const Object& object) {
    return member.Change(KeyOf("a", static_cast<Kind>(object.index()), key), Text(object));
  };
  for (const char* key : {"h1", "h2"}) put(key, Host{key, "", "", "", "", "", 2, {}});
  for (const char* key : {"1", "2", "3", "4"}) put(key, OnHost(key, "h1"));
  member.Change(LivingOf("b"), "{}");
  std::atomic<int> step{0};
  const auto wait = [&](int until) { return Eventually([&] { return step >= until; }); };
  member.Push([&] {
    wait(1);
    put("1", OnHost("1", "h2"));
    member.Change(KeyOf("a", Kind::machine, "2"), "");
    put("3", OnHost("3", "h1", 6));
    put("5", OnHost("5", {}));
    member.Change(LivingOf("b"), "");
    return FakeGateway::Stream(
               member.Line({{"watch_id", "1"}, {"canceled", true}, {"compact_revision", "99"}}))
        .Hanging(1 << 30);
  });
  member.Push([&] {
    wait(2);
    member.Become("7", 3);  // a backup was restored
    member.Change(KeyOf("a", Kind::machine, "4"), "");
    return FakeGateway::Stream("").AndClose();
  });
  member.Push([&] {
    wait(3);
    member.Become("8", 99);
    put("6", OnHost("6", {}));
    return FakeGateway::Stream("").AndClose();
  });
  Fleet fleet({member.Url()});
  FleetFollower follower = fleet.Follow();
  FleetFollower late = fleet.Follow();
  EXPECT_EQ(Until(follower, "+b").size(), 8U);
  EXPECT_EQ(late.Next(3).size(), 3U);  // it is still on its first walk
  step = 1;
  EXPECT_THAT(Until(follower, "-b"),
              testing::UnorderedElementsAre("~a/machine/1", "~a/host/h1", "~a/host/h2",
                                            "-a/machine/2", "~a/machine/3", "+a/machine/5", "-b"));
  step = 2;
  EXPECT_THAT(Until(follower, "~a/host/h1"), ElementsAre("-a/machine/4", "~a/host/h1"));
  step = 3;
  EXPECT_THAT(Until(follower, "+a/machine/6"), ElementsAre("+a/machine/6"));
  EXPECT_TRUE(Eventually([&] { return fleet.State().readings == 4; }));
  std::vector<std::string> rest = Taken(late);  // of the first walk
  for (std::string& one : Taken(late)) rest.push_back(std::move(one));
  EXPECT_THAT(rest, ElementsAre("+a/machine/1", "+a/machine/3", "+a/machine/5", "+a/machine/6",
                                "~a/host/h1", "~a/host/h2"));
}

TEST(Fleet, LogsInAgainAndPassesOverWhatItCannotRead) {
  FakeGateway member;
  member.RefuseTokens(1);
  member.Change(KeyOf("a", Kind::machine, "m"), Text(OnHost("m", "h")));
  member.Change(KeyOf("a", Kind::machine, "broken"), "{\"schema\":1,");
  member.Change(KeyOf("a", Kind::machine, "long"), std::string(kLongestDocument + 1, ' '));
  member.Change("inv/a/machine/%2f", Text(OnHost("x", {})));
  member.Change(SiteOf("a"), "[]");
  member.Change(SiteOf("other"), ToText(SiteDocument{}));
  member.Change(KeyOf("a", Kind::role, "r"), Text(Role{"r", "", "", "", "", {"p", "p"}, {}}));
  member.Push([&] {
    const auto identity = Identity{"i", {"r", "q", "r"}};
    return FakeGateway::Stream(member.Change(KeyOf("a", Kind::identity, "i"), Text(identity)) +
                               "\n[]\n" + member.Change(KeyOf("a", Kind::machine, "m"), "?"))
        .Hanging(FakeGateway::kAll);
  });
  FleetOptions options{member.Url(), "a"};
  options.user = "reader";
  Fleet fleet(options);
  EXPECT_TRUE(Eventually([&] { return fleet.Count(Kind::machine) == 0; }));
  EXPECT_EQ(member.Logins(), 2U);
  EXPECT_EQ(fleet.Sites().size(), 1U);
  EXPECT_THAT(fleet.FindRole("a", "r")->identities, ElementsAre("i"));
  EXPECT_THAT(fleet.FindRole("a", "r")->privileges, ElementsAre("p"));
  EXPECT_THAT(fleet.FindIdentity("a", "i")->roles, ElementsAre("q", "r"));
  EXPECT_EQ(fleet.State().skipped, 5U);
  EXPECT_THAT(fleet.State().lastSkipped, HasSubstr("inv/a/machine/m: no document"));

  const auto reason = [](const std::string& members) -> std::string {
    try {
      Fleet none({members});
      return "";
    } catch (const Error& error) {
      return error.what();
    }
  };
  EXPECT_THAT(reason("ftp://a"), HasSubstr("expected http(s)://"));
  EXPECT_THAT(reason("http://127.0.0.1:1"), HasSubstr("http://127.0.0.1:1: "));
}

// A site that is in two clusters is two.
TEST(Fleet, IsShownOfSeveralClustersTogether) {
  FakeGateway clusters[2];
  for (FakeGateway& member : clusters) {
    member.Change(KeyOf("b", Kind::machine, "m"), Text(OnHost("m", {})));
  }
  clusters[1].Change(KeyOf("a", Kind::machine, "m"), Text(OnHost("m", {})));
  const std::string one = clusters[0].Url();
  const std::string other = clusters[1].Url();
  driver::ChildProcess tool({KECPP_TOOL_PROGRAM, "--fleet", one + ",http://127.0.0.1:1", "--fleet",
                             other, "--format", "json"});
  ASSERT_EQ(tool.Wait(), 0) << tool.Errors();
  const auto shown = nlohmann::json::parse(tool.Output());
  const auto owners = [&](const char* list) {
    std::vector<std::string> all;
    for (const auto& item : shown[list]) {
      all.push_back(item["site"].get<std::string>() + ' ' + item["cluster"].get<std::string>());
    }
    return all;
  };
  EXPECT_THAT(owners("sites"), ElementsAre("a " + other, "b " + one, "b " + other));
  EXPECT_EQ(owners("machines"), owners("sites"));
  driver::ChildProcess twice({KECPP_TOOL_PROGRAM, "--fleet", one, "--fleet", one + ',' + other});
  EXPECT_EQ(twice.Wait(), 2);
}

TEST(Fleet, KnowsHowTrueASiteIs) {
  FakeGateway member;
  SiteDocument document{3, "1.1", true, true, 1, TimeText(5000)};
  member.Change(SiteOf("a/b"), ToText(document));
  member.Change(SiteOf("old"), ToText(document));
  member.Change(KeyOf("old", Kind::privilege, "p"), Text(Privilege{"p", "", {}}));
  member.Change(LivingOf("a/b"), "{}");
  member.Push([&] {
    return FakeGateway::Stream(member.Change(LivingOf("a/b"), "")).Hanging(FakeGateway::kAll);
  });
  const auto begin = std::chrono::system_clock::now();
  Fleet fleet({member.Url()});
  FleetFollower follower = fleet.Follow();
  ASSERT_TRUE(Eventually([&] { return !fleet.FindSite("a/b")->isLive; }));
  const Site site = *fleet.FindSite("a/b");
  EXPECT_GT(site.asOf, begin - seconds(60));
  EXPECT_LT(site.asOf, begin);  // the lease outlives the publisher
  EXPECT_EQ(site.epoch, 3U);
  const auto old = *fleet.FindSite("old");
  EXPECT_EQ(old.asOf, std::chrono::system_clock::time_point(seconds(5)));
  EXPECT_EQ(old.objects, 1U);
  EXPECT_FALSE(old.IsTrue());
}

// A plain model that is changed at random beside the cluster; its links are found by looking at
// every object.
class Model {
 public:
  explicit Model(std::string members) : client({ParseMembers(members), {}, "", ""}) {}

  void Step(std::mt19937& random) {
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const std::string site = std::string(1, static_cast<char>('a' + below(3)));
    const auto kind = static_cast<Kind>(below(5));
    const std::string key = std::to_string(below(12));
    const auto place = std::make_tuple(site, kind, key);
    objects.erase(place);
    Transaction write;
    if (below(3) == 0) {
      write.Remove(KeyOf(site, kind, key));
    } else {
      objects[place] = Made(kind, key, below);
      write.Put(KeyOf(site, kind, key), Text(objects[place]));
    }
    client.Commit(write);
  }

  void Compact() {
    const auto revision = ReadPosition(client, "x").revision;
    client.Call("kv/compaction", R"({"revision":")" + std::to_string(revision) + "\"}");
  }

  // With derived links.
  std::map<std::tuple<std::string, Kind, std::string>, Object> Whole() const {
    auto whole = objects;
    for (const auto& [place, object] : objects) {
      const auto& [site, kind, key] = place;
      const auto link = [&, &in = site, &from = key](Kind to, const std::string& end, auto add) {
        const auto found = whole.find({in, to, end});
        if (found != whole.end()) add(found->second, from);
      };
      if (const auto* machine = std::get_if<Machine>(&object)) {
        if (machine->host) {
          link(Kind::host, *machine->host,
               [](Object& to, auto& from) { std::get<Host>(to).machines.push_back(from); });
        }
      } else if (const auto* role = std::get_if<Role>(&object)) {
        for (const auto& end : role->privileges) {
          link(Kind::privilege, end,
               [](Object& to, auto& from) { std::get<Privilege>(to).roles.push_back(from); });
        }
      } else if (const auto* identity = std::get_if<Identity>(&object)) {
        for (const auto& end : identity->roles) {
          link(Kind::role, end,
               [](Object& to, auto& from) { std::get<Role>(to).identities.push_back(from); });
        }
      }
    }
    return whole;
  }

 private:
  template <class Below>
  static Object Made(Kind kind, const std::string& key, Below below) {
    std::vector<std::string> links = {std::to_string(below(6)), std::to_string(6 + below(6))};
    std::sort(links.begin(), links.end());
    switch (kind) {
      case Kind::host:
        return Host{key, "", "", "", "", "", below(2), {}};
      case Kind::machine:
        return OnHost(key, links[0], below(2));
      case Kind::role:
        return Role{key, "", "", "", "", links, {}};
      case Kind::privilege:
        return Privilege{key, below(2) ? "x" : "y", {}};
      default:
        return Identity{key, links};
    }
  }

  EtcdClient client;
  std::map<std::tuple<std::string, Kind, std::string>, Object> objects;
};

std::optional<Object> Found(const Fleet& fleet, const FleetChange& change) {
  const auto found = [&](auto object) -> std::optional<Object> {
    return fleet.Find<decltype(object)>(change.site, change.key);
  };
  switch (*change.kind) {
    case Kind::host:
      return found(Host());
    case Kind::machine:
      return found(Machine());
    case Kind::role:
      return found(Role());
    case Kind::privilege:
      return found(Privilege());
    default:
      return found(Identity());
  }
}

// What a reader has who takes over nothing but what a follower names.
class Mirror {
 public:
  explicit Mirror(const Fleet& from) : fleet(from), follower(from.Follow()) {}

  void Take(std::size_t most) {
    for (const FleetChange& change : follower.Next(most)) {
      if (!change.kind) continue;
      const auto place = std::make_tuple(change.site, *change.kind, change.key);
      EXPECT_EQ(objects.count(place), change.type == Change::Type::added ? 0U : 1U)
          << Written(change);
      objects.erase(place);
      if (change.type == Change::Type::removed) continue;
      // An object that has gone since is named again.
      objects[place] = Found(fleet, change).value_or(Host());
    }
  }

  const Fleet& fleet;
  FleetFollower follower;
  std::map<std::tuple<std::string, Kind, std::string>, Object> objects;
};

TEST(Fleet, FollowersAgreeWithTheClusterThroughKillsAndCompactions) {
  if (driver::EtcdCluster::Programs().empty()) GTEST_SKIP() << "scripts/etcd cannot have etcd";
  driver::EtcdCluster cluster(1);
  std::mt19937 random(18);
  Model model(cluster.Urls());
  for (int i = 0; i < 100; ++i) model.Step(random);
  Fleet fleet({cluster.Urls()});
  Mirror quick(fleet);
  Mirror slow(fleet);
  for (int round = 0; round < 4; ++round) {
    if (round % 2 == 1) {
      cluster.Kill(0);
      cluster.Start(0);
      ASSERT_TRUE(cluster.Answers(0));
      Eventually([&] {
        try {
          return model.Step(random), true;
        } catch (const EtcdError&) {
          return false;
        }
      });
      model.Compact();  // mostly before the reader is back
    }
    for (int i = 0; i < 200; ++i) {
      model.Step(random);
      quick.Take(1000);
      if (i % 7 == 0) slow.Take(2);
    }
    const auto truth = model.Whole();
    EXPECT_TRUE(Eventually([&] {
      quick.Take(1000);
      return quick.objects == truth;
    }));
  }
  while (slow.follower.Wait(std::chrono::milliseconds(1))) slow.Take(7);
  EXPECT_TRUE(slow.objects == model.Whole());
  std::size_t count = 0;
  fleet.ForEach<Machine>([&](const std::string&, const Machine&) { ++count; });
  EXPECT_EQ(count, fleet.Count(Kind::machine));
}

}  // namespace
}  // namespace kecpp::fleet
