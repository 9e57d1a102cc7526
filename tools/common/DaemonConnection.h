// SPDX-License-Identifier: MIT
//
// One logged-in connection to the management daemon, with the watches that its tool needs.
//
// Thread safety: one thread makes, uses and destroys it; another one may read the caches while
//   Watch runs. Nobody may use the caches once the destructor was entered.
// Ownership: the library owns what the accessors return; it lives as long as the connection.
#ifndef KECPP_TOOLS_COMMON_DAEMONCONNECTION_H
#define KECPP_TOOLS_COMMON_DAEMONCONNECTION_H

#include <kecpp.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "tools/common/CellText.h"
#include "tools/common/EndOfRun.h"

namespace tools {

// The daemon cannot be reached, refuses the login or does not give its inventory. The text may be
// shown on a terminal.
class ConnectionError : public std::runtime_error {
 public:
  explicit ConnectionError(const std::string& text) : std::runtime_error(Printable(text)) {}
};

// What a tool asks of its connection.
struct ConnectionNeeds {
  // Roles, privileges and identities: none: not watched. whereAllowed: watched; a daemon that hides
  // them from this account is reported on standard error. required: their absence is an error.
  enum class Authorization { none, whereAllowed, required };

  const char* program;  // as messages name it, a constant
  std::string config;   // a file's path, an XML text, or empty for the library's default
  Authorization authorization = Authorization::whereAllowed;
};

class DaemonConnection {
 public:
  // Connects and logs in; the end of the run cuts it short. Throws ConnectionError.
  DaemonConnection(KE::Service::KEServiceInstManager& manager, ConnectionNeeds needs,
                   const EndOfRun& end);

  // Sets up the watches of hosts and machines and, as needed, of roles. On return the first data is
  // in the caches; a daemon that splits its first answer may have more to come. The end of the run
  // cuts it short. Throws ConnectionError when the first data did not arrive.
  void Watch(const EndOfRun& end);

  KE::Service::KEDataSync& Sync() { return *sync; }
  KE::Service::KEMethod& Method() { return *instance->GetMethod(); }
  KE::Instance::KETypeCache& Cache() { return *sync->GetCache(); }

  // True when Watch has read roles, privileges and identities.
  bool HasAuthorization() const { return hasAuthorization; }

  // True after several failed cycles in a row: the session or the daemon is lost. `reason` is then
  // the last failure's text.
  bool IsLost(std::string& reason);

 private:
  void SetUpWatches(const EndOfRun& end);
  void CutWatching();
  void WatchSystems();
  void WatchAuthorization(const EndOfRun& end);
  void AwaitFirstData(const EndOfRun& end);

  // Stops the instance, waits for its threads and destroys it.
  struct InstanceFreer {
    KE::Service::KEServiceInstManager* manager;
    void operator()(KE::Service::KEServiceInst* inst) const { manager->FreeServiceInstance(inst); }
  };

  const ConnectionNeeds needs;
  // Declared before the instance, so that it is destroyed after it: the data sync may still hold a
  // waiter that was not signalled.
  std::unique_ptr<KELib::KEWaiter> firstData;
  std::unique_ptr<KE::Service::KEServiceInst, InstanceFreer> instance;
  KE::Service::KEDataSync* sync = nullptr;
  bool hasAuthorization = false;
  std::atomic<bool> wasCut{false};
};

}  // namespace tools

#endif
