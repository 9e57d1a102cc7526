// SPDX-License-Identifier: MIT
#include "tools/agent/HangUp.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace tools::agent {

HangUp::HangUp(std::function<void()> readAgain)
    : again(std::move(readAgain)), thread([this] { Await(); }) {}

HangUp::~HangUp() {
  ended = true;
  pthread_kill(thread.native_handle(), SIGHUP);
  thread.join();
}

void HangUp::Await() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGHUP);
  for (int signal = 0; sigwait(&signals, &signal) == 0 && !ended;) again();
}

}  // namespace tools::agent
