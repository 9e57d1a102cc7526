// SPDX-License-Identifier: MIT
#include "soak/Faults.h"

#include <stdexcept>

namespace soak {
namespace {

// A control of the daemon and the order for it. The time-outs of the configuration are longer than
// the delays.
struct Order {
  const char* control;
  const char* body;
};

constexpr Order ORDERS[] = {
    {"session-lost", "{}"},
    {"restart", R"({"pid":4712})"},
    {"fault", R"({"kind":"refuse","delayMs":2500})"},
    {"fault", R"({"kind":"refuse","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"close-before"})"},
    {"fault", R"({"kind":"close-before","count":5})"},
    {"fault", R"({"kind":"lost-reply"})"},
    {"fault", R"({"kind":"lost-reply","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"close-middle","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"close-middle","method":"RetrieveAllPermissions"})"},
    {"fault", R"({"kind":"truncate","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"truncate","method":"RetrieveAllPermissions"})"},
    {"fault", R"({"kind":"truncate-wrong-length"})"},
    {"fault", R"({"kind":"malformed-set","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"garbage"})"},
    {"fault", R"({"kind":"garbage","count":8})"},
    {"fault", R"({"kind":"empty"})"},
    {"fault", R"({"kind":"http500"})"},
    {"fault", R"({"kind":"wrong-prefix"})"},
    {"fault", R"({"kind":"no-body"})"},
    {"fault", R"({"kind":"soap-fault","fault":"InvalidRequest"})"},
    {"fault", R"({"kind":"soap-fault","fault":"RequestCanceled","method":"WaitForUpdates"})"},
    {"fault", R"({"kind":"soap-fault","fault":"NotAuthenticated","count":4})"},
    {"fault", R"({"kind":"soap-fault-no-detail"})"},
    {"fault", R"({"kind":"drip","delayMs":1,"method":"RetrieveAllPermissions"})"},
    {"fault", R"({"kind":"hang","delayMs":3000})"},
    {"fault", R"({"kind":"huge"})"},
};

std::string NameOf(const Order& order) {
  const auto body = endtoend::Json::parse(order.body);
  return body.value("kind", std::string(order.control));
}

}  // namespace

void Faults::OrderOne() {
  const Order& order = ORDERS[random() % (sizeof ORDERS / sizeof ORDERS[0])];
  Control(order.control, endtoend::Json::parse(order.body));
  ++ordered[NameOf(order)];
}

void Faults::Control(const std::string& name, const endtoend::Json& body) {
  std::string reason;
  const bool heard = endtoend::Eventually([&] {
    try {
      simulator.Control(name, body);
      return true;
    } catch (const std::runtime_error& error) {
      reason = error.what();
      return false;
    }
  });
  if (!heard) throw std::runtime_error(reason);
}

unsigned Faults::Total() const {
  unsigned total = 0;
  for (const auto& kind : ordered) total += kind.second;
  return total;
}

}  // namespace soak
