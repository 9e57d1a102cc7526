// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "InstanceFixture.h"
#include "instance/KECacheGuard.h"
#include "instance/KEMultiCacheLock.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/RoleLinks.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"
#include "support/Thrown.h"

namespace KE::Instance {
namespace {

using KELib::KEString;

bool Holds(KEDataCache& cache) {
  return cache.GetMutex()->IsLocked();
}

TEST(TypeCache, NamesTheTypeThatItDoesNotHave) {
  KETypeCache types;
  KEString type("Zorbel_Role"), key("1"), none;
  KELib::Stub::KEStubRef ref;
  const std::string expected = "SystemException: No Data Map found for type :Zorbel_Role";
  EXPECT_EQ(expected, Thrown([&] { types.GetVal(type, key, ref); }));
  EXPECT_EQ(expected, Thrown([&] { types.RemoveValNoLock(type, key); }));
  EXPECT_EQ("SystemException: Unable to find data cache",
            Thrown([&] { types.DataIterator(type); }));
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
  KE::Stub::SetPrivileges(*role, {privilege});
  RunAgainstHolder(
      *privileges.GetMutex(), [&] { types.DeleteDataCache(roleType); },
      [&] {
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        EXPECT_NE(nullptr, privilege->MemberOfCollections->Get(0));
      });
  EXPECT_EQ(nullptr, privilege->MemberOfCollections->Get(0));
  // A reader of unrelated objects does not hold it up: this would never end.
  types.CreateDataCache(roleType);
  KELib::KEMutexGuard guard(machines.GetMutex());
  std::thread([&] { types.DeleteDataCache(roleType); }).join();
}

TEST(TypeCache, ServesReadersWhileTypesComeAndGo) {
  int alive = 0;
  auto types = std::make_unique<KETypeCache>();
  std::atomic<int> running{2};
  const auto read = [&] {
    KEString type("T");
    while (running > 0) {
      KEDataCache* cache = types->GetDataCache(type);
      if (cache == nullptr) continue;
      KELib::KEMutexGuard guard(cache->GetMutex());
      for (auto it = cache->Iterator(); !it.End(); ++it) {
        ASSERT_STREQ("", it->value->GetStubClassName());
      }
    }
  };
  const auto change = [&](bool fills) {
    KEString type("T"), other("U");
    for (int i = 0; i < 2000; ++i) {
      KEString key(std::to_string(i % 7).c_str());
      types->CreateDataCache(fills ? type : other);
      if (!fills) {
        i % 2 == 0 ? types->Clear() : types->DeleteDataCache(type);
      } else if (KEDataCache* cache = types->GetDataCache(type)) {  // not deleted meanwhile
        KELib::KEMutexGuard guard(cache->GetMutex());
        if (Find(*cache, key.Cstr()) == nullptr) cache->SetVal(key, new CountedStub(alive));
      }
    }
    --running;
  };
  std::thread threads[] = {std::thread(read), std::thread(read), std::thread(change, false)};
  change(true);
  for (std::thread& thread : threads) thread.join();
  types.reset();
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
  KETypeCache types;
  std::vector<KEDataCache*> caches;
  for (const char* name :
       {"Zorbel_Role", "Zorbel_Privilege", "Zorbel_Identity", "ZORBEL_VMComputerSystem",
        "ZORBEL_ORXComputerSystem", "Another", KE::Stub::TaskInfoClass}) {
    caches.push_back(&MakeCache(types, name));
  }
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
                                                       {"Task", "0001001"},
                                                       {"Folder", "0001001"}};
  for (const auto& [type, expected] : cases) {
    KECacheGuard guard(&types);
    KEString text(type);
    guard.LockFor(text);
    EXPECT_EQ(expected, held()) << type;
  }
  KECacheGuard guard(&types);
  KEString unknown("Another");
  guard.LockLinked(unknown);
  EXPECT_EQ("0001010", held());
  guard.Unlock();
  guard.LockAll();
  EXPECT_EQ("1111111", held());
  guard.Unlock();
  EXPECT_EQ("0001000", held());
}

}  // namespace
}  // namespace KE::Instance
