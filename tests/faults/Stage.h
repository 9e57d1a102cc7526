// SPDX-License-Identifier: MIT
//
// One daemon, one fault and one user of the library, who does one step after the other.
#ifndef KECPP_TESTS_FAULTS_STAGE_H
#define KECPP_TESTS_FAULTS_STAGE_H

#include <fnmatch.h>
#include <kecpp.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "service/call/MgmtdWatchSeams.h"
#include "simulator/driver/Simulator.h"
#include "support/ReadCaches.h"
#include "support/Watches.h"

namespace faults {

using driver::Eventually;
using driver::Json;

// "*" in a pattern: any characters.
inline bool Matches(const std::string& text, const std::string& pattern) {
  return fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
}

class Stage {
 public:
  // The user logs in with a local ticket, or with a password.
  Stage(const std::string& kind, bool hasPassword);
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

  // Does the step and tells what that looks like: "returns", or "throws CLASS: TEXT". Throws
  // std::out_of_range for an unknown one.
  std::string Do(const std::string& step);
  bool IsStep(const std::string& name) const { return steps.count(name) > 0; }

  // Whether a statement about the state is true now. Throws std::out_of_range for an unknown one;
  // `texts` are patterns for the failure's text.
  bool Holds(const std::string& statement, const std::vector<std::string>& texts);

  driver::Simulator& Daemon() { return simulator; }
  const std::string& Config() const { return config; }
  int CallsOf(const std::string& name) { return simulator.Stats()["calls"].value(name, 0); }

  // What no log line may tell: the user's name and password, tickets, the session's cookie.
  std::vector<std::string> Secrets() const;

 private:
  void Enter();
  void LogIn();
  void MeetInLoop();
  bool LoggedIn();
  bool CachesBecomeTrue();

  void RenameAMachine();
  Json Read() { return sync == nullptr ? Json() : ReadCaches(*sync->GetCache()); }

  const std::map<std::string, std::function<void()>> steps = {
      {"enter", [this] { Enter(); }},  // a new service instance, which logs in
      {"log in", [this] { LogIn(); }},
      {"log in unless in",
       [this] {
         if (!LoggedIn()) LogIn();
       }},
      {"log out",
       [this] {
         watchesAuthorization = false;
         session->Logout();
       }},
      {"watch systems", [this] { watch = WatchSystems(*instance, *sync); }},
      {"watch authorization",
       [this] { watchesAuthorization = WatchAuthorization(*instance, *sync) != nullptr; }},
      {"stop watching systems", [this] { sync->StopDataSync(watch); }},
      {"stop all", [this] { sync->Cleanup(); }},
      {"call a method",
       [this] {
         KELib::KEString response;
         instance->GetMethod()->Invoke(KE::Service::targetNamespace, "StartTask", "VirtualMachine",
                                       "success", response);
       }},
      {"change machines until the loop has met the fault", [this] { MeetInLoop(); }},
  };

  const std::string fault;
  const std::string certificate;  // the element of the configuration whose file is removed
  driver::TemporaryFolder folder;
  const std::string removed = folder.path + "/removed.pem", pidFile;
  driver::Simulator simulator;
  std::string config, method;
  KE::Service::KEServiceInstManager& manager = *KE::Service::GetServiceManagerInstance();
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KESession* session = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
  KE::Stub::ManagedObjectReference* watch = nullptr;
  std::string seen;  // of the step
  Json before;       // the caches when the fault began
  std::chrono::steady_clock::time_point faultBegan;
  int callsBefore = 0;
  bool watchesAuthorization = false;
  int names = 0;
};

}  // namespace faults

#endif
