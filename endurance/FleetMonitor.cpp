// SPDX-License-Identifier: MIT
#include "endurance/FleetMonitor.h"

#include <chrono>

#include "fleet/Base64.h"
#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "simulator/driver/ChildProcess.h"

namespace endurance {

using namespace kecpp::fleet;

FleetMonitor::FleetMonitor(const EtcdOptions& options)
    : client(options), thread([this] { Run(); }) {}

FleetMonitor::~FleetMonitor() {
  isEnding = true;
  client.Cut();
  thread.join();
}

bool FleetMonitor::HasSeen(std::int64_t revision) const {
  return driver::Eventually([&] { return seen >= revision; });
}

std::string FleetMonitor::Wrong() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return wrong;
}

void FleetMonitor::ExpectRemoval(const std::string& key) {
  const std::lock_guard<std::mutex> lock(mutex);
  mayGo.insert(key);
}

void FleetMonitor::Run() {
  while (!isEnding) {
    try {
      ++streams;
      // All keys: every revision comes by.
      client.Stream("watch",
                    R"({"create_request":{"key":"AA==","range_end":"AA==","start_revision":")" +
                        std::to_string(seen + 1) + "\"}}",
                    std::chrono::seconds(5),
                    [this](const nlohmann::json& line) { return Take(line); });
    } catch (const EtcdError&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

bool FleetMonitor::Take(const nlohmann::json& line) {
  const auto found = line.find("events");
  if (found == line.end()) return !line.contains("canceled");
  for (const nlohmann::json& event : *found) {
    ++events;
    Judge(event);
  }
  // A transaction is never divided between two lines.
  seen = ReadKeyValue(found->back()["kv"]).revision;
  return !isEnding;
}

void FleetMonitor::Judge(const nlohmann::json& event) {
  const KeyValue entry = ReadKeyValue(event["kv"]);
  const auto name = ParseObjectKey(entry.key);
  if (name && event.contains("type")) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (mayGo.count(entry.key) == 0) wrong += entry.key + " was removed, though it is there\n";
  }
  if (!name || name->object.kind != kecpp::Kind::machine || event.contains("type")) return;
  const auto object = ReadObject(kecpp::Kind::machine, name->object.key, entry.value);
  const std::string text = object ? std::get<kecpp::Machine>(*object).name : "?";
  if (text.compare(0, 2, "n-") != 0) return;
  const unsigned long long number = std::stoull(text.substr(2));
  unsigned long long& last = numbers[entry.key];
  if (number < last) {
    const std::lock_guard<std::mutex> lock(mutex);
    wrong += entry.key + ": " + NameOf(last) + " was followed by " + text + " at revision " +
             std::to_string(entry.revision) + '\n';
  }
  last = number;
}

}  // namespace endurance
