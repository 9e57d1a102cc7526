// SPDX-License-Identifier: MIT
//
// One daemon, one fault and one user of the library, who does one step after the other.
#ifndef KECPP_TESTS_FAULTS_STAGE_H
#define KECPP_TESTS_FAULTS_STAGE_H

#include <kecpp.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "endtoend/ChildProcess.h"
#include "endtoend/Simulator.h"

namespace faults {

class Stage {
 public:
  enum class Credentials { Ticket, Password };

  Stage(const std::string& fault, Credentials credentials);
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  struct Attempts {
    int calls;   // that met the fault
    int cycles;  // at most, of a loop that backs off
  };
  // The fault meets all calls of `method` from now on, until it is ended.
  void BeginFault(const std::string& method);
  Attempts EndFault();

  void AwaitWait();  // until the daemon holds a call that waits for updates

  // --- what the user does, and what that looks like: "returns", or "throws CLASS: TEXT" ----------

  std::string Enter();  // a new service instance, which logs in; "returns null" without one
  std::string LogIn();  // the session's own
  std::string LogOut();
  std::string WatchSystems();
  std::string WatchAuthorization();
  std::string StopWatching();  // what WatchSystems set up
  std::string StopAll();
  std::string CallMethod();  // an agent's own call
  std::string MeetInLoop();  // changes machines until the loop has met the fault twice

  // Whether a statement about the state is true now. Throws std::out_of_range for an unknown one;
  // `texts` are patterns for the failure's text.
  bool Holds(const std::string& statement, const std::vector<std::string>& texts);

  bool LoggedIn();
  bool CachesBecomeTrue();

  // What no log line may tell: the user's name and password, tickets, the session's cookie.
  std::vector<std::string> Secrets() const;

 private:
  void AskForSync();
  template <typename Question>
  endtoend::Json Patiently(Question question);
  endtoend::Json Stats();
  endtoend::Json Truth();
  endtoend::Json Read();
  int CallsOf(const std::string& method);
  void RenameAMachine();
  endtoend::Json Blurred(endtoend::Json systems);

  const std::string fault;
  const bool tls, daemonGoes;
  endtoend::TemporaryFolder folder;
  endtoend::Simulator simulator;
  const std::string pidFile, removed;
  std::string config, method;
  KE::Service::KEServiceInstManager& manager;
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KESession* session = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
  KE::Stub::ManagedObjectReference* watch = nullptr;
  endtoend::Json before;  // the caches when the fault began
  std::chrono::steady_clock::time_point faultBegan;
  int callsBefore = 0;
  bool watchesAuthorization = false;
  int names = 0;
};

bool Matches(const std::string& text, const std::string& pattern);  // "*": any characters

}  // namespace faults

#endif
