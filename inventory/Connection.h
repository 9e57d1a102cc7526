// SPDX-License-Identifier: MIT
//
// One logged-in connection to the daemon with its watches, and the caches that they fill. It does
// not come back when it is lost: another one takes its place.
//
// Thread safety: one thread opens and destroys it; Cut from any thread meanwhile. The rest from any
//   thread that holds a Use of it.
// Ownership: the library owns what the accessors return; it lives as long as the connection.
#ifndef KECPP_INVENTORY_CONNECTION_H
#define KECPP_INVENTORY_CONNECTION_H

#include <kecpp.h>

#include <kecpp/inventory.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace kecpp {

class Connection {
 public:
  explicit Connection(Options options);
  ~Connection();  // waits until nobody uses it, and logs out
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Connects, logs in, watches, and waits for the first data. Throws Error.
  void Open();

  // Ends Open, which then throws, and RunTask. To be repeated: a call may come too early.
  void Cut();

  // Whether the session or the daemon is lost; `reason` is then why.
  bool IsLost(std::string& reason) const;

  bool HasCaches() const { return sync.load() != nullptr; }  // else no other accessor may be called
  bool HasAuthorization() const { return hasAuthorization; }
  const std::string& AuthorizationFailure() const { return authorizationFailure; }
  const std::string& Url() const { return url; }
  KE::Instance::KETypeCache& Cache() const { return *sync.load()->GetCache(); }
  KE::Service::KEDataSync& Sync() const { return *sync; }
  KE::Service::KEMethod& Method() const { return *instance->GetMethod(); }

  // While it lives the connection is not destroyed.
  class Use {
   public:
    Use() = default;  // of nothing
    explicit Use(Connection& used);
    Use(Use&& other) noexcept : connection(other.connection) { other.connection = nullptr; }
    Use& operator=(Use&&) = delete;
    ~Use();
    explicit operator bool() const { return connection != nullptr; }
    Connection* operator->() const { return connection; }

   private:
    Connection* connection = nullptr;
  };

 private:
  void Connect();
  bool TryToLogIn(KELib::KEString& config, KE::Service::KEConnectFailure& failure);
  void WatchSystems();
  void WatchAuthorization();
  void AwaitAuthorization(KELib::KEWaiter& firstData);
  void CheckFilled(const char* what) const;
  void Watch(const char* rootName, void (*fill)(KELib::KEVector<KELib::KEString>&),
             KELib::KEWaiter* waiter);
  [[noreturn]] void Fail(const std::string& reason) const;

  struct InstanceFreer {
    void operator()(KE::Service::KEServiceInst* inst) const;
  };

  const Options options;
  // Before the instance, so that they die after it: a waiter that was not signalled yet must live
  // until the data sync has let go of it.
  std::unique_ptr<KELib::KEWaiter> firstRoles;
  std::unique_ptr<KELib::KEWaiter> firstPermissions;
  std::unique_ptr<KE::Service::KEServiceInst, InstanceFreer> instance;
  std::atomic<KE::Service::KEDataSync*> sync{nullptr};
  std::string url;
  bool isWatching = false;
  bool hasAuthorization = false;
  std::string authorizationFailure;
  std::atomic<bool> cut{false};

  std::mutex mutex;
  std::condition_variable unused;
  unsigned uses = 0;  // guarded by `mutex`
};

}  // namespace kecpp

#endif
