// SPDX-License-Identifier: MIT
#include "service/call/MgmtdWatch.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "service/call/MgmtdWatchSeams.h"
#include "tests/support/CapturedLog.h"

namespace KE::Service {
namespace {

const char* const kRestarted = "KECimProvider Exiting on Mgmtd restart!!";

std::string path;
std::string duringPause;             // what the file holds after the pause; empty: no change
std::vector<std::string> happened;   // in order

void Store(const std::string& text) { std::ofstream(path) << text; }

void NotePause(const std::string& amount) {
  happened.push_back("pause " + amount);
  if (!duringPause.empty()) Store(duringPause);
}

// A pause that a stop ends.
class StoppablePause : public MgmtdPause {
 public:
  bool Pause(int milliseconds) override {
    NotePause(std::to_string(milliseconds));
    return !stop;
  }
  void BeforeExit() override { happened.push_back("before exit"); }
  bool stop = false;
};

class MgmtdWatchTest : public testing::Test {
 protected:
  MgmtdWatchTest() {
    path = testing::TempDir() + "kecpp-pid-" + std::to_string(getpid());
    std::remove(path.c_str());
    happened.clear();
    duringPause.clear();
    CapturedLog::Clear();
    ResetMgmtdWatch();
    MgmtdWatchSeams& seams = GetMgmtdWatchSeams();
    seams.pidFile = path.c_str();
    seams.sleepMicroseconds = [](unsigned int amount) { NotePause(std::to_string(amount)); };
    seams.exitProcess = [](int status) {
      happened.push_back("exit " + std::to_string(status));
    };
  }
  ~MgmtdWatchTest() override {
    ResetMgmtdWatch();
    std::remove(path.c_str());
  }

  // What a check does, with everything that happened.
  static std::vector<std::string> Check() {
    happened.clear();
    CheckMgmtdAndExit();
    return happened;
  }
  using Events = std::vector<std::string>;
};

TEST_F(MgmtdWatchTest, ComparesBeforeAndAfterThePause) {
  EXPECT_STREQ("/var/run/zorbel/zorbel-mgmtd.PID", MgmtdPIDFileName);
  EXPECT_EQ(Events(), Check());  // no file: nothing to remember yet
  Store("1234\n");
  EXPECT_EQ(Events(), Check());
  EXPECT_EQ(Events({"pause 10000000"}), Check());
  duringPause = "1240\n";
  EXPECT_EQ(Events({"pause 10000000", "exit 0"}), Check());
  EXPECT_EQ(Events({"exit 0"}), Check());
  EXPECT_EQ(2u, CapturedLog::Count(kRestarted));
  EXPECT_EQ(3, CapturedLog::Lines()[0].priority);
  Store("1234");  // without its line feed it is another text
  EXPECT_EQ(Events({"exit 0"}), Check());
  std::remove(path.c_str());
  EXPECT_EQ(Events({"exit 0"}), Check());
}

TEST_F(MgmtdWatchTest, AStopEndsTheCheckInThePause) {
  Store("1");
  StoppablePause pause;
  CheckMgmtd(pause);
  duringPause = "2";
  pause.stop = true;
  CheckMgmtd(pause);
  EXPECT_EQ(Events({"pause 10000"}), happened);
  happened.clear();
  CheckMgmtd(pause);
  EXPECT_EQ(Events({"before exit", "exit 0"}), happened);
}

TEST_F(MgmtdWatchTest, EndsTheRealProcessWithStatusZero) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        ResetMgmtdWatch();
        GetMgmtdWatchSeams().pidFile = path.c_str();
        Store("1");
        CheckMgmtdAndExit();
        KELib::KEString other("2");
        ExitIfMgmtdRestarted(other);
        _exit(1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(MgmtdWatchTest, ReadsTheWholeFileBehindWhatIsThere) {
  KELib::KEString pid("x");
  ReadMgmtdPID(pid);
  EXPECT_STREQ("x", pid.Cstr());
  Store("12\n34\n");
  ReadMgmtdPID(pid);
  EXPECT_STREQ("x12\n34\n", pid.Cstr());
}

}  // namespace
}  // namespace KE::Service
