// SPDX-License-Identifier: MIT
//
// The open sockets of one handle, so that its transfer can be ended from another thread while it
// waits for a silent server; and who opens and closes them.
//
// Thread safety: every operation from any thread; its mutex is a leaf.
#ifndef KECPP_HTTP_SOCKETREGISTRY_H
#define KECPP_HTTP_SOCKETREGISTRY_H

#include <mutex>
#include <vector>

#include "http/Performer.h"

namespace KELib {
namespace Http {

class SocketRegistry {
 public:
  // Makes `easy`, a handle of libcurl, open and close its sockets here. A refusal is ignored: its
  // transfers merely cannot be ended early. The registry outlives the handle.
  void Serve(void* easy);

  // Shuts all sockets down and refuses new ones until Admit(), which begins the handle's next
  // transfer: libcurl sends a request again, on a new socket, when a kept one turns out to be dead.
  void Cut();
  void Admit();

  // Whether the transfer that began last was cut.
  bool IsCut() const;

  // Of the handle's own thread.
  Performer& Transfers() { return performer; }

  // A new socket, or -1.
  int Open(int family, int type, int protocol);

  // Closes it, 0 when that succeeded.
  int Close(int socket);

 private:
  // A lock that also covers shutdown() and close(), so that no number is reused in between.
  mutable std::mutex mutex;
  std::vector<int> sockets;
  bool cut = false;
  Performer performer;  // last, since it closes sockets when it goes
};

}  // namespace Http
}  // namespace KELib

#endif
