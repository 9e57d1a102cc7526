// SPDX-License-Identifier: MIT
//
// Says when the server is to be asked for everything once more. That can cost a hundred megabytes:
// a set that cannot be applied must not make it a habit.
//
// Thread safety: guarded by the data sync's filter-table mutex.
#ifndef KECPP_DATASYNC_FULLREQUEST_H
#define KECPP_DATASYNC_FULLREQUEST_H

#include <algorithm>
#include <chrono>

#include "datasync/SyncSeams.h"

namespace KE::Service {

class FullRequest {
 public:
  // The next wait asks for everything.
  void AtOnce() {
    wanted = true;
    due = SyncTime::min();
  }

  // A set could not be applied: everything is asked for after a pause, which doubles with each call
  // from one second to a minute.
  void AfterFailure(SyncTime now) {
    pause = std::max(pause, kFirstPause);
    AfterCut(now);
  }

  // A set was left unread at a filter that nobody watches, which is destroyed now: as AfterFailure,
  // but without a pause the first time.
  void AfterCut(SyncTime now) {
    wanted = true;
    unanswered = false;
    due = now + pause;
    pause = std::min(std::max(pause * 2, kFirstPause), kLongestPause);
  }

  bool Wanted() const { return wanted; }
  bool Due(SyncTime now) const { return wanted && now >= due; }

  // When the next wait has to end, so that everything can be asked for; SyncTime::max() for never.
  SyncTime WaitEnd() const { return wanted ? due : SyncTime::max(); }

  // The wait that asks for everything goes out.
  void Sent() {
    wanted = false;
    unanswered = true;
  }

  // A set was applied whole. The pauses begin again when it is what answers a request for
  // everything: small sets of other watches say nothing about the one that cannot be applied.
  void NoteWholeSet() {
    if (unanswered) pause = {};
    unanswered = false;
  }

 private:
  static constexpr std::chrono::milliseconds kFirstPause{1000};
  static constexpr std::chrono::milliseconds kLongestPause{60000};

  bool wanted = false;
  bool unanswered = false;  // no answer to the last request for everything was applied whole
  SyncTime due{};
  std::chrono::milliseconds pause{};  // before the next request that follows a failure
};

}  // namespace KE::Service

#endif
