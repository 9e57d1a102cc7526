// SPDX-License-Identifier: MIT
//
// Prints the inventory on standard output, each time it looks different from the last time.
#ifndef KECPP_TOOLS_INVENTORY_VIEW_H
#define KECPP_TOOLS_INVENTORY_VIEW_H

#include <string>

#include "tools/inventory/Model.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {

class View {
 public:
  explicit View(const Options& options);

  // Prints a line of JSON, or tables, unless it would look the same as the last time. On a terminal
  // tables fit its width. When they are followed on a terminal that takes commands, they replace
  // the last ones and fit its height; otherwise an empty line separates them. Throws
  // std::runtime_error when standard output does not take the text.
  void Show(const Model& inventory);

  // Prints these changes of the lists that are shown, a line each. Throws as Show.
  void ShowEvents(const std::vector<kecpp::Change>& changes, const kecpp::Inventory& inventory);

 private:
  std::string Render(const Model& inventory) const;

  const Options& options;
  const bool redraws;
  bool shown = false;
  std::string last;
};

}  // namespace tools::inventory

#endif
