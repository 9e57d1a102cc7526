// SPDX-License-Identifier: MIT
//
// A data sync on a fake server, with the world around it replaced. A test that hangs is ended by an
// alarm; everything here waits for conditions.
#ifndef KECPP_TESTS_DATASYNC_SYNCFIXTURE_H
#define KECPP_TESTS_DATASYNC_SYNCFIXTURE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "datasync/CacheDump.h"
#include "datasync/FakeServer.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/PropertyTexts.h"
#include "foundation/KEWaiter.h"
#include "service/call/MgmtdWatchSeams.h"
#include "support/CapturedLog.h"
#include "support/Thrown.h"

namespace KE::Service {

// --- the documents of a server

inline std::string UpdateSet(const std::string& version, const std::string& filter,
                             const std::string& objects = "") {
  return "<returnval><version>" + version +
         "</version><filterSet><filter type=\"PropertyFilter\">" + filter + "</filter>" + objects +
         "</filterSet></returnval>";
}

inline std::string Object(const std::string& type, const std::string& id,
                          const std::string& property, const std::string& value) {
  return "<objectSet><kind>modify</kind><obj type=\"" + type + "\">" + id +
         "</obj><changeSet><name>" + property + "</name><op>assign</op><val>" + value +
         "</val></changeSet></objectSet>";
}

inline std::string Machine(const std::string& id, const std::string& name) {
  return Object("VirtualMachine", id, "name", name);
}

// Counts its signals.
class CountingWaiter : public KELib::KEWaiter {
 public:
  bool Wait(int) override {
    while (signals == 0) std::this_thread::yield();
    return true;
  }
  void Signal() override { ++signals; }

  std::atomic<int> signals{0};
};

// The daemon's process-id file for the life of the object. Made inside a fixture's test.
class PidFile {
 public:
  PidFile() : path(testing::TempDir() + "kecpp-datasync-" + std::to_string(getpid())) {
    Write("17\n");
    GetMgmtdWatchSeams().pidFile = path.c_str();
  }
  ~PidFile() { std::remove(path.c_str()); }
  void Write(const std::string& text) const { std::ofstream(path) << text; }

 private:
  const std::string path;
};

class SyncFixture : public testing::Test {
 protected:
  static constexpr const char* kMachines =
      "_p_ _o_ VirtualMachine name _co_ ZORBEL_VMComputerSystem ZORBEL_ORXComputerSystem";
  static constexpr const char* kRoles =
      "_p_ _o_ AuthorizationManager roleList _m_ RetrieveAllPermissions "
      "_co_ Zorbel_Role Zorbel_Privilege Zorbel_Identity";

  SyncFixture() : collector(Reference("PropertyCollector", "pc-1")) {
    alarm(100);
    CapturedLog::Clear();
    ResetMgmtdWatch();
    GetMgmtdWatchSeams().pidFile = "/nonexistent/mgmtd.pid";
    MakeSync();
  }
  ~SyncFixture() override {
    sync.reset();
    ResetMgmtdWatch();
    alarm(0);
  }

  using RefPtr = std::unique_ptr<Stub::ManagedObjectReference>;
  static RefPtr Reference(const std::string& type, const std::string& value) {
    KELib::KEString t(type.c_str()), v(value.c_str());
    return RefPtr(Stub::CreateManagedObjectReference(t, v));
  }

  // Puts a new data sync in the place of the one there is.
  void MakeSync() {
    sync = std::make_unique<KEDataSyncImpl>();
    sync->Init(&server, collector.get());
  }

  Stub::ManagedObjectReference* Watch(const std::string& elements,
                                      KELib::KEWaiter* waiter = nullptr) {
    PropertyTexts list(elements);
    return sync->SetupDataSync(Reference("Folder", "root").get(), list, waiter);
  }

  // Watches machines, as filter-1, and is past the first fill, which found "first".
  Stub::ManagedObjectReference* WatchMachines() {
    server.Feed(UpdateSet("1", "filter-1", Machine("vm-1", "first")));
    Stub::ManagedObjectReference* filter = Watch(kMachines);
    AwaitQuietWait(2);
    return filter;
  }

  bool WaitForTask(const std::string& task, KELib::KEWaiter* waiter) {
    const std::string text = "<returnval type=\"Task\">" + task + "</returnval>";
    KELib::KEString response(text.c_str());
    const bool succeeded = sync->WaitForTask(response, waiter);
    EXPECT_EQ(response.Cstr(), text);
    return succeeded;
  }

  std::string Caches() { return DumpCaches(*sync->GetCache()); }

  KESyncStatus Status() {
    KESyncStatus status;
    sync->GetStatus(status);
    return status;
  }

  // Waits until that many waits were sent and the loop waits for what comes next, or has ended.
  void AwaitQuietWait(std::size_t waits = 0) {
    while (!server.IsQuiet(waits) && Status().loopRunning) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  void AwaitLoopEnd() {
    while (Status().loopRunning) std::this_thread::yield();
  }

  // The version that the last wait named.
  std::string LastVersion() { return server.Calls("WaitForUpdates").back().argument; }

  FakeServer server;
  RefPtr collector;
  std::unique_ptr<KEDataSyncImpl> sync;
};

}  // namespace KE::Service

#endif
