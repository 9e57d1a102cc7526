// SPDX-License-Identifier: MIT
#include "tools/inventory/LossReport.h"

#include <iostream>

#include "tools/common/CellText.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {

void Report(const std::string& text) {
  std::cerr << PROGRAM << ": " << Printable(text) << '\n';
}

void LossReport::Look(bool isLost, const std::string& reason) {
  if (reason == reported) return;
  if (isLost) {
    Report(reported.empty() ? std::string(what) + " lost (" + reason + "), connecting again"
                            : reason);
  }
  reported = reason;
}

}  // namespace tools::inventory
