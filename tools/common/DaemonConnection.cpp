// SPDX-License-Identifier: MIT
#include "tools/common/DaemonConnection.h"

#include <iostream>
#include <utility>

#include "tools/common/EndWatch.h"
#include "tools/common/WatchList.h"

namespace tools {
namespace {

using KE::Service::KESyncStatus;
using Reference = std::unique_ptr<KE::Stub::ManagedObjectReference>;

// After so many failed cycles in a row the connection is taken for lost.
constexpr unsigned LOST_AFTER_FAILURES = 3;
constexpr int WAIT_SLICE_MS = 200;

// Null when the service content names no such object.
Reference FindReference(KE::Service::KEServiceInst& instance, const char* name) {
  try {
    return Reference(instance.GetReference(name));
  } catch (const KELib::Exception&) {
    return nullptr;
  }
}

bool IsRequired(ConnectionNeeds::Authorization authorization) {
  return authorization == ConnectionNeeds::Authorization::required;
}

std::string FailureText(const KESyncStatus& status) {
  const std::string text = status.lastFailure.Cstr();
  return text.empty() ? "no data arrived" : Printable(text);
}

// URL and reason.
std::string LastFailure(KE::Service::KEServiceInstManager& manager) {
  KE::Service::KEConnectFailure failure;
  manager.GetLastFailure(failure);
  return failure.text.Empty() ? "out of memory" : failure.text.Cstr();
}

}  // namespace

DaemonConnection::DaemonConnection(KE::Service::KEServiceInstManager& manager,
                                   ConnectionNeeds asked, const EndOfRun& end)
    : needs(std::move(asked)), firstData(KELib::CreateKEWaiter()), instance(nullptr, {&manager}) {
  try {
    KELib::KEString config(needs.config.c_str());
    const EndWatch watch(end, needs.program, [&manager] { manager.InterruptConnecting(); });
    instance.reset(manager.GetServiceInstance(config, KE::Service::DEFAULT_CONFIG_CONTENT));
    if (!instance) throw ConnectionError("cannot connect: " + LastFailure(manager));
    KE::Service::KESession* session = instance->GetSession();
    if (!session) throw ConnectionError("the management daemon opens no session");
    sync = session->GetDataSync();
  } catch (const KELib::SystemException&) {
    throw ConnectionError("cannot log in: " + LastFailure(manager));
  } catch (const KELib::Throwable& error) {
    throw ConnectionError(std::string("cannot connect: ") + error.What());
  }
}

void DaemonConnection::Watch(const EndOfRun& end) {
  try {
    const EndWatch watch(end, needs.program, [this] { CutWatching(); });
    SetUpWatches(end);
  } catch (const ConnectionError&) {
    if (!wasCut) throw;
  }
  if (wasCut) throw ConnectionError("ended before the inventory was read");
}

// A daemon that does not answer must not delay the end.
void DaemonConnection::CutWatching() {
  wasCut = true;
  if (auto* impl = dynamic_cast<KE::Service::KEDataSyncImpl*>(sync)) impl->StopAtOnce();
}

void DaemonConnection::SetUpWatches(const EndOfRun& end) {
  try {
    WatchSystems();
  } catch (const KELib::Throwable& error) {
    throw ConnectionError(std::string("cannot watch hosts and machines: ") + error.What());
  }
  if (needs.authorization == ConnectionNeeds::Authorization::none) return;
  try {
    WatchAuthorization(end);
  } catch (const KELib::Throwable& error) {
    const std::string text =
        Printable(std::string("cannot watch roles and privileges: ") + error.What());
    if (IsRequired(needs.authorization) || wasCut) throw ConnectionError(text);
    std::cerr << needs.program << ": " << text << '\n';
  }
}

// The first watch of a data sync fills the caches before SetupDataSync returns.
void DaemonConnection::WatchSystems() {
  Reference root = FindReference(*instance, KE::Service::PxaRootFolder);
  if (!root) throw ConnectionError("the management daemon names no root folder");
  KELib::KEVector<KELib::KEString> list;
  ListSystems(list);
  sync->SetupDataSync(root.get(), list, nullptr);
  KESyncStatus status;
  sync->GetStatus(status);
  if (!status.firstFillDone) {
    throw ConnectionError("cannot read the inventory: " + FailureText(status));
  }
}

// A further watch returns at once; its waiter is signalled when the first data is there.
void DaemonConnection::WatchAuthorization(const EndOfRun& end) {
  Reference root = FindReference(*instance, "authorizationManager");
  if (!root) {
    if (IsRequired(needs.authorization)) throw ConnectionError("there is no authorization manager");
    return;
  }
  KELib::KEVector<KELib::KEString> list;
  ListAuthorization(list);
  sync->SetupDataSync(root.get(), list, firstData.get());
  AwaitFirstData(end);
  hasAuthorization = true;
}

void DaemonConnection::AwaitFirstData(const EndOfRun& end) {
  std::string reason;
  while (!firstData->Wait(end.Slice(WAIT_SLICE_MS))) {
    if (IsLost(reason)) throw ConnectionError("cannot read roles and privileges: " + reason);
    if (end.Ended()) throw ConnectionError("ended before roles and privileges were read");
  }
}

bool DaemonConnection::IsLost(std::string& reason) {
  KESyncStatus status;
  sync->GetStatus(status);
  if (status.consecutiveFailures < LOST_AFTER_FAILURES && status.loopRunning) return false;
  reason = FailureText(status);
  return true;
}

}  // namespace tools
