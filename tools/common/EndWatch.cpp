// SPDX-License-Identifier: MIT
#include "tools/common/EndWatch.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int SLICE_MS = 100;
constexpr std::chrono::seconds PATIENCE(5);

}  // namespace

EndWatch::EndWatch(const EndOfRun& endOfRun, const char* programName,
                   std::function<void()> releaseMaker)
    : end(endOfRun),
      program(programName),
      release(std::move(releaseMaker)),
      thread(&EndWatch::Watch, this) {}

EndWatch::~EndWatch() {
  {
    std::lock_guard<std::mutex> guard(mutex);
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
  const auto limit = Clock::now() + PATIENCE;
  do {
    if (Clock::now() > limit) GiveUp();
    lock.unlock();
    release();
    lock.lock();
  } while (!changed.wait_for(lock, std::chrono::milliseconds(SLICE_MS), isDone));
}

void EndWatch::GiveUp() const {
  std::fprintf(stderr, "%s: ended while it was waiting for the system\n", program);
  _exit(EXIT_FAILURE);
}

}  // namespace tools
