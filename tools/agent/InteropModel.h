// SPDX-License-Identifier: MIT
//
// What the agent tells of itself in the namespace "interop": the server, its namespaces, how it is
// reached, and the profiles that it implements. Management software looks there first.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_INTEROPMODEL_H
#define KECPP_TOOLS_AGENT_INTEROPMODEL_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "tools/agent/StoredInstances.h"

namespace tools::agent {

class InteropModel : public StoredSource {
 public:
  // Whether clients can subscribe to changes, and how.
  struct Indications {
    unsigned retries;
    std::chrono::seconds retryInterval;
    std::chrono::seconds removalInterval;
    std::size_t mostDestinations;
    std::size_t mostSubscriptions;
    bool arePersistent;
  };

  // `hostName` is this machine's. `hasUsers`: clients must say who they are.
  InteropModel(const std::string& hostName, bool hasUsers,
               const std::optional<Indications>& indications = {});

  std::vector<Stored> All() const override { return instances; }

  // The service of indications; null without them.
  const Stored& IndicationService() const { return indicationService; }

 private:
  Stored Add(StoredInstance instance);
  void Link(const char* type, const char* role, const Stored& target, const char* partnerRole,
            const Stored& partner);
  void AddNamespaces(const std::string& host, const Stored& manager);
  void AddMechanism(const std::string& host, const Stored& manager, bool hasUsers,
                    bool hasIndications);
  Stored AddProfile(const std::string& name, const std::string& version);
  void AddIndications(const std::string& host, const Stored& system,
                      const Indications& indications);

  std::vector<Stored> instances;
  Stored indicationService;
};

// The name of this machine, as the system has it.
std::string LocalHostName();

}  // namespace tools::agent

#endif
