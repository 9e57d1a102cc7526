// SPDX-License-Identifier: MIT
#include "tools/agent/metrics/Metrics.h"

#include <utility>

#include "tools/common/ProcessFigures.h"

namespace tools::agent {
namespace {

constexpr std::pair<kecpp::PowerState, const char*> POWER_STATES[] = {
    {kecpp::PowerState::on, "on"},
    {kecpp::PowerState::off, "off"},
    {kecpp::PowerState::suspended, "suspended"},
    {kecpp::PowerState::unknown, "unknown"},
};

constexpr std::pair<unsigned, const char*> STATUSES[] = {
    {2, "ok"}, {3, "degraded"}, {6, "error"}, {0, "unknown"}};

const char* PowerName(kecpp::PowerState power) {
  for (const auto& [state, name] : POWER_STATES) {
    if (state == power) return name;
  }
  return "unknown";
}

double Seconds(std::chrono::system_clock::time_point time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

double Number(unsigned long long count) {
  return static_cast<double>(count);
}

void WriteHosts(const InventoryCounts::ByKey& hosts, Exposition& out) {
  out.Family("kecpp_hosts", "gauge", "Hosts by operational status.");
  for (const auto& [status, name] : STATUSES) {
    std::size_t count = 0;
    for (const auto& [key, host] : hosts) count += host.isThere && host.status == status ? 1 : 0;
    out.Sample({{"status", name}}, Number(count));
  }
  out.Family("kecpp_host_machines", "gauge", "Virtual machines by the key of their host.");
  for (const auto& [key, host] : hosts) out.Sample({{"host", key}}, Number(host.machines));
  out.Family("kecpp_host_info", "gauge", "The name of each host, by its key.");
  for (const auto& [key, host] : hosts) {
    if (host.isThere) out.Sample({{"host", key}, {"name", host.name}}, 1);
  }
}

}  // namespace

Metrics::Metrics(const kecpp::Inventory& shown, Changes countChanges,
                 const RequestCounters& requestCounters, const DeliveryCounters& deliveryCounters,
                 const AgentServer& agentServer, std::size_t machines)
    : inventory(shown),
      changes(std::move(countChanges)),
      requests(requestCounters),
      deliveries(deliveryCounters),
      server(agentServer),
      mostMachines(machines) {}

std::string Metrics::Text() {
  Exposition out;
  WriteConnection(out);
  WriteInventory(out);
  if (mostMachines > 0) WriteMachines(out);
  requests.Write(out);
  WriteIndications(out);
  out.Family("kecpp_connections", "gauge", "Connections of clients.");
  out.Sample(Number(server.Connections()));
  WriteProcessFigures(out);
  return out.Take();
}

void Metrics::WriteInventory(Exposition& out) {
  {
    std::lock_guard<std::mutex> lock(mutex);
    if (!counts) counts.emplace(inventory);
    counts->Update();
    out.Family("kecpp_machines", "gauge", "Virtual machines by power state.");
    for (const auto& [power, name] : POWER_STATES) {
      out.Sample({{"power_state", name}}, Number(counts->Machines(power)));
    }
    WriteHosts(counts->Hosts(), out);
  }
  for (const auto& [kind, name] : {std::pair(kecpp::Kind::role, "kecpp_roles"),
                                   std::pair(kecpp::Kind::privilege, "kecpp_privileges"),
                                   std::pair(kecpp::Kind::identity, "kecpp_identities")}) {
    out.Family(name, "gauge", "Objects of this kind.");
    out.Sample(Number(inventory.Count(kind)));
  }
}

// A copy at a time: no lock is held while a line is written.
void Metrics::WriteMachines(Exposition& out) const {
  struct Enough {};
  std::size_t left = mostMachines;
  out.Family("kecpp_machine_info", "gauge", "Each virtual machine, or as many as were asked for.");
  try {
    inventory.ForEach<kecpp::Machine>([&](const kecpp::Machine& machine) {
      if (left-- == 0) throw Enough();
      out.Sample({{"machine", machine.key},
                  {"name", machine.name},
                  {"host", machine.host.value_or("")},
                  {"power_state", PowerName(machine.powerState)}},
                 1);
    });
  } catch (const Enough&) {
  }
}

void Metrics::WriteConnection(Exposition& out) const {
  const kecpp::Status status = inventory.State();
  out.Family("kecpp_build_info", "gauge", "The version of agent and library.");
  out.Sample({{"agent", KECPP_TOOLS_VERSION}, {"library", kecpp::Version()}}, 1);
  out.Family("kecpp_connected", "gauge", "1 while the daemon is connected and read, else 0.");
  out.Sample(status.state == kecpp::Status::State::connected ? 1 : 0);
  out.Family("kecpp_daemon_connections_total", "counter", "Connections made to the daemon.");
  out.Sample(Number(status.connections));
  out.Family("kecpp_update_sets", "gauge", "Update sets applied by this connection.");
  out.Sample(Number(status.updates));
  out.Family("kecpp_changes_total", "counter", "Objects that were added, changed or removed.");
  out.Sample(Number(changes()));
  out.Family("kecpp_failed_cycles", "gauge", "Failed cycles since the last good one.");
  out.Sample(status.failures);
  if (status.updates == 0) return;
  out.Family("kecpp_last_update_timestamp_seconds", "gauge",
             "When the last update set was applied, since the epoch.");
  out.Sample(Seconds(status.lastUpdate));
}

void Metrics::WriteIndications(Exposition& out) const {
  out.Family("kecpp_subscriptions", "gauge", "Enabled subscriptions to changes.");
  out.Sample(Number(deliveries.subscriptions));
  out.Family("kecpp_indications_total", "counter", "Indications by what became of them.");
  out.Sample({{"outcome", "delivered"}}, Number(deliveries.delivered));
  out.Sample({{"outcome", "dropped"}}, Number(deliveries.dropped));
  out.Family("kecpp_indication_retries_total", "counter", "Indications that were sent again.");
  out.Sample(Number(deliveries.retried));
}

void AddMetrics(AgentServer& server, Metrics& metrics) {
  server.Get("/metrics", [&metrics](const httplib::Request&, httplib::Response& response) {
    response.set_content(metrics.Text(), Exposition::CONTENT_TYPE);
  });
}

}  // namespace tools::agent
