// SPDX-License-Identifier: MIT
//
// The filters, destinations and subscriptions that there are, and the rules between them.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_ENTRIES_H
#define KECPP_TOOLS_AGENT_INDICATIONS_ENTRIES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/agent/StoredInstances.h"
#include "tools/agent/indications/Delivery.h"
#include "tools/agent/indications/EventFilter.h"
#include "tools/agent/indications/GivenInstance.h"
#include "tools/agent/indications/Plan.h"
#include "tools/agent/indications/StateText.h"

namespace tools::agent {

inline constexpr std::size_t MOST_FILTERS = 128;
inline constexpr std::size_t MOST_DESTINATIONS = 32;
inline constexpr std::size_t MOST_SUBSCRIPTIONS = 128;

class Entries {
  struct Entry {
    Stored instance;
    Stored link;                                // with the service; none of a subscription
    std::shared_ptr<const EventFilter> filter;  // a filter's
    std::shared_ptr<Delivery> delivery;         // a destination's
  };

 public:
  using Time = std::chrono::system_clock::time_point;

  // The name of this machine goes into keys. `service` is what filters and destinations are linked
  // with. Policy and counters outlive the object and what it gives.
  Entries(std::string hostName, Stored service, const DeliveryPolicy& policy,
          DeliveryCounters& counters);

  // All throw OperationError, and then nothing has changed.
  Stored Create(const ClassRow& type, const std::vector<GivenProperty>& given);
  void Modify(const Stored& instance, const std::vector<GivenProperty>& given,
              const std::optional<std::vector<std::string>>& wanted);
  void Delete(const Stored& instance);

  // Removes subscriptions whose time is over, and those whose listener has not answered for longer
  // than the policy says. What they were, for a log.
  std::vector<std::string> RemoveExpired(Time now);

  // Every instance, and the links with the service.
  std::vector<Stored> Instances() const;
  std::shared_ptr<const Plan> MakePlan() const;

  std::vector<KeptInstance> Kept() const;
  // Into an empty object. Throws OperationError for what Create would refuse.
  void Restore(const std::vector<KeptInstance>& kept);

  // All that there is, and the way back to it.
  class Backup {
   private:
    friend class Entries;
    std::vector<Entry> entries;
  };
  Backup Save() const;
  void Return(Backup backup) { entries = std::move(backup.entries); }

  // Asks all deliveries to end, without waiting.
  void EndDeliveries() const;

 private:
  Stored Add(const ClassRow& type, const std::vector<GivenProperty>& given, Author author,
             long long failingSince);
  Entry MakeEntry(StoredInstance instance, Author author, long long failingSince);
  void MakeFilter(Entry& entry) const;
  void MakeDestination(Entry& entry, Author author, long long failingSince);
  void SetServerValues(StoredInstance& instance);
  void CheckRoom(const ClassRow& type) const;
  const Entry* Find(const Stored& instance) const;
  const Entry& Get(const Stored& instance) const;
  bool IsUsed(const Stored& instance) const;
  Stored Resolve(const KeyBinding& reference) const;
  void Renew(const Stored& former, const Entry& renewed);

  const std::string host;
  const Stored service;
  const DeliveryPolicy& policy;
  DeliveryCounters& counters;
  const std::string run;  // the agent's, in contexts of sequences
  unsigned long long made = 0;
  std::vector<Entry> entries;
};

}  // namespace tools::agent

#endif
