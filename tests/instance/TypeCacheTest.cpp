// SPDX-License-Identifier: MIT
//
// Readers while data caches come and go are tests/stress.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "InstanceFixture.h"
#include "instance/KECacheGuard.h"
#include "instance/KEMultiCacheLock.h"
#include "stub/classes/ClassNames.h"
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

TEST(TypeCache, WhatDeletesStubsWaitsForReadersOfTheirCacheAndOfLinkedOnes) {
  int alive = 0;
  KETypeCache types;
  KEString type(KE::Stub::Zorbel_RoleClass), key("1");
  KEDataCache& roles = MakeCache(types, KE::Stub::Zorbel_RoleClass);
  KEDataCache& privileges = MakeCache(types, KE::Stub::Zorbel_PrivilegeClass);
  KEDataCache& machines = MakeCache(types, KE::Stub::ZORBEL_VMComputerSystemClass);
  KELib::KEMutexGuard unrelated(machines.GetMutex());  // waiting for it would never end
  for (KEDataCache* read : {&roles, &privileges}) {
    roles.SetVal(key, new CountedStub(alive));
    std::future<void> deleted;
    {
      KELib::KEMutexGuard guard(read->GetMutex());
      deleted = std::async(std::launch::async, [&] {
        read == &roles ? types.RemoveVal(type, key) : types.DeleteDataCache(type);
      });
      EXPECT_EQ(std::future_status::timeout, deleted.wait_for(std::chrono::milliseconds(20)));
      EXPECT_EQ(1, alive);
    }
    deleted.get();
    EXPECT_EQ(0, alive);
  }
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
                                                       {"WirtualMachine", "0001001"}};
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
