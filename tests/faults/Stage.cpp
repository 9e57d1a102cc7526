// SPDX-License-Identifier: MIT
#include "faults/Stage.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "agent/WatchList.h"
#include "service/call/MgmtdWatchSeams.h"
#include "support/ReadCaches.h"

namespace faults {
namespace {

using endtoend::Eventually;
using endtoend::Json;
using KELib::KEString;

constexpr const char* USER = "watchman";
constexpr const char* PASSWORD = "s3cr&t";
constexpr const char* ESCAPED_PASSWORD = "s3cr&amp;t";

// A reply of 100 MB takes a moment on a slow machine; a call that hangs is to be over soon.
std::string TimeoutFor(const std::string& fault) {
  return fault == "hang" ? "2" : fault == "huge" ? "8" : "60";
}

// For single bytes of an answer: calls that have limits of their own reach them, while the first
// update set, which is long, comes as fast as it can.
int DelayFor(const std::string& fault, const std::string& method) {
  if (fault == "refuse") return 200;
  if (fault != "drip" || method == "WaitForUpdates") return 0;
  return method == "Logout" || method == "CancelWaitForUpdates" ? 10 : 1;
}

std::vector<std::string> Options(bool tls, const std::string& pidFile) {
  std::vector<std::string> options = {"--hosts", "1",          "--machines", "3",          "--user",
                                      USER,      "--password", PASSWORD,     "--pid-file", pidFile};
  if (tls) options.push_back("--https");
  return options;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// The element of the configuration whose file is removed.
std::string ElementFor(const std::string& fault) {
  return fault == "key-gone" ? "<keyFile>" : fault == "ca-gone" ? "<CACertFile>" : "<certFile>";
}

std::string UserText() {
  return std::string(">") + USER + "<";
}

template <typename Step>
std::string Seen(Step step) {
  const auto thrown = [](const char* type, const KELib::Exception& e) {
    return std::string("throws ") + type + ": " + e.What();
  };
  try {
    step();
    return "returns";
  } catch (const KELib::NoPermissionException& e) {
    return thrown("NoPermissionException", e);
  } catch (const KELib::RequestTimedOutException& e) {
    return thrown("RequestTimedOutException", e);
  } catch (const KELib::SystemException& e) {
    return thrown("SystemException", e);
  } catch (const KELib::Exception& e) {
    return thrown("Exception", e);
  }
}

std::unique_ptr<KE::Stub::ManagedObjectReference> Reference(const char* type, const char* value) {
  KEString typeText(type), valueText(value);
  return std::unique_ptr<KE::Stub::ManagedObjectReference>(
      KE::Stub::CreateManagedObjectReference(typeText, valueText));
}

}  // namespace

bool Matches(const std::string& text, const std::string& pattern) {
  return fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
}

Stage::Stage(const std::string& kind, Credentials credentials)
    : fault(kind),
      tls(kind == "certificates-gone" || kind == "key-gone" || kind == "ca-gone"),
      daemonGoes(kind == "restart" || kind == "pid-gone"),
      simulator(Options(tls, folder.path + "/pid")),
      pidFile(daemonGoes ? folder.path + "/pid" : folder.path + "/none"),
      removed(folder.path + "/removed.pem"),
      manager(*KE::Service::GetServiceManagerInstance()) {
  KE::Service::ResetMgmtdWatch();
  KE::Service::GetMgmtdWatchSeams().pidFile = pidFile.c_str();
  KELib::Logging::GetDefaultLogger()->SetLevelByName("verbose");
  config = credentials == Credentials::Ticket ? Replaced(simulator.Config(), ">root<", UserText())
                                              : simulator.Config(USER, ESCAPED_PASSWORD);
  if (tls) {
    if (fault != "ca-gone") std::filesystem::copy_file(KECPP_TEST_CERTIFICATE, removed);
    config =
        Replaced(config, ElementFor(fault) + KECPP_TEST_CERTIFICATE, ElementFor(fault) + removed);
  }
  config = Replaced(config, "<timeout>60<", "<timeout>" + TimeoutFor(fault) + "<");
}

Stage::~Stage() {
  KE::Service::FreeServiceManagerInstance();
  KE::Service::ResetMgmtdWatch();
}

// --- the fault -----------------------------------------------------------------------------------

// Asks the daemon, whose port may be closed for a moment.
template <typename Question>
Json Stage::Patiently(Question question) {
  Json answer;
  Eventually([&] {
    try {
      answer = question();
      return true;
    } catch (const std::runtime_error&) {
      return false;
    }
  });
  return answer;
}

// What happens to the daemon happens once; any other fault lasts.
void Stage::BeginFault(const std::string& methodName) {
  method = methodName;
  faultBegan = std::chrono::steady_clock::now();
  if (sync != nullptr) before = Read();
  callsBefore = CallsOf(method);
  if (fault == "ca-gone") return;  // from the beginning
  const bool once = fault == "session-lost" || fault == "restart" || tls;
  simulator.Control("fault", {{"method", method},
                              {"kind", tls ? "close-before" : fault},
                              {"fault", "InvalidRequest"},
                              {"delayMs", DelayFor(fault, method)},
                              {"count", once ? 1 : 1000000}});
  if (tls) std::filesystem::remove(removed);
}

Stage::Attempts Stage::EndFault() {
  if (tls) std::filesystem::copy_file(KECPP_TEST_CERTIFICATE, removed);
  Patiently([this] { return simulator.Control("fault", {{"kind", "clear"}}); });
  // Pauses of 10 ms and 100 ms, then of a second; the last failure may be on its way yet.
  const auto took = std::chrono::steady_clock::now() - faultBegan;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(took).count();
  return {CallsOf(method) - callsBefore, 5 + static_cast<int>(seconds)};
}

void Stage::AwaitWait() {
  Eventually([this] { return Stats()["waits"] == 1; });
}

// --- what the user does --------------------------------------------------------------------------

std::string Stage::Enter() {
  manager.FreeServiceInstance(instance);
  session = nullptr;
  sync = nullptr;
  watchesAuthorization = false;
  instance = manager.GetServiceInstance(config.c_str(), KE::Service::DEFAULT_CONFIG_CONTENT);
  if (instance == nullptr) return "returns null";
  session = instance->GetSession();
  AskForSync();
  return "returns";
}

void Stage::AskForSync() {
  sync = LoggedIn() ? session->GetDataSync() : nullptr;
}

bool Stage::LoggedIn() {
  return session != nullptr && Seen([this] { session->GetDataSync(); }) == "returns";
}

std::string Stage::LogIn() {
  return Seen([this] {
    KEString user(USER), password(PASSWORD);
    session->Login(user, password);
    AskForSync();
  });
}

std::string Stage::LogOut() {
  watchesAuthorization = false;
  return Seen([this] { session->Logout(); });
}

std::string Stage::WatchSystems() {
  return Seen([this] {
    KELib::KEVector<KEString> list;
    inventory::ListSystems(list);
    watch = sync->SetupDataSync(Reference("Folder", "group-d1").get(), list, nullptr);
  });
}

std::string Stage::WatchAuthorization() {
  return Seen([this] {
    KELib::KEVector<KEString> list;
    inventory::ListAuthorization(list);
    sync->SetupDataSync(Reference("AuthorizationManager", "authmgr-1").get(), list, nullptr);
    watchesAuthorization = true;
  });
}

std::string Stage::StopWatching() {
  return Seen([this] { sync->StopDataSync(watch); });
}

std::string Stage::StopAll() {
  return Seen([this] { sync->Cleanup(); });
}

std::string Stage::CallMethod() {
  return Seen([this] {
    KEString response;
    instance->GetMethod()->Invoke(KE::Service::targetNamespace, "StartTask", "VirtualMachine",
                                  "success", response);
  });
}

std::string Stage::MeetInLoop() {
  const int calls = CallsOf(method);
  const bool met = Eventually([&] {
    RenameAMachine();
    KE::Service::KESyncStatus status;
    sync->GetStatus(status);
    if (!status.loopRunning) return true;  // the process ends
    return CallsOf(method) > calls + 2 || status.consecutiveFailures > 1;
  });
  return met ? "goes on" : "stands still";
}

// --- what is the case ----------------------------------------------------------------------------

bool Stage::Holds(const std::string& statement, const std::vector<std::string>& texts) {
  KE::Service::KESyncStatus status;
  if (sync != nullptr) sync->GetStatus(status);
  const auto stats = [this](const char* name) { return Stats()[name].get<int>(); };
  const auto failed = [&] {
    return status.consecutiveFailures > 0 &&
           std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
             return Matches(status.lastFailure.Cstr(), text);
           });
  };
  const std::map<std::string, std::function<bool()>> statements = {
      {"no instance", [&] { return instance == nullptr; }},
      {"logged in", [&] { return LoggedIn(); }},
      {"not logged in", [&] { return instance != nullptr && !LoggedIn(); }},
      {"loop runs", [&] { return status.loopRunning; }},
      {"no loop", [&] { return !status.loopRunning; }},
      {"nothing filled", [&] { return !status.firstFillDone; }},
      {"filled", [&] { return status.firstFillDone; }},
      {"caches true", [&] { return CachesBecomeTrue(); }},
      {"caches kept", [&] { return Blurred(Read()) == Blurred(before); }},
      {"failure in GetStatus", failed},
      {"no failure in GetStatus", [&] { return status.lastFailureTime == 0; }},
      {"daemon: no session", [&] { return stats("sessions") == 0; }},
      {"daemon: a session", [&] { return stats("sessions") == 1; }},
      {"daemon: sessions left over", [&] { return stats("sessions") > 0; }},
      {"daemon: no filter", [&] { return stats("filters") == 0; }},
      {"daemon: a filter", [&] { return stats("filters") == 1; }},
      {"daemon: filters left over", [&] { return stats("filters") > 0; }},
  };
  return statements.at(statement)();
}

