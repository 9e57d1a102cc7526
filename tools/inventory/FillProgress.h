// SPDX-License-Identifier: MIT
//
// A line on the terminal that shows how far the first fill is.
#ifndef KECPP_TOOLS_INVENTORY_FILLPROGRESS_H
#define KECPP_TOOLS_INVENTORY_FILLPROGRESS_H

#include <kecpp.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tools::inventory {

// Lives while the caches are filled by another thread. Shows nothing when standard error is no
// terminal that takes commands. The line is wiped by the destructor, which waits for the thread
// that shows it: after that nothing here reads the caches.
class FillProgress {
 public:
  explicit FillProgress(KE::Instance::KETypeCache& cache);
  ~FillProgress();
  FillProgress(const FillProgress&) = delete;
  FillProgress& operator=(const FillProgress&) = delete;

 private:
  void Show();

  KE::Instance::KETypeCache& cache;
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;  // guarded by `mutex`
  std::thread thread;
};

}  // namespace tools::inventory

#endif
