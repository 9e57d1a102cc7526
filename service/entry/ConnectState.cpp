// SPDX-License-Identifier: MIT
#include "service/entry/ConnectState.h"

#include <exception>
#include <string>

#include "foundation/KEMutexGuard.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;
using KELib::Http::CallTrace;
using Kind = KEConnectFailureKind;

}  // namespace

// Never destroyed: see the header.
ConnectState& ConnectState::Get() {
  static ConnectState* const state = new ConnectState;
  return *state;
}

// --- attempts ------------------------------------------------------------------------------------

ConnectState::Attempt::Attempt() : limits(&interrupter), thread(std::this_thread::get_id()) {
  ConnectState& state = Get();
  KEMutexGuard guard(&state.mutex);
  next = state.attempts;
  state.attempts = this;
}

ConnectState::Attempt::~Attempt() {
  ConnectState& state = Get();
  KEMutexGuard guard(&state.mutex);
  Attempt** link = &state.attempts;
  while (*link != this) link = &(*link)->next;
  *link = next;
}

void ConnectState::Interrupt() {
  KEMutexGuard guard(&mutex);
  for (Attempt* attempt = attempts; attempt != nullptr; attempt = attempt->next) {
    attempt->interrupter.Interrupt();
  }
}

bool ConnectState::IsInterruptedNoLock() const {
  for (const Attempt* attempt = attempts; attempt != nullptr; attempt = attempt->next) {
    if (attempt->thread != std::this_thread::get_id()) continue;
    if (attempt->interrupter.IsInterrupting()) return true;
  }
  return false;
}

// --- the last failure ----------------------------------------------------------------------------

void ConnectState::Clear() noexcept {
  KEMutexGuard guard(&mutex);
  last.kind = Kind::none;
  for (KELib::KEString* text : {&last.text, &lastUrl, &lastReason}) {
    KELib::KEString empty;  // a cleared text would keep its block
    text->Transfer(empty);
  }
}

void ConnectState::Note(ConnectStep step, const char* what) noexcept {
  try {
    const CallTrace* trace = CallTrace::Current();
    const ConnectReason reason =
        trace != nullptr ? ReasonOf(step, *trace, what) : ConnectReason{Kind::other, what};
    Note(reason.kind, reason.text.c_str());
  } catch (const std::exception&) {
    Note(Kind::other, "");
  }
}

void ConnectState::Note(Kind kind, const char* reason) noexcept {
  KEMutexGuard guard(&mutex);
  last.kind = kind;
  last.text.Clear();
  try {
    const CallTrace* trace = CallTrace::Current();
    lastUrl = trace != nullptr ? ShownUrl(trace->url.Cstr()).c_str() : "";
    lastReason = reason;
    if (IsInterruptedNoLock()) {
      last.kind = Kind::interrupted;
      lastReason = "interrupted";
    }
    WriteTextNoLock();
  } catch (const std::exception&) {
    // The kind says enough.
  }
}

void ConnectState::Blame(const char* malformation) noexcept {
  KEMutexGuard guard(&mutex);
  if (last.kind == Kind::none || last.kind == Kind::interrupted) return;
  last.kind = Kind::malformedConfiguration;
  try {
    lastReason = (std::string(malformation) + "; " + lastReason.Cstr()).c_str();
    WriteTextNoLock();
  } catch (const std::exception&) {
    last.text.Clear();
  }
}

void ConnectState::WriteTextNoLock() {
  const std::string url = lastUrl.Cstr();
  last.text = OneLine((url.empty() ? url : url + ": ") + lastReason.Cstr()).c_str();
}

void ConnectState::GetFailure(KEConnectFailure& failure) {
  KEMutexGuard guard(&mutex);
  failure = last;
}

bool ConnectState::HasFailed() {
  KEMutexGuard guard(&mutex);
  return last.kind != Kind::none;
}

}  // namespace KE::Service
