// SPDX-License-Identifier: MIT
#include "torture/Scenario.h"

#include <kecpp.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "support/ReadCaches.h"
#include "support/SystemLog.h"
#include "support/Watches.h"
#include "torture/FailingCalls.h"

namespace torture {
namespace {

using driver::Eventually;
using driver::Json;

std::mutex logMutex;
std::string logLines;  // guarded by it

// All lines since the last call, each with a line end.
std::string TakeLog() {
  const std::lock_guard<std::mutex> guard(logMutex);
  return std::exchange(logLines, {});
}

// Every option that the transport knows is set: a proxy that is none, a pass phrase nobody asks
// for, a time-out other than the standard one.
std::string WithAllSettings(std::string document) {
  const auto replace = [&document](const std::string& from, const std::string& to) {
    document.replace(document.find(from), from.size(), to);
  };
  replace("<passPhrase/>", "<passPhrase>unused</passPhrase>");
  replace("<timeout>60</timeout>",
          "<timeout>59</timeout><verboseHttpLogging>true</verboseHttpLogging>");
  replace("<level>error</level>", "<level>verbose</level>");
  return document;
}

// One life.
class Scenario {
 public:
  explicit Scenario(driver::Simulator& sim)
      : simulator(sim), document(WithAllSettings(sim.Config())), file(sim.ConfigFile(document)) {}

  Findings Run() {
    KE::Stub::ManagedObjectReference* systems = nullptr;        // the data sync's
    KE::Stub::ManagedObjectReference* authorization = nullptr;  // likewise
    std::unique_ptr<KELib::KEWaiter> firstData(KELib::CreateKEWaiter());
    Step("start", [this] { manager = KE::Service::GetServiceManagerInstance(); });
    Step("connect", [this] { Connect(); });
    Step("watch hosts and machines", [&] { systems = WatchSystems(*instance, *sync); });
    Step("watch roles",
         [&] { authorization = WatchAuthorization(*instance, *sync, firstData.get()); });
    if (!firstData->Wait(20000)) findings.complaints.emplace_back("the waiter was not signalled");
    Rename();
    Step("await a change", [this] { AwaitChange(); });
    Step("use both handles", [this] { UseBothHandles(); });
    const Json truth = simulator.Truth();
    if (!Eventually([&] { return ReadCaches(*sync->GetCache()) == truth; })) {
      findings.complaints.push_back("the caches differ: " +
                                    Json::diff(ReadCaches(*sync->GetCache()), truth).dump());
    }
    Step("stop watching roles", [&] { sync->StopDataSync(authorization); });
    Step("stop watching hosts and machines", [&] { sync->StopDataSync(systems); });
    End("free the instance", [this] { manager->FreeServiceInstance(instance); });
    End("free the manager", [] { KE::Service::FreeServiceManagerInstance(); });
    firstData.reset();
    findings.orphaned = simulator.Stats()["sessions"] != 0;
    if (findings.orphaned) simulator.Control("session-lost");
    findings.errors += TakeLog();
    return findings;
  }

 private:
  using Action = std::function<void()>;

  bool Attempt(const std::string& name, const Action& action) {
    std::string error;
    try {
      const LibraryScope inside;
      action();
      return true;
    } catch (const KELib::Throwable& e) {
      error = e.What();
    } catch (const std::exception& e) {
      error = e.what();
    }
    Disarm();
    if (error.empty() || error == "Unknown Exception") {
      findings.complaints.push_back(name + ": no text");
    }
    if (HeldLocks() != 0) findings.complaints.push_back(name + ": a lock is held after " + error);
    findings.errors += error + "\n";
    return false;
  }

  void Step(const std::string& name, const Action& action) {
    if (Attempt(name, action) || Attempt(name, action)) return;
    throw std::runtime_error(name + ": fails again: " + findings.errors + TakeLog());
  }

  // Nobody can do anything about an end that fails.
  void End(const std::string& name, const Action& action) {
    if (!Attempt(name, action)) findings.complaints.push_back(name + ": must not fail");
  }

  void Connect() {
    if (instance != nullptr) manager->FreeServiceInstance(instance);
    instance = nullptr;
    KELib::KEString path(file.c_str());
    instance = manager->GetServiceInstance(path, document.c_str());
    if (instance == nullptr) throw std::runtime_error("no service instance");
    KE::Service::KESession* session = instance->GetSession();
    if (session == nullptr) throw std::runtime_error("no session");
    sync = session->GetDataSync();
  }

  // The cycle after the change fails.
  void Rename() {
    static unsigned runs = 0;
    waitsBefore = simulator.Stats()["calls"]["WaitForUpdates"];
    simulator.Control("fault", {{"method", "WaitForUpdates"}, {"kind", "http500"}});
    simulator.Control("machine", {{"do", "set"},
                                  {"id", simulator.Truth()["machines"][0]["Name"]},
                                  {"property", "name"},
                                  {"value", "name " + std::to_string(++runs)}});
  }

  // What was noted of the failure cannot be relied on: there may have been no memory for its text.
  void AwaitChange() {
    unsigned long long seen = 0;
    sync->WaitForChange(seen, 20000);
    const LibraryScope outside(false);
    const int wanted = waitsBefore + 2;  // the one that fails and the one after it
    if (!Eventually([&] { return simulator.Stats()["calls"]["WaitForUpdates"] >= wanted; })) {
      throw std::runtime_error("there was no failed cycle");
    }
    const LibraryScope inside;
    KE::Service::KESyncStatus status;
    sync->GetStatus(status);
  }

  void Call() {
    using namespace KE::Service;
    KELib::KEString response;
    instance->GetMethod()->Invoke(targetNamespace, methodName, svcInst, svcInst, response);
  }

  // The loop waits with one handle of the pool, the call takes the other.
  void UseBothHandles() {
    Call();
    const LibraryScope outside(false);
    if (!Eventually([this] { return simulator.Stats()["waits"] == 1; })) {
      throw std::runtime_error("the loop does not wait");
    }
    const LibraryScope inside;
    Call();
  }

  driver::Simulator& simulator;
  const std::string document, file;
  int waitsBefore = 0;  // that the simulator had seen before the change
  Findings findings;
  KE::Service::KEServiceInstManager* manager = nullptr;
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
};

}  // namespace

Findings RunScenario(driver::Simulator& simulator) {
  return Scenario(simulator).Run();
}

}  // namespace torture

void OnLogLine(int /*priority*/, const char* format, va_list arguments) {
  const torture::LibraryScope outside(false);  // a system log allocates nothing with operator new
  char line[8192];
  std::vsnprintf(line, sizeof line, format, arguments);
  const std::lock_guard<std::mutex> guard(torture::logMutex);
  torture::logLines.append(line).append("\n");
}
