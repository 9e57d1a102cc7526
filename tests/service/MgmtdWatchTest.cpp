// SPDX-License-Identifier: MIT
#include "service/call/MgmtdWatch.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "service/call/MgmtdWatchSeams.h"
#include "support/CapturedLog.h"

namespace KE::Service {
namespace {

std::string path;
std::string duringPause;  // what the file holds after the pause; empty: no change
std::string happened;     // in order

void NotePause(long long amount) {
  happened += "pause " + std::to_string(amount) + ",";
  if (!duringPause.empty()) std::ofstream(path) << duringPause;
}

// A pause that a stop ends.
class StoppedPause : public MgmtdPause {
 public:
  bool Pause(int milliseconds) override {
    NotePause(milliseconds);
    return false;
  }
  void BeforeExit() override { happened += "last word,"; }
};

class MgmtdWatchTest : public testing::Test {
 protected:
  MgmtdWatchTest() {
    path = testing::TempDir() + "kecpp-pid-" + std::to_string(getpid());
    duringPause.clear();
    CapturedLog::Clear();
    ResetMgmtdWatch();
    GetMgmtdWatchSeams() = {path.c_str(), [](unsigned int amount) { NotePause(amount); },
                            [](int status) { happened += "exit " + std::to_string(status) + ","; }};
  }
  ~MgmtdWatchTest() override {
    ResetMgmtdWatch();
    std::remove(path.c_str());
  }

  static std::string Check() {
    happened.clear();
    CheckMgmtdAndExit();
    return happened;
  }
};

TEST_F(MgmtdWatchTest, ComparesBeforeAndAfterThePause) {
  EXPECT_EQ("", Check());  // no file: nothing to remember yet
  std::ofstream(path) << "1234\n";
  EXPECT_EQ("", Check());
  EXPECT_EQ("pause 10000000,", Check());
  duringPause = "1240\n";
  EXPECT_EQ("pause 10000000,exit 0,", Check());
  EXPECT_EQ("exit 0,", Check());
  EXPECT_EQ(2u, CapturedLog::Count("KECimProvider Exiting on Mgmtd restart!!"));
  std::ofstream(path) << "1234";  // without its line feed it is another text
  EXPECT_EQ("exit 0,", Check());
  std::remove(path.c_str());
  EXPECT_EQ("exit 0,", Check());
}

TEST_F(MgmtdWatchTest, AStopEndsTheCheckInThePause) {
  std::ofstream(path) << "1";
  Check();
  duringPause = "2";
  StoppedPause pause;
  CheckMgmtd(pause);
  EXPECT_EQ("pause 10000,", happened);
  CheckMgmtd(pause);
  EXPECT_EQ("pause 10000,last word,exit 0,", happened);
}

}  // namespace
}  // namespace KE::Service
