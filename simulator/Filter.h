// SPDX-License-Identifier: MIT
//
// A property filter of a session: what it selects, and what was reported to the client.
//
// Thread safety: guarded by the inventory's mutex.
#ifndef KECPP_SIMULATOR_FILTER_H
#define KECPP_SIMULATOR_FILTER_H

#include <deque>
#include <string>
#include <unordered_map>

#include "simulator/Inventory.h"
#include "simulator/Selection.h"

namespace sim {

class Filter {
 public:
  explicit Filter(Selection asked) : selection(std::move(asked)) {}

  // Appends what was not reported yet: "objectSet" elements of at most `room` objects, which are
  // subtracted from `room`, those of objects that left, and a "missingSet" when there is no start
  // object.
  void ReportLocked(const Inventory& inventory, unsigned int& room, std::string& out);

  // The client starts from nothing.
  void Forget();
  // The client has got the reports so far.
  void Acknowledge() { left.clear(); }
  // The client may lack some of the reports so far: everything is reported again, also the objects
  // that left since the last acknowledgement.
  void RepeatAll();

 private:
  using Types = std::unordered_map<std::string, std::string>;  // by object
  struct Report {
    Version at = 0;  // reported up to this version; 0: nothing
    std::string type;
    unsigned int walk = 0;  // the last walk that met the object
  };

  void FindNewsLocked(const Inventory& inventory, std::string& out);
  void WalkLocked(const Inventory& inventory, std::string& out);
  void Leave(const std::string& id, const std::string& type, std::string& out);
  bool ReportObjectLocked(const Inventory& inventory, const std::string& id, std::string& out);

  Selection selection;
  std::unordered_map<std::string, Report> reports;  // by object, of all that are selected or were
  std::deque<std::string> pending;                  // objects that may have news
  Types left;                                       // reported, but not acknowledged
  Types leftUnreported;
  Version since = 0;  // changes up to here are in `pending`
  unsigned int walk = 0;
  bool walked = false;
  bool reportedMissing = false;
};

}  // namespace sim

#endif
