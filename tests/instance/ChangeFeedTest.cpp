// SPDX-License-Identifier: MIT
//
// Random changes of the caches, told to feeds that come and go and take at different speed. Each
// gives exactly what a plain list of news says, in order.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "instance/CacheConversion.h"
#include "instance/ChangeFeed.h"
#include "instance/ChangeHub.h"
#include "instance/KETypeCache.h"
#include "stub/base/MRawStub.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Instance {
namespace {

using KELib::KEString;
using Id = std::pair<std::string, std::string>;  // class and key

const std::string kMachine = "ZORBEL_VMComputerSystem", kHost = "ZORBEL_ORXComputerSystem";
const std::string kTypes[] = {kMachine, kHost, "AnAgentsOwn"};
constexpr unsigned kKeys = 150;

struct Listener {
  std::unique_ptr<KEChangeFeed> feed;
  std::vector<Id> news;  // the oldest first
  std::set<Id> known;
};

class RandomCaches {
 public:
  explicit RandomCaches(unsigned seed) : random(seed) {}

  void Step() {
    static constexpr void (RandomCaches::*kSteps[])() = {
        &RandomCaches::File,   &RandomCaches::File, &RandomCaches::File, &RandomCaches::Link,
        &RandomCaches::Link,   &RandomCaches::Take, &RandomCaches::Take, &RandomCaches::Remove,
        &RandomCaches::Remove, &RandomCaches::Open, &RandomCaches::Close};
    MakeCaches();
    if (random() % 300 == 0) return Clear();
    (this->*kSteps[random() % std::size(kSteps)])();
  }

  void TakeAll() {
    for (Listener& listener : listeners) TakeFrom(listener, 10 * kKeys);
  }

 private:
  void MakeCaches() {
    for (const std::string& name : kTypes) {
      KEString type(name.c_str());
      types.CreateDataCache(type);
    }
  }
  KEDataCache& Cache(const Id& id) {
    KEString type(id.first.c_str());
    return types.Existing(type);
  }
  // Most keys are too long to be kept in place.
  Id Any() { return {kTypes[random() % 3], std::string(1 + random() % kKeys, 'k')}; }

  // --- what the feeds should learn

  static bool IsNews(const Listener& listener, const Id& id) {
    return std::count(listener.news.begin(), listener.news.end(), id) > 0;
  }
  void Changed(const Id& id) {
    if (cached.count(id) == 0) return;
    for (Listener& listener : listeners) {
      if (!IsNews(listener, id)) listener.news.push_back(id);
    }
  }
  void Gone(const Id& id) {
    cached.erase(id);
    for (Listener& listener : listeners) {
      const auto at = std::find(listener.news.begin(), listener.news.end(), id);
      if (listener.known.count(id) == 0) {
        listener.news.erase(at);
      } else if (at == listener.news.end()) {
        listener.news.push_back(id);
      }
    }
    Unlink(id);
  }
  void Unlink(const Id& id) {
    std::map<std::string, std::string> left;
    for (const auto& [machine, host] : hostOf) {
      if (id == Id(kMachine, machine)) {
        Changed({kHost, host});
      } else if (id == Id(kHost, host)) {
        Changed({kMachine, machine});
      } else {
        left[machine] = host;
      }
    }
    hostOf = left;
  }

  // --- what happens

  // What is pending is given before, since what happens now is told in no order that is promised.
  template <typename Action>
  void InNoOrder(Action action) {
    TakeAll();
    action();
    inOrder = false;
    TakeAll();
    inOrder = true;
  }
  static bool HasManyLinks(const Id& id) { return id.first == kHost; }

