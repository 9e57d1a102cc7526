// SPDX-License-Identifier: MIT
//
// The tool's two ways to show an inventory: once, and following its changes.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYRUN_H
#define KECPP_TOOLS_INVENTORY_INVENTORYRUN_H

#include <kecpp/inventory.h>

#include <chrono>
#include <vector>

#include "tools/common/EndOfRun.h"
#include "tools/inventory/LossReport.h"
#include "tools/inventory/Model.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/View.h"

namespace tools::inventory {

// Waits for the first data of an inventory that is made in the background. Throws kecpp::Error when
// the first attempt fails and when the run ends before.
void AwaitFirstData(const kecpp::Inventory& inventory, const EndOfRun& end);

class InventoryRun {
 public:
  // Connects. The arguments outlive the run. Throws kecpp::Error.
  InventoryRun(const Options& options, const EndOfRun& end);

  // Shows the inventory: at once when it is followed, otherwise when nothing changed for the settle
  // time. An inventory that still changes after a minute is shown as it is, with a line on standard
  // error.
  void ShowOnce();

  // Goes on after ShowOnce: shows every change until the end of the run. A lost session or daemon
  // is reported on standard error.
  void Follow();

 private:
  void ReadUntilSettled();
  bool TakeChanges(std::chrono::milliseconds limit);
  void Show(const std::vector<kecpp::Change>& changes);
  void ReportState();

  const Options& options;
  const EndOfRun& end;
  View view;
  Model model;  // empty when events are printed
  const kecpp::Inventory inventory;
  kecpp::Follower follower;
  std::vector<kecpp::Change> changes;  // the last ones
  LossReport loss{"connection"};
};

}  // namespace tools::inventory

#endif
