// SPDX-License-Identifier: MIT
#include "tools/inventory/FillProgress.h"

#include <unistd.h>

#include <cstdio>

#include "tools/common/Terminal.h"

namespace tools::inventory {

FillProgress::FillProgress() : isShown(TakesCommands(STDERR_FILENO)) {}

FillProgress::~FillProgress() {
  if (isShown) std::fputs("\r\033[K", stderr);
}

void FillProgress::Show(const kecpp::Inventory& inventory) {
  if (!isShown) return;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  std::fprintf(stderr, "\r\033[Kreading the inventory: %zu machines, %.1f s",
               inventory.Count(kecpp::Kind::machine), passed.count());
}

}  // namespace tools::inventory
