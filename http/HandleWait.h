// SPDX-License-Identifier: MIT
//
// Makes the posts of the calling thread patient for a scope: instead of failing at once when all of
// a pool's handles are in use, they wait for one. It may also shorten their transfers, and it notes
// whether an answer has begun to come.
//
// For calls that would do harm when lost, such as a logout. Scopes nest; the innermost one counts.
//
// Thread safety: a scope concerns the thread that made it and no other. It lives on the stack.
#ifndef KECPP_HTTP_HANDLEWAIT_H
#define KECPP_HTTP_HANDLEWAIT_H

#include <atomic>

namespace KELib {
namespace Http {

class HandleWait {
 public:
  // Waits up to `milliseconds` for a free handle, in each post, or until `stop`, unless null, turns
  // true. With a positive `transferMilliseconds` each transfer times out after that time even if
  // the connection's or the request's time-out is longer. With a positive `answerMilliseconds` a
  // transfer times out when nothing of the answer's body has come by then, or up to a second later;
  // one whose answer has begun goes on.
  HandleWait(int milliseconds, const std::atomic<bool>* stop, int transferMilliseconds = 0,
             int answerMilliseconds = 0);
  HandleWait(const HandleWait&) = delete;
  HandleWait& operator=(const HandleWait&) = delete;
  ~HandleWait();

  // The innermost scope of the calling thread, or null.
  static const HandleWait* Current();

  int Milliseconds() const { return milliseconds; }
  bool Stopped() const { return stop != nullptr && *stop; }
  int TransferMilliseconds() const { return transferMilliseconds; }
  int AnswerMilliseconds() const { return answerMilliseconds; }

  // A part of an answer's body has come in this scope, whatever became of the transfer.
  void NoteAnswer() const { answered = true; }
  bool Answered() const { return answered; }

 private:
  const int milliseconds;
  const std::atomic<bool>* const stop;
  const int transferMilliseconds;
  const int answerMilliseconds;
  mutable bool answered = false;
  const HandleWait* const outer;
};

}  // namespace Http
}  // namespace KELib

#endif
