// SPDX-License-Identifier: MIT
#include "faults/Stage.h"

#include "support/Thrown.h"

namespace faults {
namespace {

constexpr const char* USER = "watchman";
constexpr const char* PASSWORD = "s3cr&t";
constexpr const char* ESCAPED_PASSWORD = "s3cr&amp;t";

// A reply of 100 MB takes a moment on a slow machine; a call that hangs is to be over soon.
std::string TimeoutFor(const std::string& fault) {
  return fault == "hang" ? "2" : fault == "huge" ? "8" : "60";
}

// For single bytes of an answer: calls that have limits of their own reach them; long answers come
// as fast as single bytes can.
int DelayFor(const std::string& fault, const std::string& method) {
  if (fault == "refuse") return 200;
  const bool isLong = method == "WaitForUpdates" || method == "RetrieveAllPermissions";
  if (fault != "drip" || isLong) return 0;
  return method == "Logout" || method == "CancelWaitForUpdates" ? 10 : 1;
}

std::string CertificateFor(const std::string& fault) {
  return fault == "certificates-gone" ? "<certFile>"
         : fault == "key-gone"        ? "<keyFile>"
         : fault == "ca-gone"         ? "<CACertFile>"
                                      : "";
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at != std::string::npos) text.replace(at, from.size(), to);
}

std::vector<std::string> Options(bool tls, const std::string& pidFile) {
  std::vector<std::string> options = {"--hosts", "1",          "--machines", "3",          "--user",
                                      USER,      "--password", PASSWORD,     "--pid-file", pidFile};
  if (tls) options.emplace_back("--https");
  return options;
}

}  // namespace

Stage::Stage(const std::string& kind, bool hasPassword)
    : fault(kind),
      certificate(CertificateFor(kind)),
      pidFile(folder.path + (kind == "restart" || kind == "pid-gone" ? "/pid" : "/none")),
      simulator(Options(!certificate.empty(), folder.path + "/pid")) {
  KE::Service::ResetMgmtdWatch();
  KE::Service::GetMgmtdWatchSeams().pidFile = pidFile.c_str();
  KE::Service::GetMgmtdWatchSeams().pauseMilliseconds = 1000;
  KELib::Logging::GetDefaultLogger()->SetLevelByName("verbose");
  config = hasPassword ? simulator.Config(USER, ESCAPED_PASSWORD) : simulator.Config();
  Replace(config, ">root<", std::string(">") + USER + "<");
  if (!certificate.empty()) {
    if (fault != "ca-gone") std::filesystem::copy_file(KECPP_CLIENT_CERTIFICATE, removed);
    Replace(config, certificate + KECPP_CLIENT_CERTIFICATE, certificate + removed);
  }
  Replace(config, "<timeout>60<", "<timeout>" + TimeoutFor(fault) + "<");
}

Stage::~Stage() {
  KE::Service::FreeServiceManagerInstance();
  KE::Service::ResetMgmtdWatch();
}

// What happens to the daemon happens once; any other fault lasts.
void Stage::BeginFault(const std::string& methodName) {
  method = methodName;
  faultBegan = std::chrono::steady_clock::now();
  before = Read();
  callsBefore = CallsOf(method);
  if (fault == "ca-gone") return;  // from the beginning
  const bool tls = !certificate.empty();
  const bool once = fault == "session-lost" || fault == "restart" || tls;
  simulator.Control("fault", {{"method", method},
                              {"kind", tls ? "close-before" : fault},
                              {"fault", "InvalidRequest"},
                              {"delayMs", DelayFor(fault, method)},
                              {"count", once ? 1 : 1000000}});
  if (tls) std::filesystem::remove(removed);
}

Stage::Attempts Stage::EndFault() {
  if (!certificate.empty()) std::filesystem::copy_file(KECPP_CLIENT_CERTIFICATE, removed);
  simulator.Control("fault", {{"kind", "clear"}});
  // Pauses of 10 ms and 100 ms, then of a second; the last failure may be on its way yet.
  const auto took = std::chrono::steady_clock::now() - faultBegan;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(took).count();
  return {CallsOf(method) - callsBefore, 5 + static_cast<int>(seconds)};
}

// --- what the user does --------------------------------------------------------------------------

std::string Stage::Do(const std::string& step) {
  seen = "returns";
  try {
    steps.at(step)();
    return seen;
  } catch (const KELib::Exception& e) {
    return "throws " + Described(e);
  }
}

void Stage::Enter() {
  manager.FreeServiceInstance(instance);
  session = nullptr;
  sync = nullptr;
  watchesAuthorization = false;
  instance = manager.GetServiceInstance(config.c_str(), KE::Service::DEFAULT_CONFIG_CONTENT);
  if (instance == nullptr) {
    seen = "returns null";
    return;
  }
  session = instance->GetSession();
  if (LoggedIn()) sync = session->GetDataSync();
}

void Stage::LogIn() {
  KELib::KEString user(USER), password(PASSWORD);
  session->Login(user, password);
  sync = LoggedIn() ? session->GetDataSync() : nullptr;
}

bool Stage::LoggedIn() {
  try {
    return session != nullptr && session->GetDataSync() != nullptr;
  } catch (const KELib::Exception&) {
    return false;
  }
}

void Stage::MeetInLoop() {
  const int calls = CallsOf(method);
  const bool met = Eventually([&] {
    RenameAMachine();
    KE::Service::KESyncStatus status;
    sync->GetStatus(status);
    if (!status.loopRunning) return true;  // the process ends
    return CallsOf(method) > calls + 1 || status.consecutiveFailures > 1;
  });
  seen = met ? "goes on" : "stands still";
}

void Stage::RenameAMachine() {
  simulator.Control("machine", {{"do", "set"},
                                {"id", simulator.Truth()["machines"][0]["Name"]},
                                {"property", "name"},
                                {"value", "renamed " + std::to_string(++names)}});
}

// --- what is the case ----------------------------------------------------------------------------

bool Stage::Holds(const std::string& statement, const std::vector<std::string>& texts) {
  KE::Service::KESyncStatus status;
  if (sync != nullptr) sync->GetStatus(status);
  const auto stats = [this](const char* name) { return simulator.Stats()[name].get<int>(); };
  const auto failed = [&] {
    return status.consecutiveFailures > 0 &&
           std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
             return Matches(status.lastFailure.Cstr(), text);
           });
  };
  const auto kept = [&] {
    Json is = Read();
    for (Json* systems : {&is, &before}) {  // but for what RenameAMachine changes
      for (Json& machine : (*systems)["machines"]) machine["ElementName"] = "";
    }
    return is == before;
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
      {"caches kept", kept},
      {"failure in GetStatus", failed},
      {"no failure in GetStatus", [&] { return status.lastFailureTime == 0; }},
      {"daemon: a wait", [&] { return stats("waits") == 1; }},
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
    const Json is = Read(), truth = simulator.Truth();
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

}  // namespace faults
