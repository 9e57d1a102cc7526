// SPDX-License-Identifier: MIT
//
// The tool's two ways to show an inventory: once, and following its changes.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYRUN_H
#define KECPP_TOOLS_INVENTORY_INVENTORYRUN_H

#include <memory>

#include "tools/common/DaemonConnection.h"
#include "tools/common/EndOfRun.h"
#include "tools/common/InventoryCopy.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/View.h"

namespace tools::inventory {

class InventoryRun {
 public:
  // The arguments outlive the run.
  InventoryRun(KE::Service::KEServiceInstManager& manager, const Options& options,
               const EndOfRun& end);

  // Connects and shows the inventory: at once when it is followed, otherwise when nothing changed
  // for the settle time. An inventory that still changes after a minute is shown as it is, with a
  // line on standard error. Throws ConnectionError.
  void ShowOnce();

  // Goes on after ShowOnce: shows every change until the end of the run. A lost session or daemon
  // is reported on standard error and a new connection is made, again and again if need be.
  void Follow();

 private:
  void Connect();
  void Settle();
  void ReadAndShow();
  void ShowNextChange();
  void Reconnect(const std::string& reason);

  KE::Service::KEServiceInstManager& manager;
  const Options& options;
  const EndOfRun& end;
  View view;
  std::unique_ptr<DaemonConnection> connection;
  unsigned long long seen = 0;  // changes of this connection that were shown
};

}  // namespace tools::inventory

#endif
