// SPDX-License-Identifier: MIT
#include "foundation/KEThread.h"

#include "foundation/KEException.h"

namespace KELib {

namespace {

void* RunThread(void* argument) {
  const std::unique_ptr<KEThread> thread(static_cast<KEThread*>(argument));
  thread->GetWork()->Execute();
  thread->Cleanup();
  return nullptr;
}

}  // namespace

KEThread::~KEThread() = default;

KEThreadImpl::KEThreadImpl() = default;

KEThreadImpl::~KEThreadImpl() = default;

bool KEThreadImpl::Init(KEWork* newWork) {
  work.reset(newWork);
  return true;
}

void KEThreadImpl::Cleanup() {}

void KEThreadImpl::Start() {
  // The new thread may have deleted this object before the call returns: no member after it.
  KEThread* const self = this;
  pthread_t started;
  if (pthread_create(&started, nullptr, RunThread, self) != 0) {
    throw SystemException("Unable to create thread");
  }
  pthread_detach(started);
}

pthread_t KEThreadImpl::Id() {
  return pthread_self();
}

KEWork* KEThreadImpl::GetWork() {
  return work.get();
}

KEThread* CreateKEThread(KEWork* work) {
  std::unique_ptr<KEThread> thread(new KEThreadImpl);
  return thread->Init(work) ? thread.release() : nullptr;
}

}  // namespace KELib
