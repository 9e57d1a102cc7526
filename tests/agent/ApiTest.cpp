// SPDX-License-Identifier: MIT
//
// The interface for programs: lists and their cursors against a model and among changes, what
// clients may send, and streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <kecpp/inventory.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "agent/AgentProcess.h"
#include "agent/RawClient.h"
#include "simulator/driver/Simulator.h"
#include "tools/agent/api/ChangeStream.h"
#include "tools/agent/api/PageCursor.h"
#include "tools/agent/api/Problem.h"
#include "tools/agent/api/Recorder.h"
#include "tools/agent/api/TextOrder.h"

namespace agenttest {
namespace {

using driver::Eventually;
using driver::Simulator;
using kecpp::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using namespace tools::agent::api;

std::string Sortable(const std::string& text) {
  std::string key;
  AppendSortable(text, key);
  return key;
}

TEST(ApiTexts, SortAsPeopleDo) {
  const std::vector<std::string> ordered = {"",
                                            std::string(1, '\0'),
                                            "\1",
                                            "!",
                                            "0",
                                            "00a",
                                            "1",
                                            "2",
                                            "2a",
                                            "10",
                                            "10.0.0.9",
                                            "10.0.0.10",
                                            std::string(300, '9'),
                                            "1" + std::string(300, '0'),
                                            "a",
                                            "A1",
                                            "a1b",
                                            "vm-2",
                                            "VM-10",
                                            "vm-10a",
                                            "\xc3\xa4"};
  for (std::size_t i = 1; i < ordered.size(); ++i) {
    EXPECT_LT(Sortable(ordered[i - 1]), Sortable(ordered[i])) << ordered[i];
  }
  EXPECT_EQ(Sortable("Vm-007"), Sortable("vM-7"));
  EXPECT_LT(Sortable("a") + "z", Sortable("a!") + "a") << "what follows counts later";
}

// Machines at random, with few values of each field, and a plain list of them.
class ApiLists : public testing::Test {
 protected:
  using Machines = std::map<std::string, kecpp::Machine>;

  std::size_t Any(std::size_t count) { return random() % count; }

  kecpp::Machine AnyMachine() {
    static const char* const NAMES[] = {"web-1", "WEB-2", "web-10", "db", "", "D\xc3\xa4"};
    kecpp::Machine machine;
    machine.name = NAMES[Any(6)];
    machine.guestFullName = Any(2) ? "Debian" : "Linux";
    machine.guestIPAddress = "10.0.0." + std::to_string(Any(20));
    machine.powerState = static_cast<kecpp::PowerState>(Any(4));
    machine.operationalStatus = static_cast<unsigned>(Any(8));
    if (Any(4)) machine.host = "host-" + std::to_string(Any(3));
    return machine;
  }

  void Change() {
    const std::string key = "vm-" + std::to_string(Any(60));
    if (Any(3) == 0) {
      machines.erase(key);
      return catalogue.Erase(key);
    }
    machines[key] = AnyMachine();
    catalogue.Put(key, LinkedRow(machines[key]));
  }

  Row LinkedRow(const kecpp::Machine& machine) {
    Row row = RowOf(machine);
    if (machine.host) row.host = &*hosts.try_emplace(*machine.host).first;
    return row;
  }

  static ListQuery Query(const Parameters::Map& parameters) {
    return ReadListQuery(InfoOf(Kind::machine),
                         Parameters(parameters, {"text", "sort", "limit", "cursor", "offset",
                                                 "power", "status", "host"}));
  }

  // What the catalogue answers.
  Page Ask(const Parameters::Map& parameters) {
    const ListQuery query = Query(parameters);
    catalogue.Sort(*query.sort);
    return Select(*catalogue.OrderBy(*query.sort), query);
  }

  static std::vector<std::string> KeysOf(const Page& page) {
    std::vector<std::string> keys;
    for (const Entry* entry : page.entries) keys.push_back(entry->first);
    return keys;
  }

