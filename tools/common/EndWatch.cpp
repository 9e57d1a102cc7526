// SPDX-License-Identifier: MIT
#include "tools/common/EndWatch.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace tools {
namespace {

constexpr int SLICE_MS = 100;
constexpr std::chrono::seconds PATIENCE(5);

}  // namespace

EndWatch::EndWatch(const EndOfRun& endOfRun, const char* programName)
    : end(endOfRun), program(programName), thread(&EndWatch::Watch, this) {}

EndWatch::~EndWatch() {
  {
    const std::lock_guard<std::mutex> guard(mutex);
    done = true;
  }
  changed.notify_one();
  thread.join();
}

void EndWatch::Watch() {
  std::unique_lock<std::mutex> lock(mutex);
  const auto isDone = [this] { return done; };
  while (!end.Ended()) {
    if (changed.wait_for(lock, std::chrono::milliseconds(end.Slice(SLICE_MS)), isDone)) return;
  }
  if (changed.wait_for(lock, PATIENCE, isDone)) return;
  std::fprintf(stderr, "%s: ended while it was waiting for the system\n", program);
  _exit(EXIT_FAILURE);
}

}  // namespace tools
