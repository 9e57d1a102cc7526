// SPDX-License-Identifier: MIT
//
// kecpp-soak [MINUTES [SEED]], an endurance run of two programs: kecpp-inventory, and an agent that
// lives of a Follower alone. A rest, a time of changes and faults, a rest; then the judgement.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <list>
#include <map>
#include <random>
#include <stdexcept>
#include <thread>

#include "endurance/FollowedTool.h"
#include "endurance/Judgement.h"
#include "endurance/Replay.h"
#include "simulator/driver/Simulator.h"

namespace endurance {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double SAMPLE_SECONDS = 5;
constexpr double CHANGES_PER_SECOND = 10;

std::string Verbose(std::string config) {
  const std::string level = "<level>error";
  return config.replace(config.find(level), level.size(), "<level>verbose");
}

struct Followed {
  using Form = driver::Json (*)(driver::Json);
  Followed(const char* called, Form itsForm, const std::vector<std::string>& command)
      : name(called), form(itsForm), tool(command) {}

  const std::string name;
  const Form form;  // of the truth, as its documents have it
  FollowedTool tool;
  Record run;

  bool Becomes(const driver::Json& truth) {
    run.endedEqual = tool.Becomes(form(truth));
    if (run.endedEqual) return true;
    std::printf("%s: what would make it true: %s\n", name.c_str(),
                driver::Json::diff(tool.LastDocument(), form(truth)).dump().c_str());
    return false;
  }
};

class Endurance {
 public:
  Endurance(double minutes, std::uint64_t seed)
      : total(minutes * 60),
        random(seed),
        simulator({"--hosts", "3", "--machines", "20", "--seed", std::to_string(seed)}) {
    const std::string config = simulator.Config();
    all.emplace_back(
        "inventory", [](driver::Json truth) { return truth; },
        std::vector<std::string>{KECPP_TOOL_PROGRAM, "--config", simulator.ConfigFile(config),
                                 "--follow", "--format", "json", "--log-level", "verbose"});
    all.emplace_back("follower", &Decoded,
                     std::vector<std::string>{KECPP_FOLLOWER_PROGRAM, Verbose(config)});
  }

  // Prints a table and summaries. True when no bound was breached. Throws std::exception when a
  // program ends early.
  bool Go() {
    for (Followed& one : all) {
      if (!one.Becomes(simulator.Truth())) throw std::runtime_error(one.name + " shows nothing");
    }
    std::printf(
        "program   minutes  RSS [kB]   fds  threads  CPU [s]  faults  lost  loglines  "
        "documents\n");
    TakeRest(&Record::before);
    Trouble();
    for (Followed& one : all) one.Becomes(simulator.Truth());
    TakeRest(&Record::after);
    for (const auto& [kind, times] : ordered) std::printf("%s %u, ", kind.c_str(), times);
    std::printf("%lu faults in all\n", faults);
    bool passed = true;
    for (Followed& one : all) passed = Judge(one) && passed;
    std::printf("%s after %.1f minutes\n", passed ? "passed" : "FAILED", Now() / 60);
    return passed;
  }

 private:
  double Now() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
  double RestSeconds() const { return std::clamp(total / 10, 5.0, 60.0); }

  void SleepUntil(double when) {
    std::this_thread::sleep_until(
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(when)));
    for (Followed& one : all) {
      if (!one.tool.IsRunning()) throw std::runtime_error(one.name + " has ended");
    }
  }

  ProcessSample Sample(const Followed& one) const {
    ProcessSample sample = one.tool.Sample();
    sample.at = Now();
    return sample;
  }

  // With the caches true and nothing left to do.
  void TakeRest(Rest Record::*rest) {
    SleepUntil(Now() + 1);  // what the last change set off is over
    for (Followed& one : all) (one.run.*rest).begin = Sample(one);
    SleepUntil(Now() + RestSeconds());
    for (Followed& one : all) (one.run.*rest).end = Sample(one);
  }

  bool Judge(Followed& one) {
    PrintRow(one, one.run.after.end);
    one.run.exitStatus = one.tool.End();
    one.run.logLines = one.tool.LogLines();
    one.run.faults = faults;
    const std::vector<std::string> breaches = Breaches(one.run);
    PrintSummary(one, breaches);
    return breaches.empty();
  }

