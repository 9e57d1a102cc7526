// SPDX-License-Identifier: MIT
//
// How long the calls of the calling thread may take, and how another thread ends them, for a scope:
// how long a post waits for a handle when all of the pool's are in use, when its transfer times
// out, and the interrupter that the transfer registers with. It also notes whether an answer has
// begun to come.
//
// A scope and no argument: between the caller and the transfer are virtual operations that agents
// override, whose arguments are promised. Without a scope a post fails at once when no handle is
// free, and only the time-outs of the connection and of the request end its transfer.
//
// Scopes nest; the innermost one counts. One without an interrupter has that of the scope around
// it.
//
// Thread safety: a scope concerns the thread that made it and no other. It lives on the stack.
#ifndef KECPP_HTTP_CALLLIMITS_H
#define KECPP_HTTP_CALLLIMITS_H

#include <atomic>

namespace KELib {
namespace Http {

class Interrupter;

class CallLimits {
 public:
  // How long the library's own calls wait for a free handle: a lost "Logout", say, would orphan the
  // server's session.
  static constexpr int kHandleWaitMs = 2000;

  // Both may be null and outlive the scope. A wait for a handle ends when `stop` turns true.
  explicit CallLimits(Interrupter* interrupter = nullptr, const std::atomic<bool>* stop = nullptr);
  CallLimits(const CallLimits&) = delete;
  CallLimits& operator=(const CallLimits&) = delete;
  ~CallLimits();

  // How long each post waits for a free handle; kHandleWaitMs unless set. 0: not at all.
  void SetHandleWait(int milliseconds) { handleWait = milliseconds; }

  // Each transfer times out after that time, even if the connection's or the request's time-out is
  // longer. 0: no such limit.
  void SetTransferLimit(int milliseconds) { transferLimit = milliseconds; }

  // A transfer times out when nothing of the answer's body has come by then, or up to a second
  // later; one whose answer has begun goes on. 0: no such limit.
  void SetAnswerLimit(int milliseconds) { answerLimit = milliseconds; }

  // The innermost scope of the calling thread, or null.
  static const CallLimits* Current();

  int HandleWait() const { return handleWait; }
  int TransferLimit() const { return transferLimit; }
  int AnswerLimit() const { return answerLimit; }
  bool Stopped() const { return stop != nullptr && *stop; }
  Interrupter* GetInterrupter() const { return interrupter; }

  // A part of an answer's body has come in this scope, whatever became of the transfer.
  void NoteAnswer() const { answered = true; }
  bool Answered() const { return answered; }

 private:
  const CallLimits* const outer;
  Interrupter* const interrupter;
  const std::atomic<bool>* const stop;
  int handleWait = kHandleWaitMs;
  int transferLimit = 0;
  int answerLimit = 0;
  mutable bool answered = false;
};

}  // namespace Http
}  // namespace KELib

#endif
