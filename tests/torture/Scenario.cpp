// SPDX-License-Identifier: MIT
#include "torture/Scenario.h"

#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "agent/WatchList.h"
#include "endtoend/ChildProcess.h"
#include "support/ReadCaches.h"
#include "torture/CapturedLines.h"
#include "torture/FailingCalls.h"
#include "torture/HeldLocks.h"

namespace torture {
namespace {

using endtoend::Eventually;
using endtoend::Json;
using Reference = std::unique_ptr<KE::Stub::ManagedObjectReference>;

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

Reference Find(KE::Service::KEServiceInst& instance, const char* name) {
  return Reference(instance.GetReference(name));
}

}  // namespace

Scenario::Scenario(endtoend::Simulator& sim)
    : simulator(sim), document(WithAllSettings(sim.Config())), file(sim.ConfigFile(document)) {}

Findings Scenario::Run() {
  findings = {};
  sync = nullptr;
  firstData.reset(KELib::CreateKEWaiter());
  Step("start", [this] { manager = KE::Service::GetServiceManagerInstance(); });
  Step("connect", [this] { Connect(); });
  Step("watch hosts and machines", [this] { WatchSystems(); });
  Step("watch roles", [this] { WatchAuthorization(); });
  AwaitFirstData();
  Rename();
  Step("await a change", [this] { AwaitChange(); });
  Step("use both handles", [this] { UseBothHandles(); });
  CompareCaches();
  Step("stop watching roles", [this] { sync->StopDataSync(authorization); });
  Step("stop watching hosts and machines", [this] { sync->StopDataSync(systems); });
  End("free the instance", [this] { manager->FreeServiceInstance(instance); });
  instance = nullptr;
  End("free the manager", [] { KE::Service::FreeServiceManagerInstance(); });
  firstData.reset();
  LookAtSessions();
  findings.errors += TakeLog();
  return std::move(findings);
}

// --- steps ---------------------------------------------------------------------------------------

void Scenario::Complain(const std::string& text) {
  findings.complaints.push_back(text);
}

bool Scenario::Attempt(const char* name, const std::function<void()>& action) {
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
  if (error.empty() || error == "Unknown Exception") Complain(std::string(name) + ": no text");
  if (HeldLocks() != 0) Complain(std::string(name) + ": a lock is held after " + error);
  findings.errors += error + "\n";
  return false;
}

void Scenario::Step(const char* name, const std::function<void()>& action) {
  if (Attempt(name, action) || Attempt(name, action)) return;
  throw std::runtime_error(std::string(name) + ": fails again: " + findings.errors + TakeLog());
}

// Nobody can do anything about an end that fails.
void Scenario::End(const char* name, const std::function<void()>& action) {
  if (!Attempt(name, action)) Complain(std::string(name) + ": must not fail");
}

void Scenario::Connect() {
  if (instance != nullptr) manager->FreeServiceInstance(instance);
  instance = nullptr;
  KELib::KEString path(file.c_str());
  instance = manager->GetServiceInstance(path, document.c_str());
  if (instance == nullptr) throw std::runtime_error("no service instance");
  KE::Service::KESession* session = instance->GetSession();
  if (session == nullptr) throw std::runtime_error("no session");
  sync = session->GetDataSync();
}

void Scenario::WatchSystems() {
  const Reference root = Find(*instance, KE::Service::PxaRootFolder);
  KELib::KEVector<KELib::KEString> list;
  inventory::ListSystems(list);
  systems = sync->SetupDataSync(root.get(), list, nullptr);
}

void Scenario::WatchAuthorization() {
  const Reference root = Find(*instance, "authorizationManager");
  KELib::KEVector<KELib::KEString> list;
  inventory::ListAuthorization(list);
  authorization = sync->SetupDataSync(root.get(), list, firstData.get());
}

// --- what follows --------------------------------------------------------------------------------

void Scenario::AwaitFirstData() {
  if (!firstData->Wait(20000)) Complain("the waiter was not signalled");
}

// The cycle after the change fails.
void Scenario::Rename() {
  waitsBefore = simulator.Stats()["calls"]["WaitForUpdates"];
  simulator.Control("fault", {{"method", "WaitForUpdates"}, {"kind", "http500"}});
  const std::string id = simulator.Truth()["machines"][0]["Name"];
  simulator.Control("machine", {{"do", "set"},
                                {"id", id},
                                {"property", "name"},
                                {"value", "name " + std::to_string(++runs)}});
}

// What was noted of the failure cannot be relied on: there may have been no memory for its text.
void Scenario::AwaitChange() {
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

// The loop waits with one handle of the pool, the call takes the other.
void Scenario::UseBothHandles() {
  KELib::KEString response;
  instance->GetMethod()->Invoke(KE::Service::targetNamespace, KE::Service::methodName,
                                KE::Service::svcInst, KE::Service::svcInst, response);
  const LibraryScope outside(false);
  if (!Eventually([this] { return simulator.Stats()["waits"] == 1; })) {
    throw std::runtime_error("the loop does not wait");
  }
  const LibraryScope inside;
  instance->GetMethod()->Invoke(KE::Service::targetNamespace, KE::Service::methodName,
                                KE::Service::svcInst, KE::Service::svcInst, response);
}

void Scenario::CompareCaches() {
  const Json truth = simulator.Truth();
  if (Eventually([&] { return ReadCaches(*sync->GetCache()) == truth; })) return;
  Complain("the caches differ: " + Json::diff(ReadCaches(*sync->GetCache()), truth).dump());
}

void Scenario::LookAtSessions() {
  findings.orphaned = simulator.Stats()["sessions"] != 0;
  if (findings.orphaned) simulator.Control("session-lost");
}

}  // namespace torture
