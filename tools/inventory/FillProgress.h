// SPDX-License-Identifier: MIT
//
// A line on the terminal that shows how far the first fill is.
#ifndef KECPP_TOOLS_INVENTORY_FILLPROGRESS_H
#define KECPP_TOOLS_INVENTORY_FILLPROGRESS_H

#include <kecpp/inventory.h>

#include <chrono>

namespace tools::inventory {

// Shows nothing when standard error is no terminal that takes commands. The destructor wipes the
// line.
class FillProgress {
 public:
  FillProgress();
  ~FillProgress();
  FillProgress(const FillProgress&) = delete;
  FillProgress& operator=(const FillProgress&) = delete;

  void Show(const kecpp::Inventory& inventory);

 private:
  const bool isShown;
  const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

}  // namespace tools::inventory

#endif
