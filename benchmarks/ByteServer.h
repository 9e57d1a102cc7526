// SPDX-License-Identifier: MIT
//
// A server in a separate process that answers the calls of a data sync, and a few more for the
// benchmarks, with prepared bytes: its work is not in the client's processor time.
//
//   CreateFilter       names kFilter
//   WaitForUpdates     without a version the first set; otherwise, `Changes` times, a set whose
//                      machine is named by the nanosecond of the monotonic clock in which it was
//                      sent, 3 ms after the call came; then never again until it is cancelled
//   Download           the first set as well
//   Burst              an empty "returnval"; the wait that is held, or the next one, gets a set in
//                      which kBurst machines are renamed
//   RetrieveServiceContent, Login   what an agent needs to log in as a user with a password
//   anything else      an empty "returnval"
//
// Thread safety: none. It listens on a free port of 127.0.0.1 and dies with its parent.
#ifndef KECPP_BENCHMARKS_BYTESERVER_H
#define KECPP_BENCHMARKS_BYTESERVER_H

#include <sys/types.h>

#include <string>

#include "benchmarks/Document.h"

namespace bench {

constexpr unsigned int kBurst = 1000;

class ByteServer {
 public:
  // Forks: make it before any thread. Throws std::runtime_error.
  ByteServer(const Inventory& inventory, unsigned int changes);
  ~ByteServer();
  ByteServer(const ByteServer&) = delete;
  ByteServer& operator=(const ByteServer&) = delete;

  const std::string& Url() const { return url; }

 private:
  std::string url;
  pid_t process = -1;
};

// The monotonic clock, which all processes share, in nanoseconds.
long long NanosecondsNow();

}  // namespace bench

#endif
