// SPDX-License-Identifier: MIT
//
// Sends indications to one listener, over libcurl: an HTTP connection that is kept when the
// listener keeps it. Certificates are verified, redirects are not followed, proxies of the
// environment are not used, and what the listener answers is bounded.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_LISTENERCLIENT_H
#define KECPP_TOOLS_AGENT_INDICATIONS_LISTENERCLIENT_H

#include <atomic>
#include <memory>
#include <string>

#include "tools/agent/indications/AllowedHosts.h"
#include "tools/agent/indications/ListenerUrl.h"

namespace tools::agent {

class ListenerClient {
 public:
  // `caFile` has the certificates by which listeners are verified; empty: the system's. Once
  // `ended` is true, nothing is waited for. Hosts and flag outlive the object. Throws
  // std::runtime_error.
  ListenerClient(const ListenerUrl& url, const AllowedHosts& hosts, const std::string& caFile,
                 const std::atomic<bool>& ended);
  ~ListenerClient();

  // Empty when the listener has taken the message; else why not. At most ten seconds.
  std::string Send(const std::string& message);

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace tools::agent

#endif
