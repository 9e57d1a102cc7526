// SPDX-License-Identifier: MIT
#include "inventory/Connection.h"

#include <cstring>
#include <exception>
#include <utility>

#include "inventory/ConfigText.h"
#include "inventory/WatchLists.h"

namespace kecpp {
namespace {

using KE::Service::KEConnectFailureKind;
using KE::Service::KESyncStatus;

// So many failed cycles in a row are no hiccup.
constexpr unsigned kLostAfterFailures = 3;
constexpr int kWaitSliceMs = 200;

// Made on first use, and there until the process ends: it is the whole process's, and nobody knows
// who else uses it.
KE::Service::KEServiceInstManager& Manager() {
  static KE::Service::KEServiceInstManager& manager = *KE::Service::GetServiceManagerInstance();
  return manager;
}

// The library leaves it to its user to log as much as a document says. The first one of the process
// counts: afterwards the level is the program's.
void SetLogLevel(const std::string& asked, const std::string& configured) {
  static std::atomic<bool> isSet{false};
  const std::string& level = isSet.exchange(true) ? asked : asked.empty() ? configured : asked;
  if (!level.empty()) KELib::Logging::GetDefaultLogger()->SetLevelByName(level.c_str());
}

std::string FailureText(const KESyncStatus& status) {
  return status.lastFailure.Empty() ? "no data arrived" : status.lastFailure.Cstr();
}

// Whether the daemon keeps something from this account. A fault of the server comes as its bare
// type.
bool IsRefusal(const KELib::Throwable& error) {
  return dynamic_cast<const KELib::NoPermissionException*>(&error) != nullptr ||
         std::strcmp(error.What(), "NoPermission") == 0;
}

// The failure's text begins with the URL, where there is one.
Error ConnectError(const KE::Service::KEConnectFailure& failure, const std::string& url) {
  std::string text = failure.text.Empty() ? "out of memory" : failure.text.Cstr();
  const std::size_t colon = text.find(": ");
  if (text.compare(0, 4, "http") != 0 || colon == std::string::npos) return {url, text};
  return {text.substr(0, colon), text.substr(colon + 2)};
}

}  // namespace

void Connection::InstanceFreer::operator()(KE::Service::KEServiceInst* inst) const {
  Manager().FreeServiceInstance(inst);
}

Connection::Connection(Options asked)
    : options(std::move(asked)),
      firstRoles(KELib::CreateKEWaiter()),
      firstPermissions(KELib::CreateKEWaiter()) {}

Connection::~Connection() {
  std::unique_lock<std::mutex> lock(mutex);
  unused.wait(lock, [this] { return uses == 0; });
}

Connection::Use::Use(Connection& used) : connection(&used) {
  const std::lock_guard<std::mutex> lock(used.mutex);
  ++used.uses;
}

Connection::Use::~Use() {
  if (connection == nullptr) return;
  const std::lock_guard<std::mutex> lock(connection->mutex);
  if (--connection->uses == 0) connection->unused.notify_all();
}

void Connection::Fail(const std::string& reason) const {
  throw Error(url, reason);
}

void Connection::Open() {
  try {
    Connect();
    if (options.systems) WatchSystems();
    if (options.authorization != Authorization::none) WatchAuthorization();
  } catch (const KELib::Throwable& error) {
    Fail(error.What());
  }
  if (cut) Fail("ended before the inventory was read");
}

// An attempt that another Inventory's end cut is made again. So is one of which nobody knows why it
// failed: the process has one last failure, and a session that logged in again may have cleared it.
void Connection::Connect() {
  constexpr int kMostUnexplained = 5;
  const std::string text = UniqueConfigText(options.config);
  const ConfigFacts facts = FactsOf(text);
  url = facts.url;
  SetLogLevel(options.logLevel, facts.logLevel);
  KELib::KEString config(text.c_str());
  KE::Service::KEConnectFailure failure;
  for (int unexplained = 0; !TryToLogIn(config, failure);) {
    if (failure.kind == KEConnectFailureKind::interrupted) continue;
    if (failure.kind != KEConnectFailureKind::none || ++unexplained == kMostUnexplained) {
      if (instance && instance->GetSession() == nullptr) {
        Fail("the management daemon opens no session");
      }
      throw ConnectError(failure, url);
    }
  }
}

bool Connection::TryToLogIn(KELib::KEString& config, KE::Service::KEConnectFailure& failure) {
  if (cut) Fail("ended before it was connected");
  instance.reset();
  // The manager connects one instance at a time all the same: thus no other Inventory's attempt
  // comes between this one and its failure.
  static std::mutex connecting;
  const std::lock_guard<std::mutex> alone(connecting);
  instance.reset(Manager().GetServiceInstance(config, KE::Service::DEFAULT_CONFIG_CONTENT));
  Manager().GetLastFailure(failure);
  KE::Service::KESession* const session = instance ? instance->GetSession() : nullptr;
  if (session == nullptr) return false;
  try {
    sync = session->GetDataSync();
    return true;
  } catch (const KELib::SystemException&) {  // not logged in
    return false;
  }
}

void Connection::Watch(const char* rootName, void (*fill)(KELib::KEVector<KELib::KEString>&),
                       KELib::KEWaiter* waiter) {
  const std::unique_ptr<KE::Stub::ManagedObjectReference> root(instance->GetReference(rootName));
  KELib::KEVector<KELib::KEString> list;
  fill(list);
  sync.load()->SetupDataSync(root.get(), list, waiter);
  isWatching = true;
}

// The first watch of a data sync fills the caches before SetupDataSync returns.
void Connection::CheckFilled(const char* what) const {
  KESyncStatus status;
  Sync().GetStatus(status);
  if (!status.firstFillDone) Fail(std::string("cannot read ") + what + ": " + FailureText(status));
}

void Connection::WatchSystems() {
  try {
    Watch(KE::Service::PxaRootFolder, &ListSystems, nullptr);
  } catch (const KELib::Throwable& error) {
    Fail(std::string("cannot watch hosts and machines: ") + error.What());
  }
  CheckFilled("hosts and machines");
}

void Connection::WatchAuthorization() {
  try {
    const std::unique_ptr<KE::Stub::ManagedObjectReference> root(
        instance->GetReference("authorizationManager"));
    if (!root) throw KELib::NoPermissionException("there is no authorization manager");
    Watch("authorizationManager", &ListAuthorization, firstRoles.get());
    AwaitAuthorization(*firstRoles);  // who is in a role that is not cached yet is not linked to it
    Watch("authorizationManager", &ListPermissions, firstPermissions.get());
    AwaitAuthorization(*firstPermissions);
    hasAuthorization = true;
  } catch (const KELib::Throwable& error) {
    // Anything but a refusal may be over at the next attempt; without one it would stay so.
    if (options.authorization == Authorization::required || !IsRefusal(error)) {
      Fail(std::string("cannot watch roles and privileges: ") + error.What());
    }
    authorizationFailure = error.What();
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_WARNING, "No roles and privileges: %s",
                        error.What());
  }
}

// A further watch returns at once; its waiter is signalled when the first data is there.
void Connection::AwaitAuthorization(KELib::KEWaiter& firstData) {
  std::string reason;
  while (!cut && !firstData.Wait(kWaitSliceMs)) {
    if (IsLost(reason)) Fail("cannot read roles and privileges: " + reason);
  }
}

void Connection::Cut() {
  cut = true;
  Manager().InterruptConnecting();
  if (auto* impl = dynamic_cast<KE::Service::KEDataSyncImpl*>(sync.load())) impl->StopAtOnce();
}

bool Connection::IsLost(std::string& reason) const {
  if (!isWatching) return false;  // a call finds out
  KESyncStatus status;
  Sync().GetStatus(status);
  if (status.consecutiveFailures < kLostAfterFailures && status.loopRunning) return false;
  reason = FailureText(status);
  return true;
}

}  // namespace kecpp
