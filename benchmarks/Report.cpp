// SPDX-License-Identifier: MIT
#include "benchmarks/Report.h"

#include <cmath>
#include <cstdio>

namespace bench {

namespace {

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), value < 10 ? "%.2f" : value < 100 ? "%.1f" : "%.0f", value);
  return text;
}

// The bounds of one workload, by word size and inventory.
struct SpeedGoal {
  const char* workload;
  unsigned int bits, machines;
  double factor;
};

const SpeedGoal kSpeedGoals[] = {
    {"fill", 64, 1000, 2.5},   {"fill", 64, 10000, 3.0},   {"fill", 64, 100000, 3.0},
    {"fill", 32, 1000, 2.2},   {"fill", 32, 10000, 2.2},   {"fill", 32, 100000, 2.2},
    {"step", 64, 1000, 2.5},   {"step", 64, 100000, 1.8},  {"step", 32, 1000, 2.0},
    {"step", 32, 100000, 1.5}, {"refill", 64, 1000, 1.9},  {"refill", 64, 100000, 1.4},
    {"drop", 64, 1000, 0.67},  {"drop", 64, 100000, 0.67},
};

// Times as fast as one contender in a first fill of the 64-bit library.
const struct {
  const char *rival, *words;
  unsigned int machines;
  double factor;
} kRivalGoals[] = {
    {"rapidxml-by-set", "RapidXML by object set", 1000, 2.1},
    {"rapidxml-by-set", "RapidXML by object set", 100000, 2.1},
    {"by-hand", "a parser by hand", 1000, 1 / 1.0},
    {"by-hand", "a parser by hand", 100000, 1 / 0.9},
};

}  // namespace

std::string RunName(const std::string& contender, unsigned int bits, unsigned int machines) {
  return contender + " " + std::to_string(bits) + " " + std::to_string(machines);
}

std::string Report::Table(const char* title, const char* path, unsigned int bits,
                          const std::vector<std::string>& contenders,
                          const std::vector<unsigned int>& sizes) const {
  std::string head = std::string("| ") + title, rule = "|---|", body;
  for (unsigned int size : sizes) {
    head += " | " + std::to_string(size) + " machines";
    rule += "---:|";
  }
  for (const std::string& contender : contenders) {
    std::string row = "| " + contender;
    bool measured = false;
    for (unsigned int size : sizes) {
      const std::string name = RunName(contender, bits, size);
      measured = measured || rounds.Has(name);
      row += " | " + (rounds.Has(name) ? Number(rounds.Value(name, path)) : std::string("-"));
    }
    if (measured) body += row + " |\n";
  }
  return head + " |\n" + rule + "\n" + body + "\n";
}

std::string Report::Tables(unsigned int bits, const std::vector<std::string>& contenders,
                           const std::vector<unsigned int>& sizes) const {
  std::vector<std::string> stores;
  for (const std::string& contender : contenders) {
    if (contender.rfind("bare", 0) != 0) stores.push_back(contender);
  }
  return Table("first fill, us a machine", "/fill/cpu", bits, contenders, sizes) +
         Table("fill after a drop, us a machine", "/refill/cpu", bits, contenders, sizes) +
         Table("one change, us", "/step/cpu", bits, stores, sizes) +
         Table("drop, us a machine", "/drop/cpu", bits, contenders, sizes) +
         Table("walk, us a machine", "/walk/cpu", bits, stores, sizes) +
         Table("heap, bytes a machine", "/heap", bits, stores, sizes) +
         Table("peak resident size, bytes a machine beside the text", "/beside", bits, stores,
               sizes);
}

std::string Report::OtherVersionTable(const std::vector<unsigned int>& sizes) const {
  std::string head = "| times the time of the other version", rule = "|---|", body;
  for (unsigned int size : sizes) {
    head += " | " + std::to_string(size) + " machines";
    rule += "---:|";
  }
  for (const char* workload : {"fill", "refill", "step", "drop", "walk"}) {
    body += std::string("| ") + workload;
    for (unsigned int size : sizes) {
      const double faster =
          rounds.Ratio(RunName("kecpp", 64, size), {RunName(kOtherVersion, 64, size)},
                       std::string("/") + workload + "/cpu");
      body += " | " + Number(1 / faster);
    }
    body += " |\n";
  }
  return head + " |\n" + rule + "\n" + body + "\n";
}

std::vector<Goal> Report::Goals() const {
  std::vector<Goal> goals;
  for (unsigned int bits : {64U, 32U}) {
    AddSpeedGoals(bits, goals);
    AddMemoryGoals(bits, goals);
  }
  AddRivalGoals(goals);
  AddGrowthGoal("", goals);
  AddGrowthGoal(" on one host", goals);
  AddFeedGoals(goals);
  AddWireGoals(goals);
  return goals;
}

void Report::AddSpeedGoals(unsigned int bits, std::vector<Goal>& goals) const {
  for (const SpeedGoal& goal : kSpeedGoals) {
    const std::string name = RunName("kecpp", bits, goal.machines);
    if (goal.bits != bits || !rounds.Has(name)) continue;
    const double ratio = rounds.Ratio(
        name, {RunName("pugixml", bits, goal.machines), RunName("rapidxml", bits, goal.machines)},
        std::string("/") + goal.workload + "/cpu");
    goals.push_back({std::string(goal.workload) + ", " + std::to_string(goal.machines) +
                         " machines, " + std::to_string(bits) + "-bit: times the faster peer",
                     ratio, goal.factor, true});
  }
}