  void File() {
    const Id id = Any();
    HasManyLinks(id) ? InNoOrder([&] { File(id); }) : File(id);
  }
  void File(const Id& id) {
    KELib::Stub::KEStubBase* stub = nullptr;
    if (id.first == kMachine) {
      stub = KE::Stub::CreateZORBEL_VMComputerSystem();
    } else if (id.first == kHost) {
      stub = KE::Stub::CreateZORBEL_ORXComputerSystem();
    } else {
      stub = KELib::Stub::CreateRawStub();
    }
    KEString key(id.second.c_str());
    Cache(id).SetVal(key, stub);
    const bool isNew = cached.insert(id).second;
    Changed(id);
    if (!isNew) Unlink(id);  // a replacement has no links
  }
  void Remove() {
    const Id id = Any();
    HasManyLinks(id) ? InNoOrder([&] { Remove(id); }) : Remove(id);
  }
  void Remove(const Id& id) {
    KEString key(id.second.c_str());
    Cache(id).RemoveVal(key);
    if (Cache(id).Size() > 0) Cache(id).RemoveVal(key);  // filed twice, it is in there twice
    if (cached.count(id) > 0) Gone(id);
  }
  void Link() {
    const std::string machine = Any().second, host = Any().second;
    KEString key(machine.c_str()), hostKey(host.c_str()), none;
    KELib::Stub::KEStubRef ref;
    Cache({kMachine, machine}).GetVal(key, ref);
    auto* stub = static_cast<KE::Stub::ZORBEL_VMComputerSystem*>(ref.GetData());
    ChangeVMsHostRef(stub, none, hostKey, &types);
    if (stub == nullptr || cached.count({kHost, host}) == 0) return;
    const std::string before = hostOf.count(machine) > 0 ? hostOf[machine] : "";
    if (before == host) return;
    hostOf[machine] = host;
    Changed({kMachine, machine});
    Changed({kHost, host});
    Changed({kHost, before});
  }
  void Clear() {
    InNoOrder([&] {
      const bool everything = random() % 2 == 0;
      KEString machines(kMachine.c_str());
      everything ? types.Clear() : types.DeleteDataCache(machines);
      const std::set<Id> all = cached;
      for (const Id& id : all) {
        if (everything || id.first == kMachine) Gone(id);
      }
    });
  }

  void Open() {
    if (listeners.size() == 4) return;
    InNoOrder([&] {
      Listener& made = listeners.emplace_back();
      made.feed = std::make_unique<ChangeFeed>(hub, types);
      made.news.assign(cached.begin(), cached.end());
      EXPECT_EQ(0, made.feed->Take(nullptr, 0, -1));
    });
  }
  void Close() {
    if (listeners.empty()) return;
    listeners.front().feed->Close();
    KEChange change;
    EXPECT_EQ(-1, listeners.front().feed->Take(&change, 1, -1));
    listeners.pop_front();
  }
  void Take() {
    if (!listeners.empty()) TakeFrom(listeners.back(), 1 + random() % 9);
  }
  void TakeFrom(Listener& listener, std::size_t max) {
    std::vector<KEChange> changes(max);
    const int given = listener.feed->Take(changes.data(), static_cast<int>(max), 0);
    std::vector<std::string> told, expected;
    for (int i = 0; i < given; ++i) {
      const KEChange& change = changes[static_cast<std::size_t>(i)];
      const char* const kinds[] = {"added ", "changed ", "removed "};
      told.push_back(kinds[static_cast<int>(change.kind)] + std::string(change.className) + " " +
                     change.key.Cstr());
    }
    for (std::size_t i = 0; i < std::min(max, listener.news.size()); ++i) {
      const Id& id = listener.news[i];
      const bool is = cached.count(id) > 0, was = listener.known.count(id) > 0;
      expected.push_back((!is   ? "removed "
                          : was ? "changed "
                                : "added ") +
                         id.first + " " + id.second);
      is ? void(listener.known.insert(id)) : void(listener.known.erase(id));
    }
    listener.news.erase(listener.news.begin(),
                        listener.news.begin() + static_cast<long>(expected.size()));
    if (!inOrder) {
      std::sort(told.begin(), told.end());
      std::sort(expected.begin(), expected.end());
    }
    ASSERT_EQ(told, expected);
  }

  std::mt19937 random;
  const std::shared_ptr<ChangeHub> hub = std::make_shared<ChangeHub>();
  KETypeCache types{hub};
  std::set<Id> cached;
  std::map<std::string, std::string> hostOf;
  std::list<Listener> listeners;
  bool inOrder = true;
};

TEST(ChangeFeed, GivesWhatAPlainListOfNewsSays) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE(seed);
    RandomCaches caches(seed);
    for (int step = 0; step < 2000 && !testing::Test::HasFatalFailure(); ++step) caches.Step();
    caches.TakeAll();
  }
}

}  // namespace
}  // namespace KE::Instance
