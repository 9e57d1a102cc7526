// SPDX-License-Identifier: MIT
//
// What subscriptions cost kecpp-agent, and whether all is told under load:
//
//   indication_load [--machines N] [--rate N] [--seconds N] [--query TEXT] AGENT
//
// 16 subscriptions to modifications, or to what another query says, each with a destination of its
// own at one listener, beside a simulated daemon of 100,000 machines, of which 200 a second get
// another name, for a minute. Reported: how long making the subscriptions takes, the memory that
// the first one takes for each machine, what came, numbers that are missing, the agent's processor
// time for an indication, and its memory during the load.
#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t SUBSCRIPTIONS = 16;
constexpr const char* USER_LINE =  // ann, pw
    "ann:$6$rounds=1000$XlX8dgj7lYMRxaUR$ig9VljUVYxHCNUPborAVX3itDqhz8h8pG7pOu0nDcTUasxnaq."
    "4gLhTr3U635txnLiz47/pkoKNl8dBQQz9eq1\n";
constexpr const char* ANSWER =
    "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
    "PROTOCOLVERSION=\"1.0\"><SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\">"
    "</EXPMETHODRESPONSE></SIMPLEEXPRSP></MESSAGE></CIM>";

// Counts what comes for each destination, "/0" to "/15", and the numbers that are left out.
class Listener {
 public:
  Listener() {
    server.set_tcp_nodelay(true);
    server.set_keep_alive_max_count(1 << 30);
    server.new_task_queue = [] { return new httplib::ThreadPool(SUBSCRIPTIONS); };
    server.Post(R"(/(\d+))", [this](const httplib::Request& request, httplib::Response& response) {
      Note(std::stoul(request.matches[1]), request.body);
      response.set_content(ANSWER, "application/xml");
    });
    port = server.bind_to_any_port("127.0.0.1");
    thread = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running()) std::this_thread::yield();
  }
  ~Listener() {
    server.stop();
    thread.join();
  }

  std::string Url(std::size_t place) const {
    return "http://127.0.0.1:" + std::to_string(port) + "/" + std::to_string(place);
  }
  long long Count() {
    const std::lock_guard<std::mutex> lock(mutex);
    long long sum = 0;
    for (const long long number : next) sum += number;
    return sum - missing;
  }
  long long Missing() const { return missing; }

 private:
  void Note(std::size_t place, const std::string& body) {
    static const std::string MARK = "NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>";
    const std::size_t at = body.find(MARK);
    if (at == std::string::npos || place >= SUBSCRIPTIONS) throw std::runtime_error("strange");
    const long long number = std::atoll(body.c_str() + at + MARK.size());
    const std::lock_guard<std::mutex> lock(mutex);
    if (number < next[place]) return;  // again
    missing += number - next[place];
    next[place] = number + 1;
  }

  httplib::Server server;
  int port = 0;
  std::mutex mutex;
  std::array<long long, SUBSCRIPTIONS> next = {};  // guarded by `mutex`, like the next
  long long missing = 0;
  std::thread thread;
};

std::string Property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

std::string Reference(const std::string& role, const std::string& type, const std::string& name) {
  return "<PROPERTY.REFERENCE NAME=\"" + role + "\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"" +
         type + "\"><KEYBINDING NAME=\"Name\"><KEYVALUE>" + name +
         "</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>";
}

void Create(httplib::Client& client, const std::string& type, const std::string& properties) {
  const auto answer = client.Post(
      "/cimom",
      "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
      "<SIMPLEREQ><IMETHODCALL NAME=\"CreateInstance\"><LOCALNAMESPACEPATH>"
      "<NAMESPACE NAME=\"interop\"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME=\"NewInstance\">"
      "<INSTANCE CLASSNAME=\"" +
          type + "\">" + properties +
          "</INSTANCE></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>",
      "application/xml");
  if (answer && answer->body.find("<INSTANCENAME ") != std::string::npos) return;
  throw std::runtime_error(answer ? answer->body : "no answer");
}

