// SPDX-License-Identifier: MIT
//
// Runs measuring programs in fresh processes, taken in turn: first each of them once, then each
// again, and so on. What disturbs the machine for a while then disturbs all of them, and a ratio is
// taken within a round. The median over the rounds counts.
#ifndef KECPP_BENCHMARKS_ROUNDS_H
#define KECPP_BENCHMARKS_ROUNDS_H

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace bench {

using Json = nlohmann::json;

// The median of the values; 0 without any. With an even number the mean of the two in the middle.
double Median(std::vector<double> values);

class Rounds {
 public:
  // Adds a command that takes part in the first `rounds` rounds; `name` identifies it.
  void Add(const std::string& name, const std::string& command, unsigned int rounds);

  // Runs everything. Throws std::runtime_error when a program fails.
  void Run();

  bool Has(const std::string& name) const { return results.count(name) > 0; }

  // The median of one figure, which a path such as "/fill/cpu" names.
  double Value(const std::string& name, const std::string& path) const;

  // The median over the rounds of (the smallest figure of `peers`) / (the figure of `name`).
  double Ratio(const std::string& name, const std::vector<std::string>& peers,
               const std::string& path) const;

  // The text of a figure, which must be the same in every round and for every name.
  // Throws std::runtime_error otherwise.
  std::string Agreed(const std::vector<std::string>& names, const std::string& path) const;

  // Everything that was measured: an object of arrays.
  Json All() const { return results; }

 private:
  struct Entry {
    std::string name, command;
    unsigned int rounds;
  };

  static Json RunOnce(const Entry& entry);

  std::vector<Entry> entries;
  std::map<std::string, std::vector<Json>> results;
};

}  // namespace bench

#endif
