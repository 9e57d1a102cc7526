// SPDX-License-Identifier: MIT
//
// The filters of the sessions, and the long poll that reports what they select.
//
// Thread safety: any thread; guarded by the inventory's mutex, on which waits sleep as well.
#ifndef KECPP_SIMULATOR_PROPERTYCOLLECTOR_H
#define KECPP_SIMULATOR_PROPERTYCOLLECTOR_H

#include <functional>
#include <map>
#include <pugixml.hpp>
#include <string>

#include "simulator/Fault.h"
#include "simulator/Filter.h"
#include "simulator/Inventory.h"

namespace sim {

class PropertyCollector {
 public:
  // At most `maxObjects` objects in an answer; 0: no limit.
  PropertyCollector(Inventory& inventory, unsigned int maxObjects);

  void OpenSession(const std::string& session);
  void CloseSession(const std::string& session);  // its wait ends with a fault
  void CloseAll();
  void Shutdown();  // every wait ends

  // Returns the new filter's identifier. Throws Fault.
  std::string CreateFilter(const std::string& session, const pugi::xml_node& element);
  void DestroyFilter(const std::string& session, const std::string& filter);

  // Ends the session's pending wait, if there is one, with a fault.
  void CancelWait(const std::string& session);

  // Waits until there is something to report after `version` and returns the content of
  // "returnval". A session has one wait: a pending one ends with a fault. With an empty version
  // everything is reported as new; with one that is not the last answer's, that answer was lost,
  // and everything is reported again. Throws Fault, also when `abandoned`, which is called now and
  // then, says that the client has gone.
  std::string Wait(const std::string& session, const std::string& version,
                   const std::function<bool()>& abandoned);

  unsigned int PendingWaits();
  std::size_t Filters();

 private:
  struct Session {
    std::map<std::string, Filter> filters;
    unsigned long long lastAnswer = 0;
    unsigned long long wait = 0;  // counts waits and their cancellations
  };

  Session& FindLocked(const std::string& session);
  void BeginWaitLocked(Session& session, const std::string& version);
  bool ReportLocked(Session& session, std::string& answer);

  Inventory& inventory;
  const unsigned int maxObjects;
  std::map<std::string, Session> sessions;  // by cookie
  unsigned int nextFilter = 1;
  unsigned long long nextAnswer = 1;
  unsigned int pendingWaits = 0;
  bool shutdown = false;
};

}  // namespace sim

#endif
