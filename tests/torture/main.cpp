// SPDX-License-Identifier: MIT
//
// torture: runs a whole life of the library again and again, and refuses another call each time.
//
//   torture [--call NAME] [--sample K] [--burst B] [--only N]
//
// Without options every call up to the 300th of each kind is refused once, then every 37th. A
// sample takes every Kth of these. Ends with status 1 when anything went wrong.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include "endtoend/ChildProcess.h"
#include "endtoend/Simulator.h"
#include "http/HttpConnectionPool.h"
#include "service/call/MgmtdWatchSeams.h"
#include "torture/Expectation.h"
#include "torture/FailingCalls.h"
#include "torture/HeldLocks.h"
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

struct Totals {
  unsigned long rounds = 0, failures = 0, orphans = 0;
  std::map<std::string, bool> codes;  // reached or not; complete from the start: no round adds one
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

long OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

class Torture {
 public:
  Torture(endtoend::Simulator& simulator, const Options& choice)
      : scenario(simulator), options(choice) {}

  Totals Run();

 private:
  unsigned long CountCalls(Call call);
  void Round(Call call, unsigned long number);
  void Check(Call call, const Findings& findings, std::vector<std::string>& complaints);
  void CheckNothingIsLeft(const Living& before, long descriptors,
                          std::vector<std::string>& complaints);

