// SPDX-License-Identifier: MIT
//
// Each in its own process, a few side by side: most of their time is time-outs.
#ifndef KECPP_TESTS_FAULTS_LIVES_H
#define KECPP_TESTS_FAULTS_LIVES_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace faults {

struct Life {
  std::string name;
  bool endsTheProcess;  // as the library does, with status 0
  std::function<void()> live;
};

constexpr int kLived = 3;  // unlike what the library ends a process with

[[noreturn]] inline void LiveAndExit(const Life& life) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The library ends the process while the life goes on: nothing that it uses is destroyed then.
  on_exit(
      [](int status, void*) {
        if (status == EXIT_SUCCESS) _exit(status);
      },
      nullptr);
  try {
    life.live();
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
  std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : kLived);
}

inline void LiveAll(const std::vector<Life>& lives, std::size_t atOnce = 4) {
  std::map<pid_t, const Life*> running;
  std::vector<std::string> failed;  // reported at the end: the processes would inherit a failure
  const auto awaitOne = [&] {
    int status = 0;
    const auto ended = running.find(wait(&status));
    const Life& life = *ended->second;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != (life.endsTheProcess ? 0 : kLived)) {
      failed.push_back(life.name + ": status " + std::to_string(status));
    }
    running.erase(ended);
  };
  for (const Life& life : lives) {
    if (running.size() == atOnce) awaitOne();
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) LiveAndExit(life);
    ASSERT_GT(pid, 0);
    running[pid] = &life;
  }
  while (!running.empty()) awaitOne();
  EXPECT_THAT(failed, testing::IsEmpty());
}

}  // namespace faults

#endif
