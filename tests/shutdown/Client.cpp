// SPDX-License-Identifier: MIT
#include "shutdown/Client.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "agent/WatchList.h"
#include "torture/FailingCalls.h"

namespace shutdowntest {
namespace {

using Clock = std::chrono::steady_clock;

std::string WithTimeout(std::string document, int seconds) {
  const std::string standard = "<timeout>60<";
  return document.replace(document.find(standard), standard.size(),
                          "<timeout>" + std::to_string(seconds) + "<");
}

long EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator all(folder);
  return std::distance(begin(all), end(all));
}

}  // namespace

Client::Client(endtoend::Simulator& simulator, int timeout)
    : manager(KE::Service::GetServiceManagerInstance()) {
  KELib::Logging::GetDefaultLogger()->SetLevelByName("error");
  KELib::KEString config(WithTimeout(simulator.Config(), timeout).c_str());
  instance = manager->GetServiceInstance(config, KE::Service::DEFAULT_CONFIG_CONTENT);
  if (instance == nullptr) throw std::runtime_error("no service instance");
  sync = instance->GetSession()->GetDataSync();
}

Client::~Client() {
  if (instance != nullptr) FreeMilliseconds();
  KE::Service::FreeServiceManagerInstance();
}

bool Client::Watch() {
  const std::unique_ptr<KE::Stub::ManagedObjectReference> root(
      instance->GetReference(KE::Service::PxaRootFolder));
  KELib::KEVector<KELib::KEString> list;
  inventory::ListSystems(list);
  try {
    return sync->SetupDataSync(root.get(), list, nullptr) != nullptr;
  } catch (const KELib::Throwable&) {
    return false;
  }
}

void Client::WatchElsewhere() {
  elsewhere = std::async(std::launch::async, [this] { return Watch(); });
}

long Client::FreeMilliseconds() {
  const auto begin = Clock::now();
  manager->FreeServiceInstance(instance);
  const auto took = Clock::now() - begin;
  instance = nullptr;
  if (elsewhere.valid()) elsewhere.get();
  return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count());
}

bool Belongings::operator==(const Belongings& other) const {
  return threads == other.threads && descriptors == other.descriptors && blocks == other.blocks;
}

Belongings CountBelongings() {
  Belongings now{EntriesOf("/proc/self/task"), EntriesOf("/proc/self/fd"), 0};
  now.blocks = torture::CountLiving().blocks;
  return now;
}

std::ostream& operator<<(std::ostream& out, const Belongings& belongings) {
  return out << belongings.threads << " threads, " << belongings.descriptors << " descriptors, "
             << belongings.blocks << " blocks";
}

}  // namespace shutdowntest