  Scenario scenario;
  const Options options;
  Totals totals;
};

Totals Torture::Run() {
  totals.codes[""] = false;
  for (const std::string& code : AllSetupCodes()) totals.codes[code] = false;
  for (int warm = 0; warm < 2; ++warm) CountCalls(Call::allocate);
  for (int index = 0; index < CALLS; ++index) {
    const Call call = static_cast<Call>(index);
    if (!options.call.empty() && options.call != NameOf(call)) continue;
    const unsigned long calls = CountCalls(call);
    const unsigned long roundsBefore = totals.rounds, failuresBefore = totals.failures;
    unsigned long taken = 0;
    for (unsigned long number = options.only != 0 ? options.only : 1; number <= calls;
         number += number < EVERY_CALL_UP_TO ? 1 : STEP_BEYOND) {
      if (taken++ % options.sample == 0) Round(call, number);
      if (options.only != 0) break;
    }
    std::printf("%-17s %5lu calls, %4lu rounds, %lu failed\n", NameOf(call), calls,
                totals.rounds - roundsBefore, totals.failures - failuresBefore);
  }
  return totals;
}

unsigned long Torture::CountCalls(Call call) {
  Arm(call, 0, 1);
  const Findings findings = scenario.Run();
  for (const std::string& text : findings.complaints) throw std::runtime_error(text);
  return CountOf(call);
}

void Torture::Round(Call call, unsigned long number) {
  currentCall = call;
  currentNumber = number;
  alarm(ROUND_LIMIT_SECONDS);
  const Living before = CountLiving();
  const long descriptors = OpenDescriptors();
  std::vector<std::string> complaints;
  {
    Findings findings;
    Arm(call, number, options.burst);
    try {
      findings = scenario.Run();
    } catch (const std::exception& e) {
      std::printf("FAILED %s %lu: %s\n", NameOf(call), number, e.what());
      std::printf("cannot go on\n");
      _exit(1);
    }
    Disarm();
    Check(call, findings, complaints);
  }
  CheckNothingIsLeft(before, descriptors, complaints);
  alarm(0);
  if (++totals.rounds % 50 == 0) std::printf("... %s %lu\n", NameOf(call), number);
  totals.failures += complaints.empty() ? 0 : 1;
  for (const std::string& text : complaints) {
    std::printf("FAILED %s %lu: %s\n", NameOf(call), number, text.c_str());
  }
}

void Torture::Check(Call call, const Findings& findings, std::vector<std::string>& complaints) {
  complaints = findings.complaints;
  Refusal refusal{call};
  if (!Refused(refusal)) return;
  totals.orphans += findings.orphaned ? 1 : 0;
  // Either the logout was lost, or the answer to the login.
  if (findings.orphaned && findings.errors.find("Unable to Log") == std::string::npos) {
    complaints.push_back("a session is orphaned without a word: " + findings.errors);
  }
  const std::string expected = ExpectedText(refusal);
  if (!expected.empty() && findings.errors.find(expected) == std::string::npos) {
    complaints.push_back("expected \"" + expected + "\", reported: " + findings.errors);
  }
  totals.codes[SetupCode(expected)] = true;
}

// A detached thread outlives its last word by a moment.
void Torture::CheckNothingIsLeft(const Living& before, long descriptors,
                                 std::vector<std::string>& complaints) {
  const std::size_t known = complaints.size();
  Living now{};
  long descriptorsNow = 0;
  const bool same = endtoend::Eventually([&] {
    now = CountLiving();
    descriptorsNow = OpenDescriptors();
    return now.threads == before.threads && descriptorsNow == descriptors;
  });
  const auto compare = [&complaints](const char* what, long is, long was) {
    if (is != was) complaints.push_back(std::to_string(is - was) + " more " + what);
  };
  if (!same) {
    compare("threads", now.threads, before.threads);
    compare("descriptors", descriptorsNow, descriptors);
  }
  if (known == 0) compare("blocks", CountLiving().blocks, before.blocks);
  compare("easy handles", now.handles, before.handles);
  compare("shares", now.shares, before.shares);
  if (HeldLocks() != 0) complaints.push_back("a lock is held");
  if (LocksHeldAtThreadEnd() != 0) complaints.push_back("a thread has ended with a lock");
  if (MutexesDestroyedLocked() != 0) complaints.push_back("a mutex was destroyed locked");
  if (SharesInUseAtEnd() != 0) complaints.push_back("a share was in use at its end");
}

// The one code that no refused call leads to: sizing a pool that was not initialised.
std::string CodeWithoutShare() {
  KELib::Http::HttpConnectionPool pool;
  try {
    pool.SetSize(1);
  } catch (const KELib::Exception& e) {
    return SetupCode(e.What());
  }
  return {};
}

int Main(const Options& options) {
  setvbuf(stdout, nullptr, _IOLBF, 0);  // what was said stays said when a round crashes
  signal(SIGALRM, OnAlarm);
  endtoend::Simulator simulator({"--https", "--hosts", "2", "--machines", "5"});
  // Read on every check, but empty: then none is remembered, and no check pauses.
  const endtoend::TemporaryFolder folder;
  const std::string pidFile = folder.path + "/pid";
  std::ofstream(pidFile).close();
  KE::Service::GetMgmtdWatchSeams().pidFile = pidFile.c_str();

  Totals totals = Torture(simulator, options).Run();
  std::size_t reached = 0;
  for (const std::string& code : AllSetupCodes()) reached += totals.codes[code] ? 1 : 0;
  std::printf(
      "%lu rounds, %lu failed; %lu sessions left to the server; %zu of %zu set-up codes and %s\n",
      totals.rounds, totals.failures, totals.orphans, reached, AllSetupCodes().size(),
      CodeWithoutShare() == "0010" ? "\"0010\"" : "NOT \"0010\"");
  const bool whole = options.call.empty() && options.sample == 1;
  return totals.failures == 0 && (!whole || reached == AllSetupCodes().size()) ? 0 : 1;
}

}  // namespace
}  // namespace torture

int main(int argc, char** argv) {
  torture::Options options;
  CLI::App app{"Refuses one call after the other to the library"};
  app.add_option("--call", options.call, "Only this kind, e.g. fopen");
  app.add_option("--sample", options.sample, "Every so many rounds")->check(CLI::PositiveNumber);
  app.add_option("--burst", options.burst, "Refuse so many calls in a row");
  app.add_option("--only", options.only, "Only this number");
  CLI11_PARSE(app, argc, argv);
  try {
    return torture::Main(options);
  } catch (const std::exception& e) {
    std::printf("FAILED: %s\n", e.what());
    return 1;
  }
}
