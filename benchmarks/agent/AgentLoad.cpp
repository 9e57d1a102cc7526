// SPDX-License-Identifier: MIT
//
// How many enumerations a second kecpp-agent answers, and how long the thread that applies changes
// then waits for a lock: agent_load [SECONDS [CLIENTS [MACHINES]]], 10, 8 and 10000 without.
//
// The agent's server and operations run in this process on caches that are filled here. Clients
// send EnumerateInstances of all machines, each on its own connection, one after the other. The
// changing thread takes the mutexes of machines and hosts as the library's sync thread does,
// changes a machine and lets go, a thousand times a second.
#include <kecpp.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tools/agent/AgentServer.h"
#include "tools/agent/CacheQueries.h"
#include "tools/agent/CimEndpoint.h"

namespace {

using namespace KE::Stub;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds CHANGE_INTERVAL(1000);
const std::string REQUEST =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
    "<SIMPLEREQ><IMETHODCALL NAME=\"EnumerateInstances\"><LOCALNAMESPACEPATH>"
    "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>"
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZORBEL_VMComputerSystem\"/></IPARAMVALUE>"
    "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

ZORBEL_VMComputerSystem* MakeMachine(int number) {
  auto* machine = CreateZORBEL_VMComputerSystem();
  const std::string name = "vm-" + std::to_string(number);
  machine->Name = name.c_str();
  machine->ElementName = (name + " R&amp;D").c_str();
  machine->Description = "A machine of the load test";
  machine->UUID = "59d9a3d1-faa6-8e66-3e70-8db8aa7e4a9c";
  machine->GuestFullName = "Debian GNU/Linux 12 (64-bit)";
  machine->GuestHostName = (name + ".example.org").c_str();
  machine->GuestIPAddress = "10.0.0.1";
  machine->VMPathName = ("[store1] " + name + "/" + name + ".cfg").c_str();
  machine->PowerState = "poweredOn";
  machine->OperationalStatus = 2;
  return machine;
}

void Fill(KE::Instance::KETypeCache& cache, int machines) {
  KELib::KEString type(ZORBEL_VMComputerSystemClass);
  KELib::KEString hosts(ZORBEL_ORXComputerSystemClass);
  cache.CreateDataCache(type);
  cache.CreateDataCache(hosts);
  for (int i = 0; i < machines; ++i) {
    auto* machine = MakeMachine(i);
    cache.SetVal(type, machine->Name, machine);
  }
}

// Of the changing thread, in microseconds: how long it waited for the lock, and how much too late
// it woke from its pause. The second is what the machine's other work costs, without any lock.
struct Waits {
  std::vector<long> lock, pause;
};

long Since(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

Waits Change(KE::Instance::KETypeCache& cache, const std::atomic<bool>& ended) {
  KELib::KEString type(ZORBEL_VMComputerSystemClass);
  KELib::KEString hostType(ZORBEL_ORXComputerSystemClass);
  KE::Instance::KEDataCache* machines = cache.GetDataCache(type);
  KE::Instance::KEDataCache* hosts = cache.GetDataCache(hostType);
  const unsigned count = machines->Size();
  Waits waits;
  for (unsigned i = 0; !ended; ++i) {
    const auto start = Clock::now();
    {
      KELib::KEMutexGuard machinesGuard(machines->GetMutex());
      KELib::KEMutexGuard hostsGuard(hosts->GetMutex());
      waits.lock.push_back(Since(start));
      KELib::KEString key(("vm-" + std::to_string(i % count)).c_str());
      KELib::Stub::KEStubRef ref;
      machines->GetVal(key, ref);
      static_cast<ZORBEL_VMComputerSystem*>(ref.GetData())->PowerState =
          i % 2 == 0 ? "poweredOff" : "poweredOn";
    }
    const auto next = Clock::now() + CHANGE_INTERVAL;
    std::this_thread::sleep_until(next);
    waits.pause.push_back(Since(next));
  }
  return waits;
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
    return times[static_cast<std::size_t>(static_cast<double>(times.size() - 1) * share)] / 1000.0;
  };
  std::printf("%zu times %s: half %.3f ms, 99 %% %.3f ms, longest %.3f ms\n", times.size(), what,
              part(0.5), part(0.99), part(1));
}

void Print(const Waits& waits, const Served& served, int seconds) {
  std::printf("%.1f enumerations a second, %.1f MB each, %ld failed\n",
              static_cast<double>(served.requests) / seconds,
              static_cast<double>(served.bytes) / 1e6 / static_cast<double>(served.requests),
              served.failures.load());
  PrintTimes("waited for the lock", waits.lock);
  PrintTimes("woken late without a lock", waits.pause);
}

long ProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000L + time.tv_nsec / 1000;
}

// What one copy of all machines costs, in processor time.
void TimeCopies(KE::Instance::KETypeCache& cache) {
  const tools::agent::ClassRow& type = *tools::agent::FindClass(ZORBEL_VMComputerSystemClass);
  std::vector<long> times;
  for (int i = 0; i < 50; ++i) {
    tools::agent::Rows rows(type, tools::agent::PropertiesOf(type));
    const long start = ProcessorTime();
    tools::agent::ReadAll(cache, rows);
    times.push_back(ProcessorTime() - start);
  }
  PrintTimes("copied all machines", times);
}

int Argument(int argc, char** argv, int index, int otherwise) {
  return argc > index ? std::max(1, std::atoi(argv[index])) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = Argument(argc, argv, 1, 10);
  const int clients = Argument(argc, argv, 2, 8);
  KE::Instance::KETypeCache cache;
  Fill(cache, Argument(argc, argv, 3, 10000));
  TimeCopies(cache);
  tools::agent::CacheGate gate(std::chrono::milliseconds(0));
  gate.Open({&cache, true});
  const tools::agent::Operations operations(gate);
  tools::agent::AgentServer server(nullptr, tools::agent::Limits());
  tools::agent::AddCimEndpoint(server, operations);
  const int port = server.Bind("127.0.0.1", 0);
  server.Start();

  std::atomic<bool> ended{false};
  Served served;
  Waits waits;
  std::thread changing([&] { waits = Change(cache, ended); });
  std::vector<std::thread> asking;
  for (int i = 0; i < clients; ++i) {
    asking.emplace_back([&] { Enumerate(port, ended, served); });
  }
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  ended = true;
  changing.join();
  for (std::thread& thread : asking) thread.join();
  server.Stop();
  Print(waits, served, seconds);
}
