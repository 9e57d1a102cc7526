// SPDX-License-Identifier: MIT
//
// How many enumerations a second kecpp-agent answers, and how long a change takes to arrive at rest
// and then: agent_load [SECONDS [CLIENTS [MACHINES]]], 10, 8 and 10000 without.
//
// The agent's server and operations run in this process, on the inventory of a simulated daemon.
// Clients send EnumerateInstances of all machines, each on its own connection, one after the other.
// Ten times a second a machine is changed at the daemon, and a follower waits for that change.
#include <kecpp/inventory.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "simulator/driver/Simulator.h"
#include "tools/agent/AgentServer.h"
#include "tools/agent/CimEndpoint.h"
#include "tools/agent/Cursor.h"
#include "tools/agent/InteropModel.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds CHANGE_INTERVAL(100);
const std::string REQUEST =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
    "<SIMPLEREQ><IMETHODCALL NAME=\"EnumerateInstances\"><LOCALNAMESPACEPATH>"
    "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>"
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZORBEL_VMComputerSystem\"/></IPARAMVALUE>"
    "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

long Since(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

void TakeAll(kecpp::Follower& follower) {
  while (!follower.Next().empty()) continue;
}

// In microseconds, how long each change took from the daemon's answer to the follower.
std::vector<long> Change(driver::Simulator& simulator, kecpp::Follower& follower,
                         std::chrono::seconds time) {
  std::vector<long> times;
  const auto end = Clock::now() + time;
  for (auto next = Clock::now(); next < end; next += CHANGE_INTERVAL) {
    std::this_thread::sleep_until(next);
    TakeAll(follower);
    simulator.SetMachine("vm-1", "name", std::to_string(times.size()));
    const auto start = Clock::now();
    follower.Wait(std::chrono::minutes(1));
    times.push_back(Since(start));
  }
  return times;
}

struct Served {
  std::atomic<long> requests{0};
  std::atomic<long> bytes{0};
  std::atomic<long> failures{0};
};

void Enumerate(int port, const std::atomic<bool>& ended, Served& served) {
  httplib::Client client("127.0.0.1", port);
  client.set_keep_alive(true);
  while (!ended) {
    const auto answer = client.Post("/cimom", REQUEST, "application/xml");
    const bool good = answer && answer->status == 200;
    ++(good ? served.requests : served.failures);
    if (good) served.bytes += static_cast<long>(answer->body.size());
  }
}

void PrintTimes(const char* what, std::vector<long> times) {
  std::sort(times.begin(), times.end());
  const auto part = [&](double share) {
    const double last = static_cast<double>(times.size() - 1);
    return static_cast<double>(times[static_cast<std::size_t>(last * share)]) / 1000;
  };
  std::printf("%zu times %s: half %.3f ms, 99 %% %.3f ms, longest %.3f ms\n", times.size(), what,
              part(0.5), part(0.99), part(1));
}

void Print(const Served& served, std::chrono::seconds time) {
  std::printf("%.1f enumerations a second, %.1f MB each, %ld failed\n",
              static_cast<double>(served.requests) / static_cast<double>(time.count()),
              static_cast<double>(served.bytes) / 1e6 / static_cast<double>(served.requests),
              served.failures.load());
}

long ProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000L + time.tv_nsec / 1000;
}

// What one copy of all machines costs, in processor time.
void TimeCopies(const kecpp::Inventory& inventory) {
  const tools::ClassRow& type = tools::ClassOf(kecpp::Kind::machine);
  const auto properties = tools::PropertiesOf(type);
  std::vector<long> times;
  for (int i = 0; i < 50; ++i) {
    tools::agent::XmlWriter out;
    const auto cursor = tools::agent::ObjectsOf(type, properties, {});
    const long start = ProcessorTime();
    while (!cursor->AtEnd()) cursor->Write(&inventory, 256, out);
    times.push_back(ProcessorTime() - start);
  }
  PrintTimes("copied all machines", times);
}

int Argument(int argc, char** argv, int index, int otherwise) {
  return argc > index ? std::max(1, std::atoi(argv[index])) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  const std::chrono::seconds time(Argument(argc, argv, 1, 10));
  const int clients = Argument(argc, argv, 2, 8);
  driver::Simulator simulator({"--machines", std::to_string(Argument(argc, argv, 3, 10000))});
  const kecpp::Inventory inventory({simulator.Config()});
  TimeCopies(inventory);
  kecpp::Follower follower = inventory.Follow();
  PrintTimes("until a change arrived at rest", Change(simulator, follower, time));

  const tools::agent::InventoryGate gate(inventory, std::chrono::milliseconds(0));
  tools::agent::InteropModel interop("localhost", false);
  const tools::agent::Operations operations(gate, interop);
  tools::agent::RequestCounters requests;
  tools::agent::AgentServer server(nullptr, tools::agent::Limits());
  tools::agent::AddCimEndpoint(server, operations, requests);
  const int port = server.Bind("127.0.0.1", 0);
  server.Start();
  std::atomic<bool> ended{false};
  Served served;
  std::vector<std::thread> asking;
  asking.reserve(static_cast<std::size_t>(clients));
  for (int i = 0; i < clients; ++i) {
    asking.emplace_back([&] { Enumerate(port, ended, served); });
  }
  const std::vector<long> times = Change(simulator, follower, time);
  ended = true;
  for (std::thread& thread : asking) thread.join();
  server.Stop();
  Print(served, time);
  PrintTimes("until a change arrived among clients", times);
}
