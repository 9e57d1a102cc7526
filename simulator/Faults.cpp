// SPDX-License-Identifier: MIT
#include "simulator/Faults.h"

#include <map>

namespace sim {

namespace {

// Whether a call that goes wrong in this way is carried out all the same.
const std::map<std::string, bool>& Kinds() {
  static const auto& kinds = *new std::map<std::string, bool>{
      {"refuse", false},       {"close-before", false}, {"hang", false},
      {"garbage", false},      {"empty", false},        {"http500", false},
      {"soap-fault", false},   {"huge", false},         {"soap-fault-no-detail", false},
      {"lost-reply", true},    {"close-middle", true},  {"truncate-wrong-length", true},
      {"truncate", true},      {"wrong-prefix", true},  {"no-body", true},
      {"malformed-set", true}, {"drip", true},          {"session-lost", true},
      {"restart", false},      {"pid-gone", false}};
  return kinds;
}

}  // namespace

bool Faults::IsKnown(const std::string& kind) {
  return Kinds().count(kind) > 0;
}

bool Faults::CarriesOut(const std::string& kind) {
  return Kinds().at(kind);
}

void Faults::Order(const FaultOrder& order) {
  const std::lock_guard<std::mutex> lock(mutex);
  orders.push_back(order);
}

void Faults::Clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  orders.clear();
}

bool Faults::Take(const std::string& method, FaultOrder& order) {
  const std::lock_guard<std::mutex> lock(mutex);
  for (auto it = orders.begin(); it != orders.end(); ++it) {
    if (it->method != "*" && it->method != method) continue;
    order = *it;
    if (--it->count == 0) orders.erase(it);
    return true;
  }
  return false;
}

}  // namespace sim
