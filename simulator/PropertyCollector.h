// SPDX-License-Identifier: MIT
//
// The filters of the sessions, and the long poll that reports what they select.
//
// Thread safety: guarded by the inventory's mutex, on which waits sleep as well.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "simulator/FilterSpec.h"
#include "simulator/Inventory.h"

namespace sim {

// A SOAP fault: the element in its detail and its text.
struct Fault {
  std::string type;  // "NotAuthenticatedFault"
  std::string text;
};

class PropertyCollector {
 public:
  // At most `maxObjects` objects in an answer; 0: no limit.
  PropertyCollector(Inventory& inventory, unsigned int maxObjects);

  void OpenSession(const std::string& session);
  void CloseSession(const std::string& session);  // its waits end with a fault
  void CloseAll();
  void Shutdown();  // every wait ends

  // Returns the new filter's identifier. Throws Fault.
  std::string CreateFilter(const std::string& session, const pugi::xml_node& spec);
  void DestroyFilter(const std::string& session, const std::string& filter);

  // Ends the session's pending wait, if there is one, with a fault.
  void CancelWait(const std::string& session);

  // Waits until there is something to report after `version` and returns the content of
  // "returnval". Throws Fault.
  std::string Wait(const std::string& session, const std::string& version);

  unsigned int PendingWaits();
  unsigned int Filters();

 private:
  struct Filter {
    FilterSpec spec;
    std::map<std::string, Version> reported;  // version as of which an object was reported
    Version since = 0;                        // everything up to here was reported
    bool complete = false;                    // false: the selection is to be walked anew
  };
  struct Session {
    std::map<std::string, Filter> filters;
    unsigned long long lastAnswer = 0;
    unsigned long long cancels = 0;
    unsigned int waits = 0;
  };

  Session& FindLocked(const std::string& session);
  void BeginWaitLocked(Session& session, const std::string& version);
  std::string ReportLocked(Session& session);
  std::string ReportFilterLocked(Filter& filter, unsigned int& room);
  std::string ReportObjectLocked(Filter& filter, const std::string& id, Object& object);
  std::vector<std::string> CandidatesLocked(Filter& filter, bool& all);

  Inventory& inventory;
  const unsigned int maxObjects;
  std::map<std::string, Session> sessions;
  unsigned int nextFilter = 1;
  unsigned long long nextAnswer = 1;
  unsigned int pendingWaits = 0;
  bool shutdown = false;
};

}  // namespace sim
