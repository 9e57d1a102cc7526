// SPDX-License-Identifier: MIT
//
// Prints the inventory on standard output, each time it looks different from the last time.
#ifndef KECPP_TOOLS_INVENTORY_VIEW_H
#define KECPP_TOOLS_INVENTORY_VIEW_H

#include <cstddef>
#include <string>

#include "tools/inventory/Model.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/TextTable.h"

namespace tools::inventory {

class View {
 public:
  explicit View(const Options& options);

  // Shows a line of JSON, or tables.
  void Show(const Model& inventory);

  // Prints the text, which ends with a line feed, unless it is the same as the last time. On a
  // terminal tables fit its width. When they are followed on a terminal that takes commands, they
  // replace the last ones and fit its height; otherwise an empty line separates them. Throws
  // std::runtime_error when standard output does not take the text.
  void ShowText(std::string text);

  // Prints lines as they are. Throws as ShowText.
  static void ShowLines(const std::string& lines);

  // What so many tables may take, each.
  TableRoom Room(std::size_t tables) const;
  bool Redraws() const { return redraws; }

 private:
  const Options& options;
  const bool redraws;
  bool shown = false;
  std::string last;
};

}  // namespace tools::inventory

#endif
