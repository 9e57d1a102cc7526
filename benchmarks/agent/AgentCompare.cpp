// SPDX-License-Identifier: MIT
//
// What a large answer costs kecpp-agent, and how many small ones it gives a second:
//
//   agent_compare [--rounds N] [--machines N] AGENT [AGENT-BEFORE]
//
// Each agent is a process beside a simulated daemon of 100,000 machines. One round asks each of
// them for all machines, names and links: time until the first byte of the content, the agent's
// processor time for a byte of the answer, its highest resident size above that at rest. Then 64
// clients, each with a connection that it keeps, ask for single machines; beside that the same
// clients ask a server of the same HTTP library that answers a fixed text of that size. Figures are
// medians over the rounds, ratios are taken within a round.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/Rounds.h"
#include "benchmarks/agent/FixedServer.h"
#include "benchmarks/agent/PlainClient.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"

namespace {

using bench::PlainClient;
using bench::Transfer;
using Clock = std::chrono::steady_clock;
using Values = std::map<std::string, std::vector<double>>;

constexpr unsigned CLIENTS = 64;
constexpr std::chrono::seconds LOAD_TIME(3);
constexpr std::chrono::seconds WARM_UP(1);
constexpr const char* HOST = "ZORBEL_ORXComputerSystem";
constexpr const char* MACHINE = "ZORBEL_VMComputerSystem";

std::string ClassParameter(const std::string& type) {
  return "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + type + "\"/></IPARAMVALUE>";
}

std::string ObjectParameter(const std::string& parameter, const std::string& type,
                            const std::string& key) {
  return "<IPARAMVALUE NAME=\"" + parameter + "\"><INSTANCENAME CLASSNAME=\"" + type +
         "\"><KEYBINDING NAME=\"CreationClassName\"><KEYVALUE VALUETYPE=\"string\">" + type +
         "</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\">" + key +
         "</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>";
}

std::string Post(const std::string& method, const std::string& parameters) {
  const std::string body =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
      "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"" +
      method +
      "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>"
      "</LOCALNAMESPACEPATH>" +
      parameters + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
  return "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml; "
         "charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\nCIMMethod: " +
         method + "\r\nCIMObject: root/cimv2\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

// A process that serves: its processor time and its memory.
class Served {
 public:
  explicit Served(const std::vector<std::string>& command) : process(command) {
    const std::string url = process.AwaitUrl();
    port = std::stoi(url.substr(url.rfind(':') + 1));
    clock_getcpuclockid(process.Pid(), &clock);
  }

  int Port() const { return port; }
  double ProcessorSeconds() const {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  }
  double ResidentBytes() const { return static_cast<double>(SampleOf(Folder()).residentKb) * 1024; }
  void ForgetPeak() const { std::ofstream(Folder() + "/clear_refs") << "5"; }
  double PeakBytes() const {
    std::ifstream file(Folder() + "/status");
    for (std::string line; std::getline(file, line);) {
      if (line.compare(0, 6, "VmHWM:") == 0) return std::stod(line.substr(6)) * 1024;
    }
    return 0;
  }

 private:
  std::string Folder() const { return "/proc/" + std::to_string(process.Pid()); }

  driver::ChildProcess process;
  int port = 0;
  clockid_t clock{};
};

void AskFor(const Served& agent, const std::string& method, const std::string& parameter,
            const std::string& name, Values& values) {
  agent.ForgetPeak();
  const double rest = agent.ResidentBytes();
  const double before = agent.ProcessorSeconds();
  PlainClient client(agent.Port());
  const Transfer answer = client.Ask(Post(method, parameter));
  const double seconds = agent.ProcessorSeconds() - before;
  if (!answer.good) throw std::runtime_error(name + " failed");
  const double bytes = static_cast<double>(answer.bytes);
  values[name + ": first byte, ms"].push_back(answer.firstByteSeconds * 1e3);
  values[name + ": processor time, ns a byte"].push_back(seconds * 1e9 / bytes);
  values[name + ": peak above rest, MB"].push_back((agent.PeakBytes() - rest) / 1e6);
  values[name + ": the answer, MB"].push_back(bytes / 1e6);
}

void AskForAll(const Served& agent, Values& values) {
  const std::string host = ObjectParameter("ObjectName", HOST, "host-1");
  AskFor(agent, "EnumerateInstances", ClassParameter(MACHINE), "all machines", values);
  AskFor(agent, "EnumerateInstanceNames", ClassParameter(MACHINE), "their names", values);
  AskFor(agent, "EnumerateInstances", ClassParameter("ZORBEL_HostedDependency"), "links", values);
  AskFor(agent, "Associators", host, "associators of a host", values);
  AskFor(agent, "References", host, "references of a host", values);
}

struct Load {
  double requestsPerSecond = 0;
  double processorMicroseconds = 0;  // of the server, a request
};

// 64 clients for some seconds, after a second that does not count.
Load LoadBy(const Served& server, const std::vector<std::string>& requests) {
  std::atomic<long> answered{0}, failed{0};
  std::atomic<bool> ended{false};
  std::vector<std::thread> clients;
  for (unsigned i = 0; i < CLIENTS; ++i) {
    clients.emplace_back([&, i] {
      auto client = std::make_unique<PlainClient>(server.Port());
      for (std::size_t n = i; !ended; ++n) {
        const Transfer answer = client->Ask(requests[n % requests.size()]);
        ++(answer.good ? answered : failed);
        if (!answer.good || answer.ends) client = std::make_unique<PlainClient>(server.Port());
      }
    });
  }
  std::this_thread::sleep_for(WARM_UP);
  const long first = answered;
  const double cpu = server.ProcessorSeconds();
  const auto start = Clock::now();
  std::this_thread::sleep_for(LOAD_TIME);
  const double count = static_cast<double>(answered - first);
  const std::chrono::duration<double> time = Clock::now() - start;
  const double used = server.ProcessorSeconds() - cpu;
  ended = true;
  for (std::thread& client : clients) client.join();
  if (failed > 0) throw std::runtime_error("answers failed under load");
  return {count / time.count(), used * 1e6 / count};
}

std::vector<std::string> MachineRequests(int machines) {
  std::vector<std::string> requests;
  for (int i = 0; i < 1000; ++i) {
    const std::string key = "vm-" + std::to_string(1 + i * (machines / 1000));
    requests.push_back(Post("GetInstance", ObjectParameter("InstanceName", MACHINE, key)));
  }
  return requests;
}

void AskForSingleOnes(const Served& agent, const Served& fixed, int machines, Values& values) {
  const Load own = LoadBy(agent, MachineRequests(machines));
  const Load other = LoadBy(fixed, MachineRequests(machines));
  values["GetInstance, 64 clients: requests a second"].push_back(own.requestsPerSecond);
  values["GetInstance, 64 clients: beside a fixed text"].push_back(own.requestsPerSecond /
                                                                   other.requestsPerSecond);
  values["GetInstance, 64 clients: processor time, us"].push_back(own.processorMicroseconds);
  values["a fixed text, 64 clients: processor time, us"].push_back(other.processorMicroseconds);
}

void Print(const std::vector<Values>& all) {
  for (const auto& [name, values] : all.front()) {
    std::printf("%-52s %10.3f", name.c_str(), bench::Median(values));
    if (all.size() > 1) {
      std::vector<double> ratios;
      const std::vector<double>& before = all[1].at(name);
      for (std::size_t i = 0; i < values.size(); ++i) ratios.push_back(values[i] / before[i]);
      std::printf("  before %10.3f  times %.3f", bench::Median(before), bench::Median(ratios));
    }
    std::printf("\n");
  }
}

std::size_t AnswerBytes(const Served& agent) {
  return PlainClient(agent.Port())
      .Ask(Post("GetInstance", ObjectParameter("InstanceName", MACHINE, "vm-1")))
      .bytes;
}

int Run(const char* self, std::vector<std::string> programs, int rounds, int machines) {
  driver::Simulator simulator({"--machines", std::to_string(machines)});
  std::vector<std::unique_ptr<Served>> agents;
  for (const std::string& program : programs) {
    agents.push_back(std::make_unique<Served>(
        std::vector<std::string>{program, "--config", simulator.Config(), "--listen", "127.0.0.1:0",
                                 "--ready-wait", "60", "--max-connections", "256"}));
    if (AnswerBytes(*agents.back()) == 0) throw std::runtime_error(program + " does not answer");
  }
  const Served fixed({self, "--fixed", std::to_string(AnswerBytes(*agents.front()))});
  std::vector<Values> values(agents.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < agents.size(); ++i) {
      AskForAll(*agents[i], values[i]);
      AskForSingleOnes(*agents[i], fixed, machines, values[i]);
      values[i]["kept after the round, MB"].push_back(agents[i]->ResidentBytes() / 1e6);
    }
  }
  Print(values);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  int rounds = 5, machines = 100000;
  std::vector<std::string> programs;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const int number = i + 1 < argc ? std::atoi(argv[i + 1]) : 0;
    if (argument == "--fixed") return bench::ServeFixedText(static_cast<std::size_t>(number));
    if (argument == "--rounds" || argument == "--machines") {
      (argument == "--rounds" ? rounds : machines) = number;
      ++i;
    } else {
      programs.push_back(argument);
    }
  }
  if (programs.empty() || programs.size() > 2 || rounds < 1 || machines < 1000) {
    std::fprintf(stderr, "usage: %s [--rounds N] [--machines N] AGENT [AGENT-BEFORE]\n", argv[0]);
    return 2;
  }
  try {
    return Run(argv[0], programs, rounds, machines);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return EXIT_FAILURE;
  }
}
