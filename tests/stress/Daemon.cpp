// SPDX-License-Identifier: MIT
#include "stress/Daemon.h"

#include <chrono>

namespace stress {
namespace {

using endtoend::Json;

struct Order {
  const char* control;
  const char* body;
};

constexpr Order ORDERS[] = {
    {"churn", R"({"rate":50})"},
    {"fault", R"({"method":"WaitForUpdates","kind":"lost-reply"})"},
    {"churn", R"({"rate":400})"},
    {"fault", R"({"method":"WaitForUpdates","kind":"soap-fault","fault":"RequestCanceled"})"},
    {"fault", R"({"method":"WaitForUpdates","kind":"malformed-set"})"},
    {"churn", R"({"rate":5})"},
    {"fault", R"({"method":"WaitForUpdates","kind":"truncate"})"},
    {"churn", R"({"rate":1000})"},
    {"fault", R"({"method":"WaitForUpdates","kind":"close-middle"})"},
};

using Lock = std::lock_guard<std::mutex>;

}  // namespace

Daemon::Daemon(Board& where, Tally& counts)
    : board(where),
      tally(counts),
      simulator({"--hosts", "4", "--machines", "40"}),
      thread([this] { Run(); }) {}

Daemon::~Daemon() {
  stop = true;
  thread.join();
}

void Daemon::Calm() {
  const Lock lock(mutex);
  calm = true;
  simulator.Control("churn", {{"rate", 0}});
  simulator.Control("fault", {{"kind", "clear"}});
}

void Daemon::Rave() {
  const Lock lock(mutex);
  calm = false;
}

void Daemon::Run() {
  Seat seat(board, "daemon");
  for (unsigned turn = 0; !stop; ++turn) {
    Act(seat, turn);
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
  }
}

void Daemon::Act(Seat& seat, unsigned turn) {
  seat.Does("orders a change");
  const Lock lock(mutex);
  if (calm) return;
  const Order& order = ORDERS[turn % (sizeof ORDERS / sizeof ORDERS[0])];
  simulator.Control(order.control, Json::parse(order.body));
  tally.Count("orders to the daemon");
}

}  // namespace stress
