// SPDX-License-Identifier: MIT
//
// Subscriptions to changes: clients make filters, destinations and subscriptions as instances of
// the namespace "interop", and are told what changes. They are kept in a file.
//
// Thread safety: any thread. Locks: `changing`, which is held while the file is written, before
// `mutex` and those of the watch and the deliveries.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_INDICATIONSERVICE_H
#define KECPP_TOOLS_AGENT_INDICATIONS_INDICATIONSERVICE_H

#include <kecpp/inventory.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/agent/InteropModel.h"
#include "tools/agent/StoredInstances.h"
#include "tools/agent/indications/ChangeWatch.h"
#include "tools/agent/indications/Entries.h"
#include "tools/agent/indications/StateFile.h"

namespace tools::agent {

class IndicationService : public StoredSource {
 public:
  // Reads what is in the folder, and follows the inventory. Without a folder nothing is kept.
  // `interop` has the indication service; it, the inventory, policy and counters outlive the
  // object. Throws std::runtime_error when the folder cannot be used. A file there that cannot be
  // understood is renamed, and said on standard error.
  IndicationService(const kecpp::Inventory& inventory, const InteropModel& interop,
                    const std::string& hostName, const std::string& folder,
                    const DeliveryPolicy& policy, DeliveryCounters& counters);
  ~IndicationService() override;

  // Lets every operation that waits go, and the sending threads end. Nothing is sent from then on.
  void End();

  // What the agent tells of itself, and what clients have made.
  std::vector<Stored> All() const override;

  // What they return for was written to the file. A subscription is told all that changes from then
  // on.
  Stored Create(const ClassRow& type, const std::vector<GivenProperty>& properties) override;
  void Modify(const Stored& instance, const std::vector<GivenProperty>& properties,
              const std::optional<std::vector<std::string>>& wanted) override;
  void Delete(const Stored& instance) override;

 private:
  void Load();
  void Write();
  void Publish();
  template <class Change>
  void Apply(Change change);
  void LookAround();

  const InteropModel& interop;
  DeliveryCounters& counters;
  const std::unique_ptr<const StateFile> file;  // null: nothing is kept
  std::mutex changing;
  Entries entries;      // guarded by `changing`, like the next two
  std::string written;  // to the file
  std::chrono::steady_clock::time_point nextLook;
  mutable std::mutex mutex;
  std::vector<Stored> published;     // guarded by `mutex`
  std::optional<ChangeWatch> watch;  // the last one to begin and the first one to end
};

}  // namespace tools::agent

#endif
