// SPDX-License-Identifier: MIT
//
// What GET /metrics answers: the inventory in numbers, the connection, the requests, the process.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_METRICS_METRICS_H
#define KECPP_TOOLS_AGENT_METRICS_METRICS_H

#include <kecpp/inventory.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "tools/agent/AgentServer.h"
#include "tools/agent/indications/DeliveryCounters.h"
#include "tools/agent/metrics/InventoryCounts.h"
#include "tools/agent/metrics/RequestCounters.h"

namespace tools::agent {

class Metrics {
 public:
  // How many changes of objects there were so far.
  using Changes = std::function<std::uint64_t()>;

  // `machines`: of so many at most there is a line. Everything outlives the object.
  Metrics(const kecpp::Inventory& inventory, Changes changes, const RequestCounters& requests,
          const DeliveryCounters& deliveries, const AgentServer& server, std::size_t machines);

  // O(what changed since the last call) and the text's length.
  std::string Text();

 private:
  void WriteInventory(Exposition& out);
  void WriteMachines(Exposition& out) const;
  void WriteConnection(Exposition& out) const;
  void WriteIndications(Exposition& out) const;

  const kecpp::Inventory& inventory;
  const Changes changes;
  const RequestCounters& requests;
  const DeliveryCounters& deliveries;
  const AgentServer& server;
  const std::size_t mostMachines;
  std::mutex mutex;
  std::optional<InventoryCounts> counts;  // guarded by `mutex`; from the first call on
};

// Serves it.
void AddMetrics(AgentServer& server, Metrics& metrics);

}  // namespace tools::agent

#endif
