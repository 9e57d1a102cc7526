// SPDX-License-Identifier: MIT
//
// Notes what the last call of a thread came to while it lives. Exceptions carry only a text; a
// report on a failed connection needs the kind of failure, the HTTP status and the URL.
//
// Scopes nest; the innermost one takes the notes.
//
// Thread safety: a trace concerns the thread that made it and no other. It lives on the stack.
#ifndef KECPP_HTTP_CALLTRACE_H
#define KECPP_HTTP_CALLTRACE_H

#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class CallTrace {
 public:
  enum class Ending {
    notSent,       // no transfer was made, or none can be with this URL
    answered,      // with whatever status
    refused,       // nobody listens
    unreachable,   // no way to the address
    nameNotFound,  // of the host or the proxy
    timedOut,
    tls,  // of the handshake, or the client's certificate or key
    lost  // anything else that ended the transfer
  };

  // Begins with the URL of the enclosing trace.
  CallTrace();
  CallTrace(const CallTrace&) = delete;
  CallTrace& operator=(const CallTrace&) = delete;
  ~CallTrace();

  // The innermost trace of the calling thread, or null.
  static CallTrace* Current();

  // A transfer ended with `result`, a code of libcurl, and `text`. `systemError` is the errno of a
  // connection that could not be made.
  void NoteTransfer(int result, int systemError, const KEString& text);

  KEString url;     // where the call goes, as configured
  KEString before;  // why a step before the call failed: making the client, getting a ticket
  Ending ending = Ending::notSent;
  KEString text;         // of a transfer that failed
  long status = 0;       // of HTTP; 0 without an answer
  bool isFault = false;  // the answer is a fault of the server

 private:
  CallTrace* const outer;
};

}  // namespace Http
}  // namespace KELib

#endif
