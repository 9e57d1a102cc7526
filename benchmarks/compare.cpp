// SPDX-License-Identifier: MIT
//
// Runs the whole comparison and writes it down: results.json, table.md, goals.md and fill.dat in
// the folder that is given.
//
// Usage: kecpp-bench-compare OUTPUT PROGRAMS64 [PROGRAMS32] [--full | --quick] [--against PROGRAMS]
//   PROGRAMS64, PROGRAMS32   the folders with the measuring programs of either word size
//   --against PROGRAMS       64-bit ones of another version of the library, to be compared with it
//   --full                   nine rounds for every peer; one of a minute for "idle"
//   --quick                  one round: whether everything runs
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "benchmarks/FollowingReport.h"
#include "benchmarks/Report.h"
#include "benchmarks/Rounds.h"

namespace {

using bench::Rounds;
using bench::RunName;

const std::vector<unsigned int> kSizes = {1000, 10000, 100000};
const std::vector<std::string> kFirst = {"kecpp", "pugixml", "rapidxml"};
const std::vector<std::string> kRivals = {"rapidxml-by-set", "by-hand"};
const std::vector<std::string> kOthers = {"rapidxml-in-situ", "libxml2-sax", "xmlTextReader",
                                          "expat", "gsoap"};
// Those whose inventory is the same, and must end with the same store.
const std::vector<std::string> kStores = {
    "kecpp",    "kecpp-feed",       "by-hand",     "rapidxml-by-set", "pugixml",
    "rapidxml", "rapidxml-in-situ", "libxml2-sax", "expat",           "xmlTextReader",
    "gsoap"};
const std::vector<std::string> kFloor = {"bare", "kecpp on one host", "bare on one host"};

struct Options {
  std::string output;
  std::vector<std::string> programs;  // 64-bit, 32-bit
  std::string against;                // 64-bit; empty: nothing
  unsigned int rounds = 9;
  unsigned int otherRounds = 3;
  unsigned int idleSeconds = 10;
};

std::string InProcess(const std::string& folder, const std::string& contender, unsigned int size) {
  return folder + "/kecpp-bench-inprocess " + contender + " " + std::to_string(size);
}

void AddWordSize(Rounds& rounds, const Options& options, unsigned int bits) {
  const std::string& folder = options.programs[bits == 64 ? 0 : 1];
  for (unsigned int size : kSizes) {
    for (const std::string& contender : kFirst) {
      rounds.Add(RunName(contender, bits, size), InProcess(folder, contender, size),
                 options.rounds);
    }
    if (bits != 64) continue;
    if (size == kSizes.back()) {
      rounds.Add(RunName("kecpp-feed", bits, size), InProcess(folder, "kecpp-feed", size),
                 options.rounds);
    }
    for (const std::string& contender : kRivals) {
      rounds.Add(RunName(contender, bits, size), InProcess(folder, contender, size),
                 options.rounds);
    }
    rounds.Add(RunName("bare", bits, size), InProcess(folder, "bare", size), options.rounds);
    for (const std::string& contender : kOthers) {
      rounds.Add(RunName(contender, bits, size), InProcess(folder, contender, size),
                 options.otherRounds);
    }
  }
}

void AddOneHost(Rounds& rounds, const Options& options) {
  for (const std::string contender : {"kecpp", "bare"}) {
    for (unsigned int size : kSizes) {
      rounds.Add(RunName(contender + " on one host", 64, size),
                 InProcess(options.programs[0], contender, size) + " " + std::to_string(size),
                 options.rounds);
    }
  }
}

void AddOtherVersion(Rounds& rounds, const Options& options) {
  if (options.against.empty()) return;
  for (unsigned int size : kSizes) {
    rounds.Add(RunName(bench::kOtherVersion, 64, size), InProcess(options.against, "kecpp", size),
               options.rounds);
  }
}

// Contenders that do not hold the same after the same sets have not done the same work.
void CheckAgreement(const Rounds& rounds, const Options& options) {
  bench::CheckFollowing(rounds);
  for (unsigned int bits : {64U, 32U}) {
    if (bits == 32 && options.programs.size() < 2) continue;
    for (unsigned int size : kSizes) {
      std::vector<std::string> names;
      for (const std::string& contender : kStores) {
        const std::string name = RunName(contender, bits, size);
        if (rounds.Has(name)) names.push_back(name);
      }
      for (const char* sum : {"/checksum", "/changed", "/refilled"}) rounds.Agreed(names, sum);
    }
  }
}

void Write(const Options& options, const char* name, const std::string& text) {
  std::ofstream file(options.output + "/" + name);
  file << text;
}

void WriteAll(const Rounds& rounds, const Options& options) {
  const bench::Report report(rounds);
  std::vector<std::string> all = kStores;
  all.insert(all.end(), kFloor.begin(), kFloor.end());
  std::string tables = "64-bit, microseconds of processor time, medians:\n\n" +
                       report.Tables(64, all, kSizes) + bench::FollowingTable(rounds);
  if (options.programs.size() > 1) {
    tables += "32-bit:\n\n" + report.Tables(32, kFirst, kSizes);
  }
  if (!options.against.empty()) tables += report.OtherVersionTable(kSizes);
  const std::vector<bench::Goal> goals = report.Goals();
  Write(options, "table.md", tables);
  Write(options, "goals.md", GoalTable(goals));
  Write(options, "fill.dat", report.ChartData(64, all, kSizes));
  bench::Json json;
  json["runs"] = rounds.All();
  for (const bench::Goal& goal : goals) {
    json["goals"].push_back({{"goal", goal.what},
                             {"bound", goal.bound},
                             {"measured", goal.value},
                             {"met", goal.Met()}});
  }
  Write(options, "results.json", json.dump(1) + "\n");
  std::printf("%s\n%s", tables.c_str(), GoalTable(goals).c_str());
}

bool Read(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--full") == 0) {
      options.otherRounds = options.rounds;
      options.idleSeconds = 60;
    } else if (std::strcmp(argv[i], "--quick") == 0) {
      options.rounds = options.otherRounds = options.idleSeconds = 1;
    } else if (std::strcmp(argv[i], "--against") == 0 && i + 1 < argc) {
      options.against = argv[++i];
    } else if (options.output.empty()) {
      options.output = argv[i];
    } else {
      options.programs.emplace_back(argv[i]);
    }
  }
  return !options.programs.empty();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!Read(argc, argv, options)) {
    std::fprintf(stderr, "Usage: %s OUTPUT PROGRAMS64 [PROGRAMS32] [--full | --quick]\n", argv[0]);
    return 2;
  }
  try {
    Rounds rounds;
    AddWordSize(rounds, options, 64);
    if (options.programs.size() > 1) AddWordSize(rounds, options, 32);
    AddOneHost(rounds, options);
    AddOtherVersion(rounds, options);
    const std::string path = options.programs[0] + "/kecpp-bench-path ";
    for (const char* workload : {"wire", "latency", "readers", "feeds", "links"}) {
      rounds.Add(workload, path + workload, options.rounds);
    }
    bench::AddFollowing(rounds, options.programs[0], options.rounds);
    rounds.Add("idle", path + "idle " + std::to_string(options.idleSeconds), 1);
    rounds.Run();
    CheckAgreement(rounds, options);
    WriteAll(rounds, options);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
  return 0;
}