  // At first sessions are lost, so that the memory which a new connection beside the lost one takes
  // is there before it is judged.
  void OrderFault(bool isWarmingUp) {
    const driver::Json& order = orders[isWarmingUp ? 0 : random() % orders.size()];
    const auto control = order.at(0).get<std::string>();
    simulator.Control(control, order.at(1));
    ++ordered[order.at(1).value("kind", control)];
    ++faults;
  }

  // Changes all the time, a fault every two to six seconds, a sample now and then.
  void Trouble() {
    const double end = total - RestSeconds();
    double nextFault = Now(), nextSample = Now(), nextRow = Now();
    const double warmUp = Now() + std::clamp((end - Now()) / 6, 5.0, 300.0);
    for (Followed& one : all) one.run.warmUp = warmUp;
    simulator.Control("churn", {{"rate", CHANGES_PER_SECOND}});
    while (Now() < end) {
      if (Now() >= nextFault) {
        OrderFault(Now() < warmUp);
        nextFault = Now() + 2 + static_cast<double>(random() % 4001) / 1000;
      }
      if (Now() >= nextSample) {
        for (Followed& one : all) one.run.samples.push_back(Sample(one));
        nextSample += SAMPLE_SECONDS;
      }
      if (Now() >= nextRow) {
        for (Followed& one : all) PrintRow(one, one.run.samples.back());
        nextRow += std::max(total / 30, SAMPLE_SECONDS);
      }
      SleepUntil(std::min({nextFault, nextSample, end}));
    }
    simulator.Control("fault", {{"kind", "clear"}});
    simulator.Control("churn", {{"rate", 0}});
  }

  void PrintRow(Followed& one, const ProcessSample& sample) const {
    std::printf("%-9s %7.1f %9ld %5ld %8ld %8.2f %7lu %5lu %9lu %10lu\n", one.name.c_str(),
                sample.at / 60, sample.residentKb, sample.descriptors, sample.threads,
                sample.cpuSeconds, faults, one.tool.Reconnections(), one.tool.LogLines(),
                one.tool.Documents());
    std::fflush(stdout);
  }

  void PrintSummary(const Followed& one, const std::vector<std::string>& breaches) const {
    const Record& run = one.run;
    std::printf("%s:\n", one.name.c_str());
    for (const Rest* rest : {&run.before, &run.after}) {
      std::printf("  at rest for %.0f s: %.2f s of CPU, %ld descriptors, %ld threads, %ld kB\n",
                  rest->Seconds(), rest->CpuSeconds(), rest->end.descriptors, rest->end.threads,
                  rest->end.residentKb);
    }
    std::printf("  memory: %+.0f kB from minute %.1f on, %.0f allowed\n", run.Growth(),
                run.warmUp / 60, GROWTH_LIMIT_KB);
    std::printf("  log: %lu lines at level verbose, %.0f allowed\n", run.logLines, run.LogLimit());
    std::printf("  what it knows at the end: %s\n", run.endedEqual ? "the truth" : "wrong");
    for (const std::string& breach : breaches) std::printf("  BREACH %s\n", breach.c_str());
  }

  const double total;  // seconds
  const Clock::time_point start = Clock::now();
  // What goes wrong, one of these at random: a control of the simulated daemon and the order for
  // it. The time-outs of the configuration are longer than the delays.
  const driver::Json orders = driver::Json::parse(std::ifstream(KECPP_SOAK_ORDERS));
  std::mt19937_64 random;
  driver::Simulator simulator;
  std::list<Followed> all;
  std::map<std::string, unsigned> ordered;  // by kind
  unsigned long faults = 0;
};

}  // namespace
}  // namespace endurance

int main(int argc, char** argv) {
  const double minutes = argc > 1 ? std::strtod(argv[1], nullptr) : 60;
  const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
  if (argc > 3 || !(minutes > 0)) {
    std::fprintf(stderr, "usage: kecpp-soak [MINUTES [SEED]]\n");
    return 2;
  }
  try {
    return endurance::Endurance(minutes, seed).Go() ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kecpp-soak: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