  // What the plain list has, sorted by what is compared of that field.
  template <class Matches>
  std::vector<std::string> Expected(const char* sort, const Matches& matches) {
    std::vector<std::pair<std::string, std::string>> found;
    for (const auto& [key, machine] : machines) {
      if (!matches(key, machine)) continue;
      const Entry entry(key, LinkedRow(machine));
      found.emplace_back(SortKeyOf(entry, *FindSort(InfoOf(Kind::machine), sort)), key);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> keys;
    for (auto& pair : found) keys.push_back(std::move(pair.second));
    return keys;
  }

  std::mt19937 random{20};
  Machines machines;
  HostTable hosts;
  Catalogue catalogue;
};

TEST_F(ApiLists, AreWhatAPlainListHas) {
  for (int round = 0; round < 300; ++round) {
    if (round % 100 == 99) catalogue.Expect(100000);  // orders are given up
    for (std::size_t i = Any(5); i > 0; --i) Change();
    const auto any = [](const std::string&, const kecpp::Machine&) { return true; };
    for (const char* sort : {"name", "power", "status", "host", "address", "system", "key"}) {
      auto expected = Expected(sort, any);
      ASSERT_EQ(KeysOf(Ask({{"sort", sort}})), expected) << sort;
      std::reverse(expected.begin(), expected.end());
      ASSERT_EQ(KeysOf(Ask({{"sort", std::string("-") + sort}})), expected) << sort;
    }
    ASSERT_EQ(KeysOf(Ask({{"text", "eB"}})), Expected("name", [](auto& key, auto& machine) {
                return (key + "|" + Lowered(machine.name) + "|" + Lowered(machine.guestFullName))
                           .find("eb") != std::string::npos;
              }));
    ASSERT_EQ(
        KeysOf(Ask({{"power", "on"}, {"power", "off"}, {"status", "ok"}, {"host", "host-1"}})),
        Expected("name", [](auto&, auto& machine) {
          return (machine.powerState == kecpp::PowerState::on ||
                  machine.powerState == kecpp::PowerState::off) &&
                 machine.operationalStatus == 2 && machine.host == "host-1";
        }));
    const auto all = Expected("name", any);
    const Page part = Ask({{"offset", "7"}, {"limit", "4"}});
    const std::size_t begin = std::min<std::size_t>(7, all.size());
    const std::size_t end = std::min<std::size_t>(11, all.size());
    ASSERT_EQ(KeysOf(part), std::vector<std::string>(all.begin() + begin, all.begin() + end));
    ASSERT_EQ(part.total, all.size());
    ASSERT_EQ(part.next.empty(), end == all.size());
  }
}

// Half of the machines stay as they are, while pages are asked for; the others come and go.
TEST_F(ApiLists, GiveEachThatStaysOnceAmongChanges) {
  for (const char* sort : {"name", "-name", "address", "-power", "host"}) {
    for (const char* power : {"", "on"}) {
      std::map<std::string, int> met;
      for (int i = 100; i < 160; ++i) {
        const std::string key = "vm-" + std::to_string(i);
        machines[key] = AnyMachine();
        catalogue.Put(key, LinkedRow(machines[key]));
        const bool matches = !*power || machines[key].powerState == kecpp::PowerState::on;
        if (matches) met[key] = 0;
      }
      Parameters::Map query = {{"sort", sort}, {"limit", "3"}};
      if (*power) query.emplace("power", power);
      std::string cursor;
      do {
        const Page page = Ask(query);
        for (const std::string& key : KeysOf(page)) {
          if (met.count(key)) ++met[key];
        }
        cursor = page.next;
        query.erase("cursor");
        query.emplace("cursor", cursor);
        for (int i = 0; i < 5; ++i) Change();
      } while (!cursor.empty());
      for (const auto& [key, times] : met) EXPECT_EQ(times, 1) << key << " by " << sort;
    }
  }
}

TEST_F(ApiLists, RefuseWhatIsNoCursor) {
  for (int i = 0; i < 50; ++i) Change();
  catalogue.Put(std::string(6000, 'k'), LinkedRow({}));  // sorts to the front: its name is empty
  const std::string offset = Ask({{"limit", "1"}}).next;
  EXPECT_LT(offset.size(), 100u) << "no request could hold the key";
  EXPECT_EQ(KeysOf(Ask({{"limit", "3"}, {"cursor", offset}})),
            KeysOf(Ask({{"limit", "3"}, {"offset", "1"}})));
  const std::string good = Ask({{"limit", "20"}}).next;
  EXPECT_THROW(Ask({{"cursor", good}, {"sort", "-name"}}), Problem);
  EXPECT_THROW(Ask({{"cursor", good}, {"offset", "0"}}), Problem);
  int refused = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string bad = Any(2) ? good : offset;
    if (Any(4) == 0) bad.resize(Any(bad.size()));
    for (std::size_t flips = 1 + Any(3); flips > 0 && !bad.empty(); --flips) {
      bad[Any(bad.size())] = static_cast<char>(Any(3) ? 'A' + Any(26) : Any(256));
    }
    try {
      EXPECT_LE(Ask({{"cursor", bad}}).entries.size(), 100u);
    } catch (const Problem& problem) {
      EXPECT_EQ(problem.status, 400);
      ++refused;
    }
  }
  EXPECT_GT(refused, 1000);
}

TEST(ApiJournal, KeepsAThousandAndSaysWhatIsMissing) {
  Journal journal;
  const std::uint64_t begin = journal.Last();
  const auto add = [&](int count, Kind kind) {
    const KnownChange change{{kecpp::Change::Type::changed, kind, "k"}, "", {"name"}, {}, {}};
    journal.Add(std::vector<KnownChange>(static_cast<std::size_t>(count), change));
  };
  add(3, Kind::host);
  std::vector<Journal::Item> items;
  std::uint64_t id = begin + 1;
  EXPECT_TRUE(journal.After(id, items));
  EXPECT_EQ(items.size(), 2u);
  EXPECT_EQ(id, begin + 3);
  add(999, Kind::role);
  const Kind host = Kind::host;
  const std::string other = "other";
  EXPECT_EQ(journal.Newest(&host, nullptr, 5).size(), 1u);
  EXPECT_TRUE(journal.Newest(nullptr, &other, 5).empty());
  EXPECT_TRUE(journal.After(id = begin + 2, items));
  EXPECT_EQ(items.size(), 1000u);
  EXPECT_FALSE(journal.After(id = begin + 1, items));
  EXPECT_FALSE(journal.After(id = begin + 5000, items)) << "of a later life";
  EXPECT_EQ(id, journal.Last());
  EXPECT_EQ(journal.Activity().back() + journal.Activity()[28], 1002u);
}

// All parts on a living inventory, with readers and streams on other threads.
TEST(ApiParts, FollowTheInventoryWhileTheyAreAsked) {
  Simulator simulator({"--hosts", "3", "--machines", "300", "--churn", "200"});
  kecpp::Inventory inventory({simulator.Config()});
  tools::agent::ConnectionReport report;
  Catalogues catalogues(inventory);
  Journal journal;
  Summary summary(inventory, report, catalogues, journal);
  Recorder recorder(inventory, catalogues, journal);
  std::atomic<bool> ended{false};
  std::atomic<int> pages{0}, changes{0};
  const auto ask = [&](const char* sort, const auto& use) {
    const Parameters::Map parameters = {{"sort", sort}, {"limit", "1000"}};
    const ListQuery query =
        ReadListQuery(InfoOf(Kind::machine), Parameters(parameters, {"sort", "limit"}));
    catalogues.Find(query, [&](const Page& page, const HostTable&) { use(page); });
  };
  std::vector<std::thread> threads;
  for (const char* sort : {"name", "-host"}) {
    threads.emplace_back([&, sort] {
      while (!ended) ask(sort, [&](const Page& page) { pages += page.total > 0 ? 1 : 0; });
    });
    threads.emplace_back([&] {
      ChangeStream stream(journal, summary, catalogues, {});
      for (std::string events = stream.Next(); !events.empty(); events = stream.Next()) {
        if (events.find("event: change") != std::string::npos) ++changes;
      }
    });
  }
  EXPECT_TRUE(Eventually([&] { return changes > 5 && pages > 50; }));
  simulator.Control("host",
                    {{"do", "set"}, {"id", "host-1"}, {"property", "name"}, {"value", "z"}});
  const auto isSortedByHost = [&] {
    std::vector<std::string> names;
    ask("host", [&](const Page& page) {
      for (const Entry* entry : page.entries) {
        names.push_back(entry->second.host ? "." + entry->second.host->second.name : "");
      }
    });
    return !names.empty() && names.back() == ".z" && std::is_sorted(names.begin(), names.end());
  };
  EXPECT_TRUE(Eventually(isSortedByHost));
  catalogues.Forget();
  simulator.Control("session-lost");
  EXPECT_TRUE(Eventually([&] { return inventory.State().connections == 2; }));
  simulator.Control("churn", {{"rate", 0}});
  const auto isTrue = [&] {
    std::map<std::string, std::string> expected, shown;
    for (const kecpp::Machine& machine : inventory.Machines()) {
      expected[machine.key] = machine.name + machine.host.value_or("");
    }
    ask("name", [&](const Page& page) {
      for (const Entry* entry : page.entries) {
        const Row& row = entry->second;
        shown[entry->first] = std::string(row.texts.At(0)) + (row.host ? row.host->first : "");
      }
    });
    const Sums sums = catalogues.Total();
    return shown == expected && sums.machines == expected.size() &&
           sums.machinesByPower[0] + sums.machinesByPower[1] + sums.machinesByPower[2] +
                   sums.machinesByPower[3] ==
               expected.size();
  };
  EXPECT_TRUE(Eventually(isTrue));
  ended = true;
  journal.End();
  for (std::thread& thread : threads) thread.join();
}

std::string GetHead(const std::string& target, const std::string& more = "") {
  return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n" + more + "\r\n";
}

std::string NumberIn(const std::string& events, const std::string& behind) {
  const std::size_t begin = events.find("id: ", events.find(behind)) + 4;
  return events.substr(begin, events.find('\n', begin) - begin);
}

class ApiAgent : public testing::Test {
 protected:
  // Until a change is noted: what comes with the first fill is none.
  void AwaitData() {
    int number = 0;
    simulator.SetMachine("vm-1", "runtime.powerState", "poweredOn");
    EXPECT_TRUE(Eventually([&] {
      Rename("zero-" + std::to_string(++number));
      const auto answer = client.Get("/api/v1/changes?key=vm-1");
      return answer && answer->body.find("zero-") != std::string::npos;
    }));
  }
  void Rename(const std::string& name) { simulator.SetMachine("vm-1", "name", name); }

