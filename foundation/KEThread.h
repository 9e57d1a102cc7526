// SPDX-License-Identifier: MIT
//
// A detached thread that runs one work.
//
// Ownership: the thread object owns its work. Once started it owns itself as well: after the work
//   has run, both are deleted on the new thread. There is no join, so the creator touches neither
//   after Start() and learns the outcome from what the work publishes. A thread that was never
//   started is deleted by its creator.
#ifndef KECPP_FOUNDATION_KETHREAD_H
#define KECPP_FOUNDATION_KETHREAD_H

#include <pthread.h>

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEWork.h"

namespace KELib {

class KECPP_API KEThread {
 public:
  virtual ~KEThread();

  // Takes `work` over. False when the thread cannot be used.
  virtual bool Init(KEWork* work) = 0;

  // Called on the started thread after the work has run.
  virtual void Cleanup() = 0;

  // Runs the work on a new thread; at most once. Throws SystemException "Unable to create thread";
  // the object then stays the caller's.
  virtual void Start() = 0;

  // The calling thread's identifier, not that of the started thread.
  virtual pthread_t Id() = 0;

  // The work, null before Init().
  virtual KEWork* GetWork() = 0;
};

// A thread of the POSIX library.
class KECPP_API KEThreadImpl : public KEThread {
 public:
  KEThreadImpl();
  ~KEThreadImpl() override;

  bool Init(KEWork* newWork) override;
  void Cleanup() override;
  void Start() override;
  pthread_t Id() override;
  KEWork* GetWork() override;

 private:
  std::unique_ptr<KEWork> work;
};

// A thread for `work`, not yet started, owned by the caller; null when it could not be initialised.
// Takes `work` over.
KECPP_API KEThread* CreateKEThread(KEWork* work);

}  // namespace KELib

#endif