void Report::AddMemoryGoals(unsigned int bits, std::vector<Goal>& goals) const {
  const std::string name = RunName("kecpp", bits, 100000);
  if (!rounds.Has(name)) return;
  const std::string suffix = ", " + std::to_string(bits) + "-bit";
  goals.push_back({"heap, bytes a machine" + suffix, rounds.Value(name, "/heap"),
                   bits == 64 ? 845.0 : 620.0, false});
  goals.push_back(
      {"peak resident size: (peak - text) / store" + suffix,
       (rounds.Value(name, "/peak") - rounds.Value(name, "/text")) / rounds.Value(name, "/store"),
       1.02, false});
}

void Report::AddRivalGoals(std::vector<Goal>& goals) const {
  for (const auto& goal : kRivalGoals) {
    const std::string name = RunName("kecpp", 64, goal.machines);
    const std::string rival = RunName(goal.rival, 64, goal.machines);
    if (!rounds.Has(name) || !rounds.Has(rival)) continue;
    goals.push_back(
        {"fill, " + std::to_string(goal.machines) + " machines, 64-bit: times " + goal.words,
         rounds.Ratio(name, {rival}, "/fill/cpu"), goal.factor, true});
  }
}

// The exponent x of time = inventory^x, above that of the bare allocations.
void Report::AddGrowthGoal(const std::string& variant, std::vector<Goal>& goals) const {
  const auto exponent = [&](const std::string& contender) {
    const double small = rounds.Value(RunName(contender + variant, 64, 1000), "/fill/cpu");
    const double large = rounds.Value(RunName(contender + variant, 64, 100000), "/fill/cpu");
    return 1 + std::log(large / small) / std::log(100.0);
  };
  for (const std::string contender : {"kecpp", "bare"}) {
    if (!rounds.Has(RunName(contender + variant, 64, 100000))) return;
  }
  goals.push_back({"growth exponent above that of the bare allocations" + variant,
                   exponent("kecpp") - exponent("bare"), 0.04, false});
}

void Report::AddFeedGoals(std::vector<Goal>& goals) const {
  const std::string name = RunName("kecpp-feed", 64, 100000);
  if (rounds.Has(name)) {
    const double speed = rounds.Ratio(name, {RunName("kecpp", 64, 100000)}, "/fill/cpu");
    goals.push_back(
        {"fill with a change feed open, times the fill without", 1 / speed, 1.1, false});
  }
  if (!rounds.Has("feeds")) return;
  for (const char* machines : {"1000", "100000"}) {
    goals.push_back(
        {std::string("one change with a change feed open, us more, machines: ") + machines,
         rounds.Value("feeds", std::string("/") + machines + "/above"), 0.1, false});
  }
}

void Report::AddWireGoals(std::vector<Goal>& goals) const {
  const auto add = [&](const char* what, const char* path, double bound, bool atLeast) {
    if (rounds.Has("wire")) goals.push_back({what, rounds.Value("wire", path), bound, atLeast});
  };
  add("a call's round trip, times a bare libcurl loop", "/call", 1.05, false);
  add("receiving 100 MB, times libcurl into one buffer", "/receive", 1.1, false);
  add("the whole public path, times receiving plus fill", "/path", 1.1, false);
  if (rounds.Has("latency")) {
    goals.push_back(
        {"latency above the bare long poll, us", rounds.Value("latency", "/above"), 20, false});
  }
  const auto addFrom = [&](const char* workload, const char* what, const char* path, double bound,
                           bool atLeast) {
    if (rounds.Has(workload)) {
      goals.push_back({what, rounds.Value(workload, path), bound, atLeast});
    }
  };
  addFrom("readers", "look-ups beside one writer, share of the undisturbed throughput, one reader",
          "/lookUps/1/share", 0.35, true);
  addFrom("readers", "the same, two readers", "/lookUps/2/share", 0.3, true);
  addFrom("readers", "longest wait of a look-up beside 100 changes a second, us",
          "/lookUps/1/longestWaitUnhurried", 5000, false);
  addFrom("links", "all machines of a host move, a machine: times as long at 100,000 as at 1,000",
          "/move/growth", 2, false);
  addFrom("links", "roles times privileges, a link: times as long at 2,000,000 as at 10,000",
          "/grant/growth", 3, false);
  if (rounds.Has("idle")) {
    goals.push_back({"processor time in a quiet minute, ms (bare long poll: " +
                         Number(rounds.Value("idle", "/bare")) + ")",
                     rounds.Value("idle", "/milliseconds"), 0.3, false});
  }
}

std::string Report::ChartData(unsigned int bits, const std::vector<std::string>& contenders,
                              const std::vector<unsigned int>& sizes) const {
  std::string data = "machines";
  for (const std::string& contender : contenders) data += " \"" + contender + "\"";
  for (unsigned int size : sizes) {
    data += "\n" + std::to_string(size);
    for (const std::string& contender : contenders) {
      const std::string name = RunName(contender, bits, size);
      data += rounds.Has(name) ? " " + Number(rounds.Value(name, "/fill/cpu")) : std::string(" -");
    }
  }
  return data + "\n";
}

std::string GoalTable(const std::vector<Goal>& goals) {
  std::string table = "| goal | bound | measured | |\n|---|---:|---:|---|\n";
  for (const Goal& goal : goals) {
    char bound[32];
    std::snprintf(bound, sizeof(bound), "%s %g", goal.atLeast ? "&ge;" : "&le;", goal.bound);
    char value[32];
    std::snprintf(value, sizeof(value), std::fabs(goal.value) < 10 ? "%.3f" : "%.0f", goal.value);
    table += "| " + goal.what + " | " + bound + " | " + value + " | " +
             (goal.Met() ? "met" : "**missed**") + " |\n";
  }
  return table;
}

}  // namespace bench
