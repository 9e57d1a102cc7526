// SPDX-License-Identifier: MIT
//
// What differs between the versions of the HTTP library that Debian 12 (0.11) and Debian 13 (0.18)
// have, for servers that make its connections themselves.
#ifndef KECPP_SERVERS_HTTPLIBVERSIONS_H
#define KECPP_SERVERS_HTTPLIBVERSIONS_H

#include <httplib.h>

#include <functional>
#include <string>
#include <utility>

namespace servers {

using SetUp = std::function<void(httplib::Request&)>;

// What TaskQueue::enqueue returns: nothing, or in 0.18 whether the task was taken. The library
// closes the sockets of those that were not. `return Enqueued(true)` is right for both.
using Enqueued = decltype(std::declval<httplib::TaskQueue&>().enqueue(std::function<void()>()));

// Reads a request from a stream and answers it, by the server's process_request:
//   ProcessRequest(*this, &Server::process_request, stream, last, closed, setUp) where Server is
//   the derived class, since that operation is protected. False when the connection has to end.
template <typename Server>
bool ProcessRequest(Server& server,
                    bool (Server::*process)(httplib::Stream&, bool, bool&, const SetUp&),
                    httplib::Stream& stream, bool last, bool& closed, const SetUp& setUp) {
  return (server.*process)(stream, last, closed, setUp);
}

// In 0.18 the caller looks up the addresses.
template <typename Server>
bool ProcessRequest(Server& server,
                    bool (Server::*process)(httplib::Stream&, const std::string&, int,
                                            const std::string&, int, bool, bool&, const SetUp&),
                    httplib::Stream& stream, bool last, bool& closed, const SetUp& setUp) {
  std::string remote, local;
  int remotePort = 0, localPort = 0;
  stream.get_remote_ip_and_port(remote, remotePort);
  stream.get_local_ip_and_port(local, localPort);
  return (server.*process)(stream, remote, remotePort, local, localPort, last, closed, setUp);
}

}  // namespace servers

#endif
