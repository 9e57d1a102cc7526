// SPDX-License-Identifier: MIT
#include "soak/Soak.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include "endtoend/Simulator.h"
#include "soak/Faults.h"
#include "soak/FollowedTool.h"
#include "soak/Judgement.h"

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double SAMPLE_SECONDS = 5;
constexpr double CHANGES_PER_SECOND = 10;

class Endurance {
 public:
  explicit Endurance(const Plan& chosen)
      : plan(chosen),
        simulator({"--hosts", "3", "--machines", "20", "--seed", std::to_string(plan.seed)}),
        faults(simulator, plan.seed),
        tool(simulator.ConfigFile(simulator.Config())) {}

  bool Go();

 private:
  double Now() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
  double Total() const { return plan.minutes * 60; }
  double RestSeconds() const { return std::clamp(Total() / 10, 5.0, 60.0); }
  void SleepUntil(double when);
  ProcessSample Sample();
  Rest TakeRest();
  void Trouble();
  void PrintRow(const ProcessSample& sample);
  void PrintSummary(const std::vector<std::string>& breaches);

  const Plan plan;
  const Clock::time_point start = Clock::now();
  endtoend::Simulator simulator;
  Faults faults;
  FollowedTool tool;
  Record run;
};

void Endurance::SleepUntil(double when) {
  std::this_thread::sleep_until(
      start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(when)));
  if (!tool.IsRunning()) throw std::runtime_error("the tool has ended");
}

ProcessSample Endurance::Sample() {
  ProcessSample sample = tool.Sample();
  sample.at = Now();
  return sample;
}

// With the caches true and nothing left to do.
Rest Endurance::TakeRest() {
  Rest rest;
  SleepUntil(Now() + 1);  // what the last change set off is over
  rest.begin = Sample();
  SleepUntil(Now() + RestSeconds());
  rest.end = Sample();
  return rest;
}

// Changes all the time, a fault every few seconds, a sample now and then.
void Endurance::Trouble() {
  const double end = Total() - RestSeconds();
  double nextFault = Now(), nextSample = Now(), nextRow = Now();
  run.warmUp = Now() + std::clamp((end - Now()) / 6, 5.0, 300.0);
  faults.Control("churn", {{"rate", CHANGES_PER_SECOND}});
  while (Now() < end) {
    if (Now() >= nextFault) {
      faults.OrderOne();
      nextFault = Now() + faults.Pause();
    }
    if (Now() >= nextSample) {
      run.samples.push_back(Sample());
      nextSample += SAMPLE_SECONDS;
    }
    if (Now() >= nextRow) {
      PrintRow(run.samples.back());
      nextRow += std::max(Total() / 30, SAMPLE_SECONDS);
    }
    SleepUntil(std::min({nextFault, nextSample, end}));
  }
  faults.Control("fault", {{"kind", "clear"}});
  faults.Control("churn", {{"rate", 0}});
}

void Endurance::PrintRow(const ProcessSample& sample) {
  std::printf("%8.1f %9ld %5ld %8ld %8.2f %7u %6lu %9lu %10lu\n", sample.at / 60, sample.residentKb,
              sample.descriptors, sample.threads, sample.cpuSeconds, faults.Total(),
              tool.Reconnections(), tool.LogLines(), tool.Documents());
  std::fflush(stdout);
}

void Endurance::PrintSummary(const std::vector<std::string>& breaches) {
  for (const auto& kind : faults.Ordered()) {
    std::printf("%s %u, ", kind.first.c_str(), kind.second);
  }
  std::printf("%u faults in all\n", faults.Total());
  for (const Rest* rest : {&run.before, &run.after}) {
    std::printf("at rest for %.0f s: %.2f s of CPU, %ld descriptors, %ld threads, %ld kB\n",
                rest->end.at - rest->begin.at, rest->end.cpuSeconds - rest->begin.cpuSeconds,
                rest->end.descriptors, rest->end.threads, rest->end.residentKb);
  }
  const double grown =
      Growth(run, [](const ProcessSample& s) { return static_cast<double>(s.residentKb); });
  std::printf("memory: %+.0f kB from minute %.1f on, %.0f allowed\n", grown, run.warmUp / 60,
              GROWTH_LIMIT_KB);
  std::printf("log: %lu lines at level verbose, %.0f allowed\n", run.logLines, LogLimit(run));
  std::printf("caches at the end: %s\n", run.endedEqual ? "equal the truth" : "wrong");
  for (const std::string& breach : breaches) std::printf("BREACH %s\n", breach.c_str());
  std::printf("%s after %.1f minutes\n", breaches.empty() ? "passed" : "FAILED", Now() / 60);
}

bool Endurance::Go() {
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
  run.faults = faults.Total();
  run.logLines = tool.LogLines();
  const std::vector<std::string> breaches = Breaches(run);
  PrintSummary(breaches);
  return breaches.empty();
}

}  // namespace

bool Soak(const Plan& plan) {
  return Endurance(plan).Go();
}

}  // namespace soak