  Simulator simulator{{"--machines", "3"}};
  AgentProcess agent{simulator.Config(), {"--max-connections", "12"}};
  httplib::Client client{"http://" + agent.Address()};
};

TEST_F(ApiAgent, FindsKeysOfAnyBytesAndHasHeadsOfThem) {
  AwaitData();
  simulator.Control("role", {{"do", "set"}, {"id", "a/b%2F c?#\xc3\xa9&"}, {"name", "odd"}});
  const std::string path = "/api/v1/roles/a%2Fb%252F%20c%3F%23%C3%A9%26";
  EXPECT_TRUE(Eventually([&] {
    RawClient raw(agent.Port());
    raw.Send(GetHead(path));
    return raw.Receive("}").find("\"name\":\"odd\"") != std::string::npos;
  }));
  RawClient head(agent.Port());
  head.Send("HEAD" + GetHead(path, "Connection: close\r\n").substr(3));
  EXPECT_THAT(head.Receive(),
              testing::AllOf(HasSubstr("200 OK"), HasSubstr("ETag: \""),
                             Not(HasSubstr("Accept-Ranges")), testing::EndsWith("\r\n\r\n")));
  for (const char* bad : {"/api/v1/roles/%", "/api/v1/roles/%4", "/api/v1/roles/%zz"}) {
    RawClient other(agent.Port());
    other.Send(GetHead(bad));
    EXPECT_THAT(other.Receive("}"), HasSubstr("400 Bad Request")) << bad;
  }
}

TEST_F(ApiAgent, StreamsGoOnWhereTheirClientsWere) {
  AwaitData();
  RawClient first(agent.Port());
  first.Send(GetHead("/api/v1/changes/stream"));
  std::string events = first.Receive("event: summary");
  Rename("one");
  events += first.Receive("\"hosts\":[]}");  // a name changes no host's numbers
  EXPECT_THAT(events, testing::AllOf(Not(HasSubstr("event: reset")),
                                     HasSubstr("\"item\":{\"key\":\"vm-1\",\"name\":\"one\"")));
  const std::string seen = NumberIn(events, "event: change");
  Rename("two");
  simulator.SetMachine("vm-1", "runtime.powerState", "suspended");
  EXPECT_THAT(first.Receive("\"hosts\":[{"), HasSubstr("\"name\":\"two\""));
  EXPECT_THAT(client.Get("/api/v1/changes")->body, Not(HasSubstr("\"item\"")));

  RawClient again(agent.Port());
  again.Send(GetHead("/api/v1/changes/stream", "Last-Event-ID: " + seen + "\r\n"));
  events = again.Receive("\"name\":\"two\"");
  EXPECT_THAT(events, testing::AllOf(HasSubstr("\"fields\":[\"name\""), HasSubstr("event: summary"),
                                     Not(HasSubstr("\"name\":\"one\"")), Not(HasSubstr("reset"))));
  for (const char* unknown : {"17", "99999999999999999999999", "x"}) {
    RawClient lost(agent.Port());
    lost.Send(GetHead("/api/v1/changes/stream", std::string("Last-Event-ID: ") + unknown + "\r\n"));
    EXPECT_THAT(lost.Receive("event: reset"), HasSubstr("event: reset")) << unknown;
  }
}

}  // namespace
}  // namespace agenttest
