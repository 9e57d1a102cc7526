// SPDX-License-Identifier: MIT
#include "tools/publish/Trouble.h"

#include <cstdio>
#include <iostream>

#include "tools/common/CellText.h"

namespace tools::publish {

// While a cluster elects a leader the reasons alternate.
void Trouble::Begin(const std::string& reason) {
  constexpr std::chrono::minutes kSameTrouble(1);
  const auto now = Clock::now();
  if (IsThere() && (reason == text || now - said < kSameTrouble)) return;
  if (!IsThere()) since = now;
  text = reason;
  said = now;
  std::cerr << "kecpp-publish: cluster: " + Printable(reason) + "; trying again\n";
}

void Trouble::End() {
  if (!IsThere()) return;
  const std::chrono::duration<double> lasted = Clock::now() - since;
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.1f", lasted.count());
  std::cerr << std::string("kecpp-publish: cluster: publishing again after ") + seconds + " s\n";
  text.clear();
}

}  // namespace tools::publish