bool Stage::CachesBecomeTrue() {
  return Eventually([this] {
    const Json is = Read(), truth = Truth();
    return is["machines"] == truth["machines"] && is["hosts"] == truth["hosts"] &&
           (!watchesAuthorization || is["roles"] == truth["roles"]);
  });
}

// A ticket's file is there until the daemon goes.
std::vector<std::string> Stage::Secrets() const {
  std::vector<std::string> secrets = {USER, PASSWORD, ESCAPED_PASSWORD, "<password>",
                                      "pxa_session"};
  for (const auto& entry : std::filesystem::directory_iterator(simulator.TicketFolder())) {
    if (entry.path().filename().string().compare(0, 7, "ticket-") != 0) continue;
    std::ifstream file(entry.path());
    std::string ticket;
    std::getline(file, ticket);
    secrets.push_back(ticket.substr(0, ticket.find('<')));  // the part that is never escaped
  }
  return secrets;
}

Json Stage::Read() {
  return sync == nullptr ? Json() : ReadCaches(*sync->GetCache());
}

// Without what RenameAMachine changes.
Json Stage::Blurred(Json systems) {
  for (Json& machine : systems["machines"]) machine["ElementName"] = "";
  return systems;
}

int Stage::CallsOf(const std::string& name) {
  return Stats()["calls"].value(name, 0);
}

Json Stage::Stats() {
  return Patiently([this] { return simulator.Stats(); });
}

Json Stage::Truth() {
  return Patiently([this] { return simulator.Truth(); });
}

void Stage::RenameAMachine() {
  const std::string id = Truth()["machines"][0]["Name"];
  const std::string name = "renamed " + std::to_string(++names);
  const Json order = {{"do", "set"}, {"id", id}, {"property", "name"}, {"value", name}};
  Patiently([&] { return simulator.Control("machine", order); });
}

}  // namespace faults
