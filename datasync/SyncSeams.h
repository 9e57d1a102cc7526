// SPDX-License-Identifier: MIT
//
// What tests put in the place of the clock by which the sync loop decides when a report is over and
// when everything is asked for again. Not for users of the library. Changed only while no data sync
// exists.
#ifndef KECPP_DATASYNC_SYNCSEAMS_H
#define KECPP_DATASYNC_SYNCSEAMS_H

#include <chrono>

namespace KE::Service {

using SyncTime = std::chrono::steady_clock::time_point;

struct SyncSeams {
  SyncTime (*now)() = &std::chrono::steady_clock::now;
};

// The process's one set.
inline SyncSeams& GetSyncSeams() {
  static SyncSeams seams;
  return seams;
}

}  // namespace KE::Service

#endif
