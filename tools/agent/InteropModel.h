// SPDX-License-Identifier: MIT
//
// What the agent tells of itself in the namespace "interop": the server, its namespaces, how it is
// reached, and the profiles that it implements. Management software looks there first.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_INTEROPMODEL_H
#define KECPP_TOOLS_AGENT_INTEROPMODEL_H

#include <string>
#include <vector>

#include "tools/agent/StoredInstances.h"

namespace tools::agent {

class InteropModel : public StoredSource {
 public:
  // `hostName` is this machine's. `hasUsers`: clients must say who they are.
  InteropModel(const std::string& hostName, bool hasUsers);

  std::vector<Stored> All() const override { return instances; }

 private:
  Stored Add(StoredInstance instance);
  void Link(const char* type, const char* role, const Stored& target, const char* partnerRole,
            const Stored& partner);
  void AddNamespaces(const std::string& host, const Stored& manager);
  void AddMechanism(const std::string& host, const Stored& manager, bool hasUsers);
  void AddProfile();

  std::vector<Stored> instances;
};

// The name of this machine, as the system has it.
std::string LocalHostName();

}  // namespace tools::agent

#endif
