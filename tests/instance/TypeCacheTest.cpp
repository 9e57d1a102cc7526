// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "InstanceFixture.h"
#include "foundation/KEException.h"
#include "instance/KECacheGuard.h"
#include "instance/KEMultiCacheLock.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/RoleLinks.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Instance {
namespace {

using KELib::KEString;
using KELib::SystemException;

template <typename Call>
std::string MessageOf(Call call) {
  try {
    call();
  } catch (const SystemException& e) {
    return e.What();
  }
  return "nothing was thrown";
}

bool Holds(KEDataCache& cache) {
  return cache.GetMutex()->IsLocked();
}

TEST(TypeCache, NamesTheTypeThatItDoesNotHave) {
  KETypeCache types;
  KEString type("Zorbel_Role"), key("1"), none;
  KELib::Stub::KEStubRef ref;
  const std::string expected = "No Data Map found for type :Zorbel_Role";
  EXPECT_EQ(expected, MessageOf([&] { types.GetVal(type, key, ref); }));
  EXPECT_EQ(expected, MessageOf([&] { types.RemoveValNoLock(type, key); }));
  EXPECT_EQ("Unable to find data cache", MessageOf([&] { types.DataIterator(type); }));
  types.DeleteDataCache(type);
  types.CreateDataCache(none);
  EXPECT_EQ(nullptr, types.GetDataCache(none));
}

TEST(TypeCache, ADeletedCacheLosesItsStubsAndCanBeMadeAgain) {
  int alive = 0;
  KETypeCache types;
  KEString type("T"), key("1");
  for (int round = 0; round < 3; ++round) {
    KEDataCache& cache = MakeCache(types, "T");
    EXPECT_EQ(0u, cache.Size());
    types.SetVal(type, key, new CountedStub(alive));
    types.CreateDataCache(type);
    EXPECT_EQ(1u, cache.Size());
    KELib::KEMutexGuard guard(cache.GetMutex());
    round == 1 ? types.Clear() : types.DeleteDataCache(type);
    EXPECT_EQ(0, alive);
    EXPECT_EQ(nullptr, types.GetDataCache(type));
    EXPECT_TRUE(Holds(cache));
  }
}

TEST(TypeCache, DeletingWaitsForReadersOfLinkedCaches) {
  KETypeCache types;
  KEString roleType(KE::Stub::Zorbel_RoleClass), key("1");
  KEDataCache& roles = MakeCache(types, KE::Stub::Zorbel_RoleClass);
  KEDataCache& privileges = MakeCache(types, KE::Stub::Zorbel_PrivilegeClass);
  KEDataCache& machines = MakeCache(types, KE::Stub::ZORBEL_VMComputerSystemClass);
  auto* role = KE::Stub::CreateZorbel_Role();
  auto* privilege = KE::Stub::CreateZorbel_Privilege();
  roles.SetVal(key, role);
  privileges.SetVal(key, privilege);
  KE::Stub::LinkMember(*role, *privilege);
  unsigned int linked = 0;
  RunAgainstHolder(
      *privileges.GetMutex(), [&] { types.DeleteDataCache(roleType); },
      [&] {
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        linked = privilege->MemberOfCollections->Get(0) != nullptr;
      });
  EXPECT_EQ(1u, linked);
  EXPECT_EQ(nullptr, privilege->MemberOfCollections->Get(0));
  // A reader of unrelated objects does not hold it up: this would never end.
  types.CreateDataCache(roleType);
  KELib::KEMutexGuard guard(machines.GetMutex());
  std::thread([&] { types.DeleteDataCache(roleType); }).join();
}

TEST(TypeCache, ServesReadersWhileTypesComeAndGo) {
  constexpr int kRounds = 2000;
  int alive = 0;
  auto owner = std::make_unique<KETypeCache>();
  KETypeCache& types = *owner;
  std::atomic<int> running{2};
  const auto read = [&] {
    KEString type("T");
    while (running > 0) {
      KEDataCache* cache = types.GetDataCache(type);
      if (cache == nullptr) continue;
      KELib::KEMutexGuard guard(cache->GetMutex());
      for (auto it = cache->Iterator(); !it.End(); ++it) {
        ASSERT_STREQ("", it->value->GetStubClassName());
      }
    }
  };
  const auto fill = [&] {
    KEString type("T");
    for (int i = 0; i < kRounds; ++i) {
      KEString key(std::to_string(i % 7).c_str());
      types.CreateDataCache(type);
      KEDataCache* cache = types.GetDataCache(type);
      if (cache == nullptr) continue;  // deleted meanwhile
      KELib::KEMutexGuard guard(cache->GetMutex());
      if (Find(*cache, key.Cstr()) == nullptr) cache->SetVal(key, new CountedStub(alive));
    }
    --running;
  };
  const auto drop = [&] {
    KEString type("T"), other("U");
    for (int i = 0; i < kRounds; ++i) {
      types.CreateDataCache(other);
      i % 2 == 0 ? types.Clear() : types.DeleteDataCache(type);
    }
    --running;
  };
  std::thread threads[] = {std::thread(read), std::thread(read), std::thread(drop)};
  fill();
  for (std::thread& thread : threads) thread.join();
  owner.reset();
  EXPECT_EQ(0, alive);
}

TEST(MultiCacheLock, TakesNothingAndGivesNothingUp) {
  KETypeCache types;
  KEDataCache& mine = MakeCache(types, "A");
  KEDataCache& other = MakeCache(types, "B");
  KELib::KEMutexGuard guard(mine.GetMutex());
  for (const char* name : {"A", "B", "none"}) {
    KEString type(name);
    KEMultiCacheLock lock;
    for (int i = 0; i < 2; ++i) lock.LockCache(&types, type);
    EXPECT_FALSE(Holds(other));
  }
  EXPECT_TRUE(Holds(mine));
}

TEST(CacheGuard, LocksWhatAnObjectTypeTouchesAndLeavesTheRest) {
  const char* const names[] = {KE::Stub::Zorbel_RoleClass,
                               KE::Stub::Zorbel_PrivilegeClass,
                               KE::Stub::Zorbel_IdentityClass,
                               KE::Stub::ZORBEL_VMComputerSystemClass,
                               KE::Stub::ZORBEL_ORXComputerSystemClass,
                               "Another",
                               KE::Stub::TaskInfoClass};
  KETypeCache types;
  std::vector<KEDataCache*> caches;
  for (const char* name : names) caches.push_back(&MakeCache(types, name));
  EXPECT_EQ(caches, types.InLockOrder());

  const auto held = [&] {
    std::string all;
    for (KEDataCache* cache : caches) all += Holds(*cache) ? '1' : '0';
    return all;
  };
  KELib::KEMutexGuard own(caches[3]->GetMutex());
  const std::pair<const char*, const char*> cases[] = {{"VirtualMachine", "0001100"},
                                                       {"HostSystem", "0001100"},
                                                       {"AuthorizationManager", "1111000"},
                                                       {"Task", "0001001"}};
  for (const auto& [type, expected] : cases) {
    KECacheGuard guard(&types);
    KEString text(type);
    guard.LockFor(text);
    EXPECT_EQ(expected, held()) << type;
  }
  KECacheGuard guard(&types);
  guard.LockAll();
  EXPECT_EQ("1111111", held());
  guard.Unlock();
  EXPECT_EQ("0001000", held());
}

}  // namespace
}  // namespace KE::Instance