void Subscribe(httplib::Client& client, const Listener& listener, std::size_t place) {
  const std::string name = std::to_string(place);
  Create(client, "CIM_ListenerDestinationCIMXML",
         Property("Name", name) + Property("Destination", listener.Url(place)));
  Create(client, "CIM_IndicationSubscription",
         Reference("Filter", "CIM_IndicationFilter", "all") +
             Reference("Handler", "CIM_ListenerDestinationCIMXML", name));
}

double Since(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

struct Options {
  std::string machines = "100000";
  double rate = 200;
  int seconds = 60;
  std::string query = "SELECT * FROM CIM_InstModification";
  std::string agent;
};

void Run(const Options& options) {
  setvbuf(stdout, nullptr, _IOLBF, 0);
  driver::Simulator simulator({"--machines", options.machines, "--hosts", "100"});
  driver::TemporaryFolder folder;
  std::ofstream(folder.path + "/users") << USER_LINE;
  driver::ChildProcess agent(
      {options.agent},
      {"--config", simulator.Config(), "--listen", "127.0.0.1:0", "--users", folder.path + "/users",
       "--indications-to", "127.0.0.1", "--state", folder.path, "--ready-wait", "600"});
  const std::string process = "/proc/" + std::to_string(agent.Pid());
  std::string url = agent.AwaitUrl();
  httplib::Client client(url.substr(0, url.rfind('/')));
  client.set_basic_auth("ann", "pw");
  client.set_read_timeout(600);
  while (client.Get("/metrics")->body.find("\nkecpp_connected 1") == std::string::npos) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  Listener listener;
  Create(client, "CIM_IndicationFilter",
         Property("Name", "all") + Property("SourceNamespace", "root/cimv2") +
             Property("QueryLanguage", "WQL") + Property("Query", options.query));
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const long before = SampleOf(process).residentKb;
  auto begin = Clock::now();
  Subscribe(client, listener, 0);
  std::printf("the first subscription: %.0f ms, ", Since(begin) * 1000);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  std::printf("%.0f bytes a machine\n", static_cast<double>(SampleOf(process).residentKb - before) *
                                            1024 / std::stod(options.machines));
  begin = Clock::now();
  for (std::size_t place = 1; place < SUBSCRIPTIONS; ++place) Subscribe(client, listener, place);
  std::printf("15 more: %.0f ms\n", Since(begin) * 1000);

  const double cpu = SampleOf(process).cpuSeconds;
  begin = Clock::now();
  const int changes = static_cast<int>(options.rate * options.seconds);
  for (int i = 0; i < changes; ++i) {
    std::this_thread::sleep_until(
        begin + std::chrono::microseconds(static_cast<long long>(i * 1e6 / options.rate)));
    simulator.SetMachine("vm-" + std::to_string(i % std::stoi(options.machines) + 1), "name",
                         "changed " + std::to_string(i));
    if (i % static_cast<int>(options.rate * 10) == 0) {
      std::printf("%3.0f s: %lld indications, %ld KB\n", Since(begin), listener.Count(),
                  SampleOf(process).residentKb);
    }
  }
  std::printf("%d changes in %.1f s\n", changes, Since(begin));
  begin = Clock::now();
  const long long expected = static_cast<long long>(SUBSCRIPTIONS) * changes;
  while (listener.Count() + listener.Missing() < expected && Since(begin) < 60) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::printf("the last one %.2f s after the last change, %ld KB\n", Since(begin),
              SampleOf(process).residentKb);
  std::printf("%lld of %lld indications, %lld missing, %.0f us of processor time each\n",
              listener.Count(), expected, listener.Missing(),
              (SampleOf(process).cpuSeconds - cpu) * 1e6 / static_cast<double>(listener.Count()));
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--machines" && i + 1 < argc) {
      options.machines = argv[++i];
    } else if (name == "--rate" && i + 1 < argc) {
      options.rate = std::atof(argv[++i]);
    } else if (name == "--seconds" && i + 1 < argc) {
      options.seconds = std::atoi(argv[++i]);
    } else if (name == "--query" && i + 1 < argc) {
      options.query = argv[++i];
    } else {
      options.agent = name;
    }
  }
  try {
    Run(options);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "indication_load: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
