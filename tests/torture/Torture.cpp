// SPDX-License-Identifier: MIT
//
// torture: runs a whole life of the library again and again, and refuses another call each time.
//
//   torture [--call NAME] [--sample K] [--burst B] [--only N]
//
// Without options every call up to the 300th of each kind is refused once, then every 37th. A
// sample takes every Kth of these. Ends with status 1 when anything went wrong.
#include <curl/curl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <map>

#include "foundation/KEException.h"
#include "http/HttpConnectionPool.h"
#include "service/call/MgmtdWatchSeams.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"
#include "support/Rows.h"
#include "torture/FailingCalls.h"
#include "torture/Scenario.h"

namespace torture {
namespace {

constexpr unsigned long EVERY_CALL_UP_TO = 300;
constexpr unsigned long STEP_BEYOND = 37;
constexpr unsigned int ROUND_LIMIT_SECONDS = 120;

struct Options {
  std::string call;
  unsigned long sample = 1;
  unsigned long burst = 1;
  unsigned long only = 0;
};

// For the handler: which round hangs.
Call currentCall;
unsigned long currentNumber;

void OnAlarm(int) {
  char text[128];
  const int length =
      std::snprintf(text, sizeof text, "HANGS: %s %lu\n", NameOf(currentCall), currentNumber);
  if (write(STDOUT_FILENO, text, static_cast<std::size_t>(length)) < 0) _exit(2);
  abort();
}

int OptionNamed(const std::string& name) {
  const curl_easyoption* option = curl_easy_option_by_name(name.c_str());
  return option != nullptr ? option->id : -1;
}

// Whether a row of the file with the expected errors speaks of this refusal.
bool SpeaksOf(const Row& row, const Refusal& refusal) {
  if (row.at(0) != NameOf(refusal.call)) return false;
  if (refusal.call != Call::setOption) return row.at(1) == refusal.what;
  const std::string& value = row.at(2);
  return OptionNamed(row.at(1)) == refusal.option &&
         (value == "*" || (value == "not 0" && refusal.value != 0) ||
          value == std::to_string(refusal.value) || OptionNamed(value) == refusal.previousOption);
}

// The four digits of a set-up error's text; empty when it has none.
std::string SetupCode(const std::string& text) {
  const std::size_t digits = text.find("00");
  return digits == std::string::npos ? std::string() : text.substr(digits, 4);
}

// The one code that no refused call leads to: sizing a pool that was not initialised.
bool ReachesCodeWithoutShare() {
  KELib::Http::HttpConnectionPool pool;
  try {
    pool.SetSize(1);
  } catch (const KELib::Exception& e) {
    return SetupCode(e.What()) == "0010";
  }
  return false;
}

class Torture {
 public:
  Torture(driver::Simulator& daemon, const Options& choice) : simulator(daemon), options(choice) {
    for (const Row& row : expected) codes[SetupCode(row.at(3))] = false;
    codes[""] = true;
  }

  // True when nothing went wrong.
  bool Run() {
    for (int warm = 0; warm < 2; ++warm) CountCalls(Call::allocate);
    for (int index = 0; index < CALLS; ++index) {
      const Call call = static_cast<Call>(index);
      if (!options.call.empty() && options.call != NameOf(call)) continue;
      const unsigned long calls = CountCalls(call);
      const unsigned long roundsBefore = rounds, failuresBefore = failures;
      unsigned long taken = 0;
      for (unsigned long number = options.only != 0 ? options.only : 1; number <= calls;
           number += number < EVERY_CALL_UP_TO ? 1 : STEP_BEYOND) {
        if (taken++ % options.sample == 0) Round(call, number);
        if (options.only != 0) break;
      }
      std::printf("%-17s %5lu calls, %4lu rounds, %lu failed\n", NameOf(call), calls,
                  rounds - roundsBefore, failures - failuresBefore);
    }
    std::size_t reached = 0;
    for (const auto& code : codes) reached += code.second ? 1 : 0;
    const bool last = ReachesCodeWithoutShare();
    std::printf(
        "%lu rounds, %lu failed; %lu sessions left to the server; %zu of %zu set-up codes and %s\n",
        rounds, failures, orphans, reached - 1, codes.size() - 1,
        last ? "\"0010\"" : "NOT \"0010\"");
    const bool whole = options.call.empty() && options.sample == 1 && options.only == 0;
    return failures == 0 && (!whole || (last && reached == codes.size()));
  }

