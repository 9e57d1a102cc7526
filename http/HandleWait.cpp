// SPDX-License-Identifier: MIT
#include "http/HandleWait.h"

namespace KELib {
namespace Http {

namespace {

thread_local const HandleWait* innermost = nullptr;

}  // namespace

HandleWait::HandleWait(int limit, const std::atomic<bool>* stopFlag, int transferLimit,
                       int answerLimit)
    : milliseconds(limit),
      stop(stopFlag),
      transferMilliseconds(transferLimit),
      answerMilliseconds(answerLimit),
      outer(innermost) {
  innermost = this;
}

HandleWait::~HandleWait() {
  innermost = outer;
}

const HandleWait* HandleWait::Current() {
  return innermost;
}

}  // namespace Http
}  // namespace KELib
