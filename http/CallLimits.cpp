// SPDX-License-Identifier: MIT
#include "http/CallLimits.h"

namespace KELib {
namespace Http {

namespace {

thread_local const CallLimits* innermost = nullptr;

}  // namespace

CallLimits::CallLimits(Interrupter* ofThisScope, const std::atomic<bool>* stopFlag)
    : outer(innermost),
      interrupter(ofThisScope != nullptr || outer == nullptr ? ofThisScope : outer->interrupter),
      stop(stopFlag) {
  innermost = this;
}

CallLimits::~CallLimits() {
  innermost = outer;
}

const CallLimits* CallLimits::Current() {
  return innermost;
}

}  // namespace Http
}  // namespace KELib
