// SPDX-License-Identifier: MIT
//
// The open sockets of a connection pool, so that transfers which wait for a silent server can be
// ended from another thread.
//
// Thread safety: every operation from any thread; its mutex is a leaf.
#ifndef KECPP_HTTP_SOCKETREGISTRY_H
#define KECPP_HTTP_SOCKETREGISTRY_H

#include <atomic>
#include <mutex>
#include <vector>

namespace KELib {
namespace Http {

class SocketRegistry {
 public:
  // Makes `easy`, a handle of the transfer library, open and close its sockets here. A refusal is
  // ignored: its transfers merely cannot be interrupted. The registry outlives the handle.
  void Serve(void* easy);

  // Shuts all sockets down and refuses new ones until Resume(): the transfer library sends a
  // request once more, on a new socket, when a kept one turns out to be dead.
  void Interrupt();
  void Resume();

  // How often Interrupt() was called; a change tells that a transfer may have been cut.
  unsigned int Interruptions() const { return interruptions; }

  // A new socket, or -1.
  int Open(int family, int type, int protocol);

  // Closes it, 0 when that succeeded.
  int Close(int socket);

 private:
  // A lock that also covers shutdown() and close(), so that no number is reused in between.
  std::mutex mutex;
  std::vector<int> sockets;
  bool refusing = false;
  std::atomic<unsigned int> interruptions{0};
};

}  // namespace Http
}  // namespace KELib

#endif
