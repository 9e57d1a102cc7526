// SPDX-License-Identifier: MIT
//
// The bounds that decide whether an endurance run passes.
#ifndef KECPP_ENDURANCE_JUDGEMENT_H
#define KECPP_ENDURANCE_JUDGEMENT_H

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "simulator/driver/ProcessSample.h"

namespace endurance {

// The bounds. A leak of 100 bytes for each update set of an hour with ten changes a second would be
// 3.5 MB.
constexpr double GROWTH_LIMIT_KB = 1024;    // resident memory, over the judged time
constexpr double LOG_LINES_PER_FAULT = 4;   // at level verbose, averaged over the run
constexpr double LOG_LINES_BESIDES = 50;    // starting, ending
constexpr long CONNECTION_DESCRIPTORS = 3;  // one more connection may stay open than at first
constexpr double IDLE_CPU_SHARE = 0.002;    // of one core, while nothing changes

struct Rest {  // the tool while nothing changes
  ProcessSample begin, end;
  double Seconds() const { return end.at - begin.at; }
  double CpuSeconds() const { return end.cpuSeconds - begin.cpuSeconds; }
  double CpuShare() const { return Seconds() > 0 ? CpuSeconds() / Seconds() : 1; }
};

struct Record {
  std::vector<ProcessSample> samples;  // between the two rests
  double warmUp = 0;                   // samples before this time are not judged
  Rest before, after;                  // a rest at the begin and one at the end
  unsigned long faults = 0;
  unsigned long logLines = 0;
  bool endedEqual = false;  // the caches equalled the truth
  int exitStatus = -1;

  double LogLimit() const {
    return LOG_LINES_BESIDES + LOG_LINES_PER_FAULT * static_cast<double>(faults);
  }

  // The growth of the memory over the judged time in kB: from the median of its first third to that
  // of its last, which single samples with a huge answer do not move, times 1.5 for what is before
  // the first and behind the last. 0 for fewer than three samples.
  double Growth() const {
    std::vector<double> kilobytes;
    for (const ProcessSample& sample : samples) {
      if (sample.at >= warmUp) kilobytes.push_back(static_cast<double>(sample.residentKb));
    }
    const auto third = static_cast<std::ptrdiff_t>(kilobytes.size() / 3);
    if (third == 0) return 0;
    const auto median = [third](auto from) {
      std::nth_element(from, from + third / 2, from + third);
      return from[third / 2];
    };
    return 1.5 * (median(kilobytes.end() - third) - median(kilobytes.begin()));
  }
};

// One line for each breach; none when the run passes.
inline std::vector<std::string> Breaches(const Record& run) {
  std::vector<std::string> breaches;
  if (!run.endedEqual) breaches.emplace_back("the caches differ from the truth at the end");
  if (run.exitStatus != 0) breaches.emplace_back("the tool did not end with status 0");
  const struct {
    const char* what;
    double value, limit;
  } bounds[] = {
      {"memory grew, kB", run.Growth(), GROWTH_LIMIT_KB},
      {"descriptors at rest", static_cast<double>(run.after.end.descriptors),
       static_cast<double>(run.before.end.descriptors + CONNECTION_DESCRIPTORS)},
      {"threads at rest", static_cast<double>(run.after.end.threads),
       static_cast<double>(run.before.end.threads)},
      {"log lines", static_cast<double>(run.logLines), run.LogLimit()},
      {"share of a core at rest, begin", run.before.CpuShare(), IDLE_CPU_SHARE},
      {"share of a core at rest, end", run.after.CpuShare(), IDLE_CPU_SHARE},
  };
  for (const auto& bound : bounds) {
    if (bound.value <= bound.limit) continue;
    char line[200];
    std::snprintf(line, sizeof line, "%s: %.3f, at most %.3f wanted", bound.what, bound.value,
                  bound.limit);
    breaches.emplace_back(line);
  }
  return breaches;
}

}  // namespace endurance

#endif
