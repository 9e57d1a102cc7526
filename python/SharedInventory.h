// SPDX-License-Identifier: MIT
//
// The inventory behind its handle, its followers and the calls that are running. The last one of
// them destroys it, on any thread.
//
// Thread safety: any thread, with the interpreter lock or without.
#ifndef KECPP_PYTHON_SHAREDINVENTORY_H
#define KECPP_PYTHON_SHAREDINVENTORY_H

#include <kecpp/inventory.h>
#include <sys/types.h>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace kecpp::python {

class SharedInventory {
 public:
  static std::shared_ptr<SharedInventory> Make(const Options& options);
  explicit SharedInventory(const Options& options);

  // Throws Error in a child after fork().
  Inventory& Get();
  bool IsForked() const;

  // Close, and waits until no call is running, for five seconds at most.
  void End();
  static void EndAll();

  // Counts a call while it exists.
  class Call {
   public:
    explicit Call(SharedInventory& called);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    SharedInventory& shared;
  };

 private:
  const pid_t owner;
  std::mutex mutex;
  std::condition_variable idle;
  int calls = 0;  // guarded by `mutex`
  Inventory inventory;
};

}  // namespace kecpp::python

#endif
