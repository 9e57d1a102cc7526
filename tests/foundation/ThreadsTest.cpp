// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <syslog.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/KECondition.h"
#include "foundation/KEMutex.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KEQuietCondition.h"
#include "foundation/KEThread.h"
#include "foundation/KEWaiter.h"
#include "support/CapturedLog.h"

namespace KELib {
namespace {

TEST(KEMutexGuardTest, LeavesAloneWhatTheThreadHolds) {
  KEMutex mutex;
  KEMutexGuard outer(&mutex);
  { KEMutexGuard inner(&mutex), nothing(nullptr); }
  EXPECT_TRUE(mutex.IsLocked());
  EXPECT_FALSE(std::async(std::launch::async, [&mutex] { return mutex.IsLocked(); }).get());
  outer.Release();
  EXPECT_FALSE(mutex.IsLocked());
}

// Holds of all lengths, so that threads find it free, look again, lose their patience and sleep.
TEST(KEMutexTest, OneThreadAtATimeHoldsItAndTheOthersComeToTheirTurns) {
  constexpr unsigned int turns = 200;
  KEMutex mutex;
  unsigned int sum = 0;
  std::atomic<bool> ready{false};
  const auto take = [&](unsigned int microseconds) {
    while (!ready) continue;
    for (unsigned int i = 0; i < turns; ++i) {
      KEMutexGuard guard(&mutex);
      const unsigned int before = sum;
      std::this_thread::sleep_for(std::chrono::microseconds(i % 10 == 0 ? microseconds : 0));
      sum = before + (mutex.IsLocked() ? 1 : 0);
    }
  };
  std::vector<std::thread> threads;
  for (const unsigned int microseconds : {0, 1, 10, 100}) threads.emplace_back(take, microseconds);
  ready = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(4 * turns, sum);
  EXPECT_FALSE(mutex.IsLocked());
}

TEST(KEConditionTest, ATimedWaitEndsReturnsZeroAndLogs) {
  CapturedLog::Clear();
  const std::unique_ptr<KECondition> condition(CreateKECondition());
  KEMutex mutex;
  mutex.Lock();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(0, condition->Wait(&mutex, 30));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(29));
  EXPECT_TRUE(mutex.IsLocked());
  // 4294968 * 1000 wraps to 704, less than a millisecond; 2147484 * 1000 to a time in the past.
  EXPECT_EQ(0, condition->Wait(&mutex, 4294968));
  EXPECT_EQ(0, condition->Wait(&mutex, 2147484));
  mutex.Unlock();
  const auto lines = CapturedLog::Lines();
  ASSERT_EQ(3u, lines.size());
  EXPECT_EQ(LOG_ERR, lines[0].priority);
  EXPECT_EQ("Failed timed wait!", lines[0].text);
}

// Waits in another thread until `flag` is set under the mutex; the wait must give the mutex up.
void ExpectHandshake(const std::function<void(KEMutex&)>& waitOnce,
                     const std::function<void()>& wakeUp) {
  KEMutex mutex;
  bool waiting = false, flag = false, ownerAfterWait = false;
  std::thread waiter([&] {
    KEMutexGuard guard(&mutex);
    waiting = true;
    while (!flag) {
      waitOnce(mutex);
      ownerAfterWait = mutex.IsLocked();
    }
  });
  for (bool signalled = false; !signalled;) {
    KEMutexGuard guard(&mutex);
    if (!waiting) continue;
    flag = signalled = true;
    wakeUp();
  }
  waiter.join();
  EXPECT_TRUE(ownerAfterWait);
}

TEST(KEConditionTest, ASignalEndsAnUnboundedWaitSilently) {
  CapturedLog::Clear();
  const std::unique_ptr<KECondition> condition(CreateKECondition());
  ExpectHandshake([&](KEMutex& mutex) { condition->Wait(&mutex, 0); },
                  [&] { condition->Signal(); });
  EXPECT_TRUE(CapturedLog::Lines().empty());
  ExpectHandshake([&](KEMutex& mutex) { condition->Wait(&mutex, 600000); },
                  [&] { condition->Signal(); });
}

TEST(KEQuietConditionTest, TellsWakeUpFromTimeOutAndLogsNothing) {
  CapturedLog::Clear();
  KEQuietCondition condition;
  ExpectHandshake([&](KEMutex& mutex) { EXPECT_TRUE(condition.Wait(mutex, -1)); },
                  [&] { condition.Signal(); });
  ExpectHandshake([&](KEMutex& mutex) { EXPECT_TRUE(condition.Wait(mutex, LLONG_MAX)); },
                  [&] { condition.Broadcast(); });
  KEMutex mutex;
  KEMutexGuard guard(&mutex);
  while (condition.Wait(mutex, 1)) {
  }
  EXPECT_TRUE(mutex.IsLocked());
  EXPECT_TRUE(CapturedLog::Lines().empty());
}

TEST(KEWaiterTest, ASignalSticksAndMayComeFromAnyThread) {
  std::unique_ptr<KEWaiter> waiter(CreateKEWaiter());
  EXPECT_FALSE(waiter->Wait(5));
  for (int milliseconds : {0, -1, 600000}) {
    waiter.reset(CreateKEWaiter());
    std::thread signaller([&waiter] { waiter->Signal(); });
    EXPECT_TRUE(waiter->Wait(milliseconds));
    signaller.join();
    EXPECT_TRUE(waiter->Wait(1));
  }
}

struct ReportingWork : KEWork {
  ~ReportingWork() override { died.set_value(returnCode); }
  void Execute() override {
    returnCode = WORK_RET_SUCCESS;
    ran.set_value(pthread_self());  // throws, and so ends the process, when called twice
  }
  std::promise<pthread_t> ran;
  std::promise<int> died;
};

TEST(KEThreadTest, RunsItsWorkOnceOnAnotherThreadAndDeletesItOrItsCreatorDoes) {
  auto *const work = new ReportingWork, *const idle = new ReportingWork;
  auto ran = work->ran.get_future();
  auto died = work->died.get_future(), idleDied = idle->died.get_future();
  CreateKEThread(work)->Start();
  EXPECT_NE(pthread_self(), ran.get());
  EXPECT_EQ(WORK_RET_SUCCESS, died.get());
  delete CreateKEThread(idle);
  EXPECT_EQ(WORK_RET_UNEXECUTED, idleDied.get());
}

}  // namespace
}  // namespace KELib
