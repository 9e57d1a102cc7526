// SPDX-License-Identifier: MIT
//
// By what an endurance run passes or fails.
#ifndef KECPP_TESTS_SOAK_JUDGEMENT_H
#define KECPP_TESTS_SOAK_JUDGEMENT_H

#include <string>
#include <vector>

#include "soak/ProcessSample.h"

namespace soak {

// The bounds. A leak of 100 bytes for each update set of an hour with ten changes a second would be
// 3.5 MB.
constexpr double GROWTH_LIMIT_KB = 1024;   // memory, over the judged time, by a straight line
constexpr double LOG_LINES_PER_FAULT = 4;  // at level verbose, averaged over the run
constexpr double LOG_LINES_BESIDES = 50;   // starting, ending
constexpr double IDLE_CPU_SHARE = 0.002;   // of one core, while nothing changes

// The slope of a straight line through (at, value), values a second, by least squares; 0 for fewer
// than two points.
double Slope(const std::vector<ProcessSample>& samples, double (*value)(const ProcessSample&));

struct Rest {  // the tool while nothing changes
  ProcessSample begin, end;
};

struct Record {
  std::vector<ProcessSample> samples;  // between the two rests
  double warmUp = 0;                   // samples before this time are not judged
  Rest before, after;                  // a rest at the begin and one at the end
  unsigned long faults = 0;
  unsigned long logLines = 0;
  bool endedEqual = false;  // the caches equalled the truth
  int exitStatus = -1;
};

// One line for each breach; none when the run passes.
std::vector<std::string> Breaches(const Record& run);

// The growth over the judged time in the unit of `value`, by the slope.
double Growth(const Record& run, double (*value)(const ProcessSample&));

double LogLimit(const Record& run);

}  // namespace soak

#endif
