// SPDX-License-Identifier: MIT
#include "tools/inventory/FillProgress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "tools/common/CacheReader.h"
#include "tools/common/Terminal.h"

namespace tools::inventory {

FillProgress::FillProgress(KE::Instance::KETypeCache& typeCache) : cache(typeCache) {
  if (TakesCommands(STDERR_FILENO)) thread = std::thread(&FillProgress::Show, this);
}

FillProgress::~FillProgress() {
  if (!thread.joinable()) return;
  {
    std::lock_guard<std::mutex> guard(mutex);
    done = true;
  }
  ended.notify_one();
  thread.join();
  std::fputs("\r\033[K", stderr);
}

void FillProgress::Show() {
  const auto begin = std::chrono::steady_clock::now();
  std::unique_lock<std::mutex> lock(mutex);
  while (!ended.wait_for(lock, std::chrono::milliseconds(200), [this] { return done; })) {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    std::fprintf(stderr, "\r\033[Kreading the inventory: %u machines, %.1f s", CountMachines(cache),
                 passed.count());
  }
}

}  // namespace tools::inventory