 private:
  unsigned long CountCalls(Call call) {
    Arm(call, 0, 1);
    const Findings findings = RunScenario(simulator);
    for (const std::string& text : findings.complaints) throw std::runtime_error(text);
    return CountOf(call);
  }

  void Round(Call call, unsigned long number) {
    currentCall = call;
    currentNumber = number;
    complaints = {};
    alarm(ROUND_LIMIT_SECONDS);
    const Living before = CountLiving();
    const long descriptors = SampleOf("/proc/self").descriptors;
    try {
      Arm(call, number, options.burst);
      const Findings findings = RunScenario(simulator);
      Disarm();
      Check(findings);
    } catch (const std::exception& e) {
      std::printf("FAILED %s %lu: %s\n", NameOf(call), number, e.what());
      std::printf("cannot go on\n");
      _exit(1);
    }
    CheckNothingIsLeft(before, descriptors);
    alarm(0);
    if (++rounds % 50 == 0) std::printf("... %s %lu\n", NameOf(call), number);
    failures += complaints.empty() ? 0 : 1;
    for (const std::string& text : complaints) {
      std::printf("FAILED %s %lu: %s\n", NameOf(call), number, text.c_str());
    }
  }

  void Check(const Findings& findings) {
    complaints = findings.complaints;
    const std::optional<Refusal> refusal = FirstRefusal();
    if (!refusal) return;
    orphans += findings.orphaned ? 1 : 0;
    const auto reported = [&](const std::string& text) {
      return findings.errors.find(text) != std::string::npos;
    };
    // Either the logout was lost, or the answer to the login.
    if (findings.orphaned && !reported("Unable to Log")) {
      complaints.push_back("a session is orphaned without a word: " + findings.errors);
    }
    for (const Row& row : expected) {
      if (!SpeaksOf(row, *refusal)) continue;
      if (!reported(row[3])) {
        complaints.push_back("expected \"" + row[3] + "\", reported: " + findings.errors);
      }
      codes[SetupCode(row[3])] = true;
    }
  }

  // A detached thread outlives its last word by a moment.
  void CheckNothingIsLeft(const Living& before, long descriptors) {
    const bool known = !complaints.empty();  // their texts are blocks
    const auto openNow = [] { return SampleOf("/proc/self").descriptors; };
    driver::Eventually(
        [&] { return CountLiving().threads == before.threads && openNow() == descriptors; });
    const Living now = CountLiving();
    const auto compare = [this](const char* what, long is, long was) {
      if (is != was) complaints.push_back(std::to_string(is - was) + " more " + what);
    };
    if (!known) compare("blocks", now.blocks, before.blocks);
    compare("threads", now.threads, before.threads);
    compare("descriptors", openNow(), descriptors);
    compare("easy handles", now.handles, before.handles);
    compare("shares", now.shares, before.shares);
    if (HeldLocks() != 0) complaints.emplace_back("a lock is held");
    if (LostLocks() != 0) complaints.push_back("a thread has ended with a lock, or a mutex locked");
  }

  const std::vector<Row> expected = ReadRows(KECPP_EXPECTED_ERRORS);
  driver::Simulator& simulator;
  const Options options;
  std::vector<std::string> complaints;  // of the round
  std::map<std::string, bool> codes;    // reached or not; complete from the start
  unsigned long rounds = 0, failures = 0, orphans = 0;
};

int Run(int argc, char** argv) {
  Options options;
  CLI::App app{"Refuses one call after the other to the library"};
  app.add_option("--call", options.call, "Only this kind, e.g. fopen");
  app.add_option("--sample", options.sample, "Every so many rounds")->check(CLI::PositiveNumber);
  app.add_option("--burst", options.burst, "Refuse so many calls in a row");
  app.add_option("--only", options.only, "Only this number");
  CLI11_PARSE(app, argc, argv);
  setvbuf(stdout, nullptr, _IOLBF, 0);  // what was said stays said when a round crashes
  signal(SIGALRM, OnAlarm);
  driver::Simulator simulator({"--https", "--hosts", "2", "--machines", "5"});
  // Read on every check, but empty: then none is remembered, and no check pauses.
  const driver::TemporaryFolder folder;
  const std::string pidFile = folder.path + "/pid";
  std::ofstream(pidFile).close();
  KE::Service::GetMgmtdWatchSeams().pidFile = pidFile.c_str();
  return Torture(simulator, options).Run() ? 0 : 1;
}

}  // namespace
}  // namespace torture

int main(int argc, char** argv) {
  try {
    return torture::Run(argc, argv);
  } catch (const std::exception& e) {
    std::printf("FAILED: %s\n", e.what());
    return 1;
  }
}
