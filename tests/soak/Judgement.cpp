// SPDX-License-Identifier: MIT
#include "soak/Judgement.h"

#include <algorithm>
#include <cstdio>

namespace soak {
namespace {

double Resident(const ProcessSample& sample) {
  return static_cast<double>(sample.residentKb);
}

std::vector<ProcessSample> Judged(const Record& run) {
  std::vector<ProcessSample> judged;
  std::copy_if(run.samples.begin(), run.samples.end(), std::back_inserter(judged),
               [&](const ProcessSample& sample) { return sample.at >= run.warmUp; });
  return judged;
}

class Findings {
 public:
  // A breach unless `value` is at most `limit`.
  void AtMost(const char* what, double value, double limit) {
    if (value <= limit) return;
    char line[200];
    std::snprintf(line, sizeof line, "%s: %.3f, at most %.3f wanted", what, value, limit);
    lines.emplace_back(line);
  }
  std::vector<std::string> lines;
};

double CpuShare(const Rest& rest) {
  const double time = rest.end.at - rest.begin.at;
  return time > 0 ? (rest.end.cpuSeconds - rest.begin.cpuSeconds) / time : 1;
}

}  // namespace

double Slope(const std::vector<ProcessSample>& samples, double (*value)(const ProcessSample&)) {
  double meanAt = 0, meanValue = 0;
  for (const ProcessSample& sample : samples) {
    meanAt += sample.at / static_cast<double>(samples.size());
    meanValue += value(sample) / static_cast<double>(samples.size());
  }
  double together = 0, alone = 0;
  for (const ProcessSample& sample : samples) {
    together += (sample.at - meanAt) * (value(sample) - meanValue);
    alone += (sample.at - meanAt) * (sample.at - meanAt);
  }
  return alone > 0 ? together / alone : 0;
}

double Growth(const Record& run, double (*value)(const ProcessSample&)) {
  const std::vector<ProcessSample> judged = Judged(run);
  if (judged.empty()) return 0;
  return Slope(judged, value) * (judged.back().at - judged.front().at);
}

double LogLimit(const Record& run) {
  return LOG_LINES_BESIDES + LOG_LINES_PER_FAULT * static_cast<double>(run.faults);
}

std::vector<std::string> Breaches(const Record& run) {
  Findings findings;
  if (!run.endedEqual) findings.lines.emplace_back("the caches differ from the truth at the end");
  if (run.exitStatus != 0) findings.lines.emplace_back("the tool did not end with status 0");
  findings.AtMost("memory grew, kB", Growth(run, Resident), GROWTH_LIMIT_KB);
  findings.AtMost("descriptors at rest", static_cast<double>(run.after.end.descriptors),
                  static_cast<double>(run.before.end.descriptors));
  findings.AtMost("threads at rest", static_cast<double>(run.after.end.threads),
                  static_cast<double>(run.before.end.threads));
  findings.AtMost("log lines", static_cast<double>(run.logLines), LogLimit(run));
  findings.AtMost("share of a core at rest, begin", CpuShare(run.before), IDLE_CPU_SHARE);
  findings.AtMost("share of a core at rest, end", CpuShare(run.after), IDLE_CPU_SHARE);
  return findings.lines;
}

}  // namespace soak
