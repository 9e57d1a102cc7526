// SPDX-License-Identifier: MIT
#include "benchmarks/Rounds.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

double Figure(const Json& result, const std::string& path) {
  return result.at(Json::json_pointer(path)).get<double>();
}

}  // namespace

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

void Rounds::Add(const std::string& name, const std::string& command, unsigned int rounds) {
  entries.push_back({name, command, rounds});
}

void Rounds::Run() {
  unsigned int last = 0;
  for (const Entry& entry : entries) last = std::max(last, entry.rounds);
  for (unsigned int round = 0; round < last; ++round) {
    for (const Entry& entry : entries) {
      if (round < entry.rounds) results[entry.name].push_back(RunOnce(entry));
    }
    std::fprintf(stderr, "round %u of %u\n", round + 1, last);
  }
  entries.clear();
}

Json Rounds::RunOnce(const Entry& entry) {
  std::string output;
  std::FILE* pipe = popen(entry.command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("Cannot run " + entry.command);
  char piece[4096];
  while (const std::size_t n = std::fread(piece, 1, sizeof(piece), pipe)) output.append(piece, n);
  if (pclose(pipe) != 0) throw std::runtime_error("Failed: " + entry.command);
  return Json::parse(output);
}

double Rounds::Value(const std::string& name, const std::string& path) const {
  std::vector<double> values;
  for (const Json& result : results.at(name)) values.push_back(Figure(result, path));
  return Median(values);
}

double Rounds::Ratio(const std::string& name, const std::vector<std::string>& peers,
                     const std::string& path) const {
  std::vector<double> ratios;
  const std::vector<Json>& own = results.at(name);
  for (std::size_t round = 0; round < own.size(); ++round) {
    double fastest = 0;
    for (const std::string& peer : peers) {
      const double value = Figure(results.at(peer).at(round), path);
      if (fastest == 0 || value < fastest) fastest = value;
    }
    ratios.push_back(fastest / Figure(own[round], path));
  }
  return Median(ratios);
}

std::string Rounds::Agreed(const std::vector<std::string>& names, const std::string& path) const {
  std::string agreed;
  for (const std::string& name : names) {
    for (const Json& result : results.at(name)) {
      const std::string text = result.at(Json::json_pointer(path)).get<std::string>();
      if (!agreed.empty() && text != agreed) {
        throw std::runtime_error(
            std::string(name).append(" holds something else than the others: ").append(path));
      }
      agreed = text;
    }
  }
  return agreed;
}

}  // namespace bench
