// SPDX-License-Identifier: MIT
//
// The part of the comparison that is about following changes (following.cpp).
#ifndef KECPP_BENCHMARKS_FOLLOWINGREPORT_H
#define KECPP_BENCHMARKS_FOLLOWINGREPORT_H

#include <cstdio>
#include <string>
#include <vector>

#include "benchmarks/Rounds.h"

namespace bench {

inline const std::vector<std::string> kFollowing = {"interface", "copying", "rapidxml", "by-hand"};

inline void AddFollowing(Rounds& rounds, const std::string& folder, unsigned int count) {
  for (const std::string& agent : kFollowing) {
    std::string command = folder;
    command.append("/kecpp-bench-following ").append(agent).append(" 100000");
    rounds.Add("following " + agent, command, count);
  }
}

// All have seen the same objects change to the same.
inline void CheckFollowing(const Rounds& rounds) {
  std::vector<std::string> names;
  names.reserve(kFollowing.size());
  for (const std::string& agent : kFollowing) names.push_back("following " + agent);
  rounds.Agreed(names, "/checksum");
}

inline std::string FollowingTable(const Rounds& rounds) {
  std::string table =
      "| following 1,000 changes in 100,000 machines | us a change | times the interface |\n"
      "|---|---:|---:|\n";
  for (const std::string& agent : kFollowing) {
    const std::string name = "following " + agent;
    char line[120];
    std::snprintf(line, sizeof line, "| %s | %.2f | %.2f |\n", agent.c_str(),
                  rounds.Value(name, "/cpu"), rounds.Ratio("following interface", {name}, "/cpu"));
    table += line;
  }
  return table + "\n";
}

}  // namespace bench

#endif
