// SPDX-License-Identifier: MIT
//
// Makes events of the inventory's changes. A change costs what one object costs: it is looked up,
// compared with its last copy where one is needed, and shown to the subscriptions on its class.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_EVENTSOURCE_H
#define KECPP_TOOLS_AGENT_INDICATIONS_EVENTSOURCE_H

#include <kecpp/inventory.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/agent/indications/LastCopies.h"
#include "tools/agent/indications/Plan.h"

namespace tools::agent {

class EventSource {
 public:
  // `hostName` is this machine's. The inventory outlives the object.
  EventSource(const kecpp::Inventory& inventory, std::string hostName);

  // Forgets all copies and whom they were for.
  void Reset();

  // Works for these subscriptions from now on: copies that they need are made, others dropped. O(1)
  // unless there are classes of which copies were not needed before: then O(their objects).
  void Use(std::shared_ptr<const Plan> plan);

  // What one change has caused is offered to the deliveries.
  void Take(const kecpp::Change& change);

  const std::shared_ptr<const Plan>& CurrentPlan() const { return plan; }

 private:
  // An object as it was looked at.
  struct Seen {
    Rows row;
    std::vector<std::string> links;  // by class of links: its key, then those of its partners
  };
  using LinkClasses = std::vector<const ClassRow*>;

  LinkClasses WantedLinks(const ClassRow& type) const;
  bool Look(const ClassRow& type, const std::string& key, const LinkClasses& linkClasses,
            Seen& seen) const;
  void Fill(const ClassRow& source);
  void TakeObject(const ClassRow& type, const kecpp::Change& change, const Seen& now);
  void TakeRemoval(const ClassRow& type, const std::string& key);
  void TakeLinks(const ClassRow& linkClass, const kecpp::Change& change, const std::string* now);
  void TellLinks(const ClassRow& linkClass, EventType type, std::string_view own,
                 const std::vector<std::string_view>& partners) const;
  void Tell(const Event& event) const;

  const kecpp::Inventory& inventory;
  const std::string host;
  std::shared_ptr<const Plan> plan = std::make_shared<const Plan>();
  // Of objects by their class, and by a class of links of those at its results.
  std::map<const ClassRow*, LastCopies> copies;
  // Added ones that had gone when they were looked at: nobody was told.
  std::set<std::pair<kecpp::Kind, std::string>> untold;
};

}  // namespace tools::agent

#endif
