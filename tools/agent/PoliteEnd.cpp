// SPDX-License-Identifier: MIT
#include "tools/agent/PoliteEnd.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace tools::agent {
namespace {

constexpr std::chrono::milliseconds PATIENCE(1500);

sigset_t EndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

// The only thread that takes the signals, and only while it waits for them: their handlers run
// here.
[[noreturn]] void AwaitEnd() {
  sigset_t others;
  pthread_sigmask(SIG_SETMASK, nullptr, &others);
  sigdelset(&others, SIGTERM);
  sigdelset(&others, SIGINT);
  sigsuspend(&others);  // NOLINT(concurrency-mt-unsafe): safe on Linux
  std::this_thread::sleep_for(PATIENCE);
  _exit(EXIT_SUCCESS);
}

}  // namespace

void EndPolitely() {
  sigset_t signals = EndingSignals();
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread(AwaitEnd).detach();
}

}  // namespace tools::agent
