// SPDX-License-Identifier: MIT
//
// What the rounds gave, as tables for readers, data for a chart and a list of goals met or missed.
#ifndef KECPP_BENCHMARKS_REPORT_H
#define KECPP_BENCHMARKS_REPORT_H

#include <string>
#include <vector>

#include "benchmarks/Rounds.h"

namespace bench {

// A bound on a figure that was derived from the measurements.
struct Goal {
  std::string what;
  double value;
  double bound;
  bool atLeast;  // else: at most

  bool Met() const { return atLeast ? value >= bound : value <= bound; }
};

// The contender that is the library in another version.
inline constexpr char kOtherVersion[] = "kecpp, other version";

// The name under which a contender was run with an inventory, such as "kecpp 64 10000".
std::string RunName(const std::string& contender, unsigned int bits, unsigned int machines);

class Report {
 public:
  explicit Report(const Rounds& measured) : rounds(measured) {}

  // The figures of the in-process workloads for one word size: a Markdown table each.
  std::string Tables(unsigned int bits, const std::vector<std::string>& contenders,
                     const std::vector<unsigned int>& sizes) const;

  // How many times as long the 64-bit library takes as its other version.
  std::string OtherVersionTable(const std::vector<unsigned int>& sizes) const;

  // The goals for which there are measurements.
  std::vector<Goal> Goals() const;

  // Machines and microseconds a machine of the first fill, a column for each contender.
  std::string ChartData(unsigned int bits, const std::vector<std::string>& contenders,
                        const std::vector<unsigned int>& sizes) const;

 private:
  std::string Table(const char* title, const char* path, unsigned int bits,
                    const std::vector<std::string>& contenders,
                    const std::vector<unsigned int>& sizes) const;
  void AddSpeedGoals(unsigned int bits, std::vector<Goal>& goals) const;
  void AddRivalGoals(std::vector<Goal>& goals) const;
  void AddMemoryGoals(unsigned int bits, std::vector<Goal>& goals) const;
  void AddGrowthGoal(const std::string& variant, std::vector<Goal>& goals) const;
  void AddFeedGoals(std::vector<Goal>& goals) const;
  void AddWireGoals(std::vector<Goal>& goals) const;

  const Rounds& rounds;
};

// A Markdown table of the goals.
std::string GoalTable(const std::vector<Goal>& goals);

}  // namespace bench

#endif
