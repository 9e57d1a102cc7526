// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryRun.h"

#include <chrono>
#include <iostream>
#include <thread>

#include "tools/common/CacheReader.h"
#include "tools/common/ProcessEnd.h"
#include "tools/inventory/FillProgress.h"

namespace tools::inventory {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int WAIT_SLICE_MS = 200;
constexpr int RECONNECT_PAUSE_MS = 1000;
constexpr std::chrono::seconds SETTLE_LIMIT(60);

}  // namespace

InventoryRun::InventoryRun(KE::Service::KEServiceInstManager& serviceManager, const Options& opts,
                           const EndOfRun& endOfRun)
    : manager(serviceManager), options(opts), end(endOfRun), view(opts) {}

void InventoryRun::ShowOnce() {
  Connect();
  if (!options.follow) Settle();  // what comes later is shown as it comes
  ReadAndShow();
  NoteInventoryRead();
}

void InventoryRun::Follow() {
  std::string reason;
  while (!end.Ended()) {
    if (connection->IsLost(reason)) {
      Reconnect(reason);
    } else {
      ShowNextChange();
    }
  }
}

void InventoryRun::Connect() {
  seen = 0;
  connection = std::make_unique<DaemonConnection>(manager, NeedsOf(options), end);
  FillProgress progress(connection->Cache());
  connection->Watch(end);
}

void InventoryRun::Settle() {
  const auto limit = Clock::now() + SETTLE_LIMIT;
  while (connection->Sync().WaitForChange(seen, options.settle)) {
    if (end.Ended() || Clock::now() > limit) {
      std::cerr << PROGRAM << ": the inventory still changes; it is shown as it is now\n";
      return;
    }
  }
}

void InventoryRun::ReadAndShow() {
  view.Show(ReadInventory(connection->Cache(), options.lists));
}

void InventoryRun::ShowNextChange() {
  if (connection->Sync().WaitForChange(seen, end.Slice(WAIT_SLICE_MS))) ReadAndShow();
}

void InventoryRun::Reconnect(const std::string& reason) {
  std::cerr << PROGRAM << ": connection lost (" << reason << "), connecting again\n";
  connection.reset();
  std::string reported;
  while (!end.Ended()) {
    try {
      Connect();
      ReadAndShow();
      return;
    } catch (const ConnectionError& error) {
      connection.reset();
      if (reported != error.what() && !end.Ended())
        std::cerr << PROGRAM << ": " << error.what() << '\n';
      reported = error.what();
      std::this_thread::sleep_for(std::chrono::milliseconds(end.Slice(RECONNECT_PAUSE_MS)));
    }
  }
}

}  // namespace tools::inventory
