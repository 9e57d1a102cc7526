// SPDX-License-Identifier: MIT
#include "tools/publish/FirstProgress.h"

#include <unistd.h>

#include <cstdio>

#include "tools/common/Terminal.h"

namespace tools::publish {

FirstProgress::FirstProgress() : isTerminal(TakesCommands(STDERR_FILENO)) {}

void FirstProgress::Show(const Counters& counters, const Marks& marks) {
  if (isOver) return;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  const auto objects = static_cast<unsigned long long>(counters.objects);
  const auto written = static_cast<unsigned long long>(counters.put + counters.removed);
  isOver = counters.agreements > 0;
  if (isOver) {
    std::fprintf(stderr, "%skecpp-publish: published: %llu objects, %llu written, %.1f s\n",
                 isTerminal ? "\r\033[K" : "", objects, written, passed.count());
  } else if (isTerminal) {
    std::fprintf(stderr, "\r\033[Kpublishing: %llu written, %zu to look at, %.1f s", written,
                 marks.Size(), passed.count());
  }
}

}  // namespace tools::publish
