// SPDX-License-Identifier: MIT
#include "service/call/MgmtdWatch.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "foundation/KEFile.h"
#include "foundation/KEMutex.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KEThreadAnnotations.h"
#include "foundation/Logger.h"
#include "service/call/MgmtdWatchSeams.h"

namespace KE::Service {

const char* const MgmtdPIDFileName = "/var/run/zorbel/zorbel-mgmtd.PID";

namespace {

using KELib::KEMutexGuard;
using KELib::KEString;

struct RememberedPid {
  KELib::KEMutex mutex;
  KEString text KECPP_GUARDED_BY(mutex);
};

// Never destroyed: a thread may check while the process ends.
RememberedPid& Remembered() {
  static RememberedPid* const remembered = new RememberedPid;
  return *remembered;
}

// True when there was none yet: `pid` is the one from now on.
bool RememberFirst(const KEString& pid) {
  RememberedPid& remembered = Remembered();
  KEMutexGuard guard(&remembered.mutex);
  if (!remembered.text.Empty()) return false;
  remembered.text.Append(pid);
  return true;
}

bool IsRemembered(const KEString& pid) {
  RememberedPid& remembered = Remembered();
  KEMutexGuard guard(&remembered.mutex);
  return remembered.text.Equals(pid);
}

void SleepMicroseconds(unsigned int amount) {
  usleep(amount);
}

void ExitProcess(int status) {
  exit(status);  // NOLINT(concurrency-mt-unsafe): on whichever thread notices the restart
}

// A check that nothing stops.
class UninterruptedPause : public MgmtdPause {
 public:
  bool Pause(int milliseconds) override {
    GetMgmtdWatchSeams().sleepMicroseconds(static_cast<unsigned int>(milliseconds) * 1000);
    return true;
  }
  void BeforeExit() override {}
};

// Returns false when the process was to exit and a test kept it.
bool ContinueUnlessRestarted(const KEString& pid, MgmtdPause& pause) {
  if (IsRemembered(pid)) return true;
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_ERROR,
                      "KECimProvider Exiting on Mgmtd restart!!");
  pause.BeforeExit();
  GetMgmtdWatchSeams().exitProcess(EXIT_SUCCESS);
  return false;
}

}  // namespace

MgmtdPause::~MgmtdPause() = default;

MgmtdWatchSeams& GetMgmtdWatchSeams() {
  static MgmtdWatchSeams seams = {MgmtdPIDFileName, SleepMicroseconds, ExitProcess};
  return seams;
}

void ResetMgmtdWatch() {
  GetMgmtdWatchSeams() = {MgmtdPIDFileName, SleepMicroseconds, ExitProcess};
  RememberedPid& remembered = Remembered();
  KEMutexGuard guard(&remembered.mutex);
  remembered.text = KEString();
}

void ReadMgmtdPID(KEString& pid) {
  KEString path(GetMgmtdWatchSeams().pidFile);
  const std::unique_ptr<KELib::KEFile> file(KELib::CreateKEFile(path, KELib::FILE_IO_READ));
  file->Read(pid);
}

void ExitIfMgmtdRestarted(KEString& pid) {
  UninterruptedPause pause;
  ContinueUnlessRestarted(pid, pause);
}

void CheckMgmtdAndExit() {
  UninterruptedPause pause;
  CheckMgmtd(pause);
}

void CheckMgmtd(MgmtdPause& pause) {
  KEString before;
  ReadMgmtdPID(before);
  if (RememberFirst(before) || !ContinueUnlessRestarted(before, pause)) return;
  if (!pause.Pause(GetMgmtdWatchSeams().pauseMilliseconds)) return;
  KEString after;
  ReadMgmtdPID(after);
  ContinueUnlessRestarted(after, pause);
}

}  // namespace KE::Service
