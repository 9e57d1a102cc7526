// SPDX-License-Identifier: MIT
//
// What the program says on standard error of what goes wrong while it shows something.
//
// Thread safety: one thread.
#ifndef KECPP_TOOLS_INVENTORY_LOSSREPORT_H
#define KECPP_TOOLS_INVENTORY_LOSSREPORT_H

#include <string>

namespace tools::inventory {

// One line, with the program's name.
void Report(const std::string& text);

// Says once that a connection is lost, and then each other reason why it cannot be made again.
class LossReport {
 public:
  // `lost` names it, such as "connection"; the text outlives the object.
  explicit LossReport(const char* lost) : what(lost) {}

  // `reason` is empty while there is a connection.
  void Look(bool isLost, const std::string& reason);

 private:
  const char* what;
  std::string reported;
};

}  // namespace tools::inventory

#endif
