// SPDX-License-Identifier: MIT
#include "endurance/Judgement.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace endurance {
namespace {

// An hour in which nothing is wrong, the memory up and down by a megabyte, and up by a hundred for
// the huge answers that come in its first half.
Record GoodRun() {
  Record run;
  for (int i = 0; i < 720; ++i) {
    const long kilobytes = i < 60 ? 9000 + i * 100 : 15000 + i % 2 * 1000;
    const long huge = i % 20 == 0 && i < 360 ? 100000 : 0;
    run.samples.push_back({i * 5.0, kilobytes + huge, 3 + i % 4, 2, i * 0.01});
  }
  run.warmUp = 300;
  run.before = {{0, 9000, 3, 2, 1.00}, {60, 9000, 3, 2, 1.02}};
  run.after = {{3600, 15000, 6, 2, 90.00}, {3660, 15000, 6, 2, 90.02}};
  run.faults = 900;
  run.logLines = 1800;
  run.endedEqual = true;
  run.exitStatus = 0;
  return run;
}

TEST(SoakJudgement, SeesEachBreach) {
  EXPECT_TRUE(Breaches(GoodRun()).empty());
  struct {
    const char* breach;
    void (*spoil)(Record&);
  } const cases[] = {
      {"caches differ", [](Record& run) { run.endedEqual = false; }},
      {"status 0", [](Record& run) { run.exitStatus = 139; }},
      {"memory grew",  // 2 kB every five seconds
       [](Record& run) {
         long grown = 0;
         for (auto& sample : run.samples) sample.residentKb += grown += 2;
       }},
      {"descriptors", [](Record& run) { run.after.end.descriptors = 7; }},
      {"threads", [](Record& run) { run.after.end.threads = 3; }},
      {"log lines", [](Record& run) { run.logLines = 900 * 4 + 51; }},
      {"at rest, end", [](Record& run) { run.after.end.cpuSeconds += 0.2; }},
      {"at rest, begin", [](Record& run) { run.before.end.cpuSeconds += 0.2; }},
  };
  for (const auto& c : cases) {
    Record run = GoodRun();
    c.spoil(run);
    const auto breaches = Breaches(run);
    ASSERT_EQ(breaches.size(), 1u) << c.breach;
    EXPECT_NE(breaches[0].find(c.breach), std::string::npos) << breaches[0];
  }
}

TEST(SoakJudgement, SamplesThisProcess) {
  int pipes[2];
  const ProcessSample before = SampleOf("/proc/self");
  ASSERT_EQ(pipe(pipes), 0);
  const ProcessSample after = SampleOf("/proc/self");
  close(pipes[0]);
  close(pipes[1]);
  EXPECT_EQ(after.descriptors, before.descriptors + 2);
  EXPECT_GE(after.threads, 1);
  EXPECT_GT(after.residentKb, 500);
  EXPECT_GE(after.cpuSeconds, before.cpuSeconds);
}

}  // namespace
}  // namespace endurance
