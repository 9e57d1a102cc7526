// SPDX-License-Identifier: MIT
//
// kecpp-soak [MINUTES [SEED]], an endurance run: a rest, a time of changes and faults, a rest; then
// the judgement.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <thread>

#include "endurance/FollowedTool.h"
#include "endurance/Judgement.h"
#include "simulator/driver/Simulator.h"

namespace endurance {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double SAMPLE_SECONDS = 5;
constexpr double CHANGES_PER_SECOND = 10;

class Endurance {
 public:
  Endurance(double minutes, std::uint64_t seed)
      : total(minutes * 60),
        random(seed),
        simulator({"--hosts", "3", "--machines", "20", "--seed", std::to_string(seed)}),
        tool(simulator.ConfigFile(simulator.Config())) {}

  // Prints a table and a summary. True when no bound was breached. Throws std::exception when the
  // tool ends early.
  bool Go() {
    if (!tool.Becomes(simulator.Truth())) throw std::runtime_error("the tool shows no inventory");
    std::printf(" minutes  RSS [kB]   fds  threads  CPU [s]  faults  lost  loglines  documents\n");
    run.before = TakeRest();
    Trouble();
    const auto truth = simulator.Truth();
    run.endedEqual = tool.Becomes(truth);
    if (!run.endedEqual) {
      std::printf("what would make the caches true: %s\n",
                  nlohmann::json::diff(tool.LastDocument(), truth).dump().c_str());
    }
    run.after = TakeRest();
    PrintRow(run.after.end);
    run.exitStatus = tool.End();
    run.logLines = tool.LogLines();
    const std::vector<std::string> breaches = Breaches(run);
    PrintSummary(breaches);
    return breaches.empty();
  }

 private:
  double Now() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
  double RestSeconds() const { return std::clamp(total / 10, 5.0, 60.0); }

  void SleepUntil(double when) {
    std::this_thread::sleep_until(
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(when)));
    if (!tool.IsRunning()) throw std::runtime_error("the tool has ended");
  }

  ProcessSample Sample() {
    ProcessSample sample = tool.Sample();
    sample.at = Now();
    return sample;
  }

  // With the caches true and nothing left to do.
  Rest TakeRest() {
    SleepUntil(Now() + 1);  // what the last change set off is over
    const ProcessSample begin = Sample();
    SleepUntil(Now() + RestSeconds());
    return {begin, Sample()};
  }

  void OrderFault() {
    const driver::Json& order = orders[random() % orders.size()];
    const auto control = order.at(0).get<std::string>();
    simulator.Control(control, order.at(1));
    ++ordered[order.at(1).value("kind", control)];
    ++run.faults;
  }

  // Changes all the time, a fault every two to six seconds, a sample now and then.
  void Trouble() {
    const double end = total - RestSeconds();
    double nextFault = Now(), nextSample = Now(), nextRow = Now();
    run.warmUp = Now() + std::clamp((end - Now()) / 6, 5.0, 300.0);
    simulator.Control("churn", {{"rate", CHANGES_PER_SECOND}});
    while (Now() < end) {
      if (Now() >= nextFault) {
        OrderFault();
        nextFault = Now() + 2 + static_cast<double>(random() % 4001) / 1000;
      }
      if (Now() >= nextSample) {
        run.samples.push_back(Sample());
        nextSample += SAMPLE_SECONDS;
      }
      if (Now() >= nextRow) {
        PrintRow(run.samples.back());
        nextRow += std::max(total / 30, SAMPLE_SECONDS);
      }
      SleepUntil(std::min({nextFault, nextSample, end}));
    }
    simulator.Control("fault", {{"kind", "clear"}});
    simulator.Control("churn", {{"rate", 0}});
  }

  void PrintRow(const ProcessSample& sample) {
    std::printf("%8.1f %9ld %5ld %8ld %8.2f %7lu %6lu %9lu %10lu\n", sample.at / 60,
                sample.residentKb, sample.descriptors, sample.threads, sample.cpuSeconds,
                run.faults, tool.Reconnections(), tool.LogLines(), tool.Documents());
    std::fflush(stdout);
  }

  void PrintSummary(const std::vector<std::string>& breaches) {
    for (const auto& [kind, times] : ordered) std::printf("%s %u, ", kind.c_str(), times);
    std::printf("%lu faults in all\n", run.faults);
    for (const Rest* rest : {&run.before, &run.after}) {
      std::printf("at rest for %.0f s: %.2f s of CPU, %ld descriptors, %ld threads, %ld kB\n",
                  rest->Seconds(), rest->CpuSeconds(), rest->end.descriptors, rest->end.threads,
                  rest->end.residentKb);
    }
    std::printf("memory: %+.0f kB from minute %.1f on, %.0f allowed\n", run.Growth(),
                run.warmUp / 60, GROWTH_LIMIT_KB);
    std::printf("log: %lu lines at level verbose, %.0f allowed\n", run.logLines, run.LogLimit());
    std::printf("caches at the end: %s\n", run.endedEqual ? "equal the truth" : "wrong");
    for (const std::string& breach : breaches) std::printf("BREACH %s\n", breach.c_str());
    std::printf("%s after %.1f minutes\n", breaches.empty() ? "passed" : "FAILED", Now() / 60);
  }

  const double total;  // seconds
  const Clock::time_point start = Clock::now();
  // What goes wrong, one of these at random: a control of the simulated daemon and the order for
  // it. The time-outs of the configuration are longer than the delays.
  const driver::Json orders = driver::Json::parse(std::ifstream(KECPP_SOAK_ORDERS));
  std::mt19937_64 random;
  driver::Simulator simulator;
  FollowedTool tool;
  std::map<std::string, unsigned> ordered;  // by kind
  Record run;
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
