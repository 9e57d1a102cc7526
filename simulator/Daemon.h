// SPDX-License-Identifier: MIT
//
// The management daemon's methods: service content, login, filters, waits, permissions, tasks.
//
// Thread safety: any number of calls at the same time.
#ifndef KECPP_SIMULATOR_DAEMON_H
#define KECPP_SIMULATOR_DAEMON_H

#include <functional>
#include <string>

#include "simulator/Inventory.h"
#include "simulator/PropertyCollector.h"
#include "simulator/Sessions.h"
#include "simulator/Soap.h"
#include "simulator/Tasks.h"

namespace sim {

struct DaemonOptions {
  Account account;
  unsigned int maxObjects = 0;  // of one answer; 0: no limit
};

class Daemon {
 public:
  Daemon(Inventory& inventory, const DaemonOptions& options);

  // Carries a call out. `cookie` is the value of the session cookie, empty without one; a login
  // replaces it. `abandoned` says whether the client has gone. Returns the content of the answer's
  // element. Throws Fault.
  std::string Call(const SoapCall& call, std::string& cookie,
                   const std::function<bool()>& abandoned);

  void LoseSessions();  // as after a restart
  void Shutdown() { collector.Shutdown(); }

  PropertyCollector& Collector() { return collector; }
  std::size_t SessionCount() { return sessions.Count(); }

 private:
  std::string Ticket(const SoapCall& call);
  std::string Login(const SoapCall& call, std::string& cookie);
  std::string Collect(const SoapCall& call, const std::string& cookie,
                      const std::function<bool()>& abandoned);
  std::string StartTask(const SoapCall& call);

  Inventory& inventory;
  Sessions sessions;
  PropertyCollector collector;
  Tasks tasks;
};

}  // namespace sim

#endif
