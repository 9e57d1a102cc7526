// SPDX-License-Identifier: MIT
//
// The management daemon's methods: service content, login, filters, waits, tasks.
//
// Thread safety: any number of calls at the same time.
#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "simulator/Inventory.h"
#include "simulator/PropertyCollector.h"
#include "simulator/Soap.h"

namespace sim {

struct DaemonOptions {
  std::string ticketFolder;  // where password files are written
  std::string user = "root", password = "secret";
  unsigned int maxObjects = 0;
};

class Daemon {
 public:
  Daemon(Inventory& inventory, const DaemonOptions& options);
  ~Daemon();

  // Carries a call out. `session` is the value of the session cookie, empty without one; a login
  // replaces it. Returns what stands inside the answer's element. Throws Fault.
  std::string Call(const SoapCall& call, std::string& session);

  void LoseSessions();  // as after a restart
  void Shutdown();      // every wait and task ends

  PropertyCollector& Collector() { return collector; }
  std::size_t Sessions();

 private:
  void CheckSession(const std::string& session);
  std::string Ticket(const SoapCall& call);
  std::string Login(const SoapCall& call, std::string& session);
  std::string StartTask(const SoapCall& call);

  Inventory& inventory;
  const DaemonOptions options;
  PropertyCollector collector;
  std::mutex mutex;                            // guards what follows
  std::map<std::string, std::string> tickets;  // password by user
  std::set<std::string> sessions;
  std::vector<std::thread> tasks;
  std::atomic<bool> shutdown{false};
  unsigned int nextTicket = 1;
};

}  // namespace sim
