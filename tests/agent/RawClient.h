// SPDX-License-Identifier: MIT
//
// A client that sends bytes as they are, and the words of CIM that it may send.
#ifndef KECPP_TESTS_AGENT_RAWCLIENT_H
#define KECPP_TESTS_AGENT_RAWCLIENT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace agenttest {

// The body of a call with these parameters, in "root/cimv2" or in a namespace without a slash.
inline std::string CimCall(const std::string& method, const std::string& parameters,
                           const std::string& space = "") {
  return "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
         "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"" +
         method + "\"><LOCALNAMESPACEPATH>" +
         (space.empty() ? "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>"
                        : "<NAMESPACE NAME=\"" + space + "\"/>") +
         "</LOCALNAMESPACEPATH>" + parameters + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

class RawClient {
 public:
  explicit RawClient(int port) : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      close(fd);
      throw std::runtime_error("cannot connect");
    }
  }
  ~RawClient() { close(fd); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // False when the server has closed the connection.
  bool Send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }

  // What the server sends until it ends the connection, or until `end` has come. Gives up after a
  // minute.
  std::string Receive(const std::string& end = "") {
    std::string all;
    char buffer[65536];
    pollfd readable{fd, POLLIN, 0};
    while (poll(&readable, 1, 60000) > 0) {
      const ssize_t count = recv(fd, buffer, sizeof buffer, 0);
      if (count <= 0) return all;
      all.append(buffer, static_cast<std::size_t>(count));
      if (!end.empty() && all.find(end) != std::string::npos) return all;
    }
    return all + " [no end]";
  }

 private:
  const int fd;
};

}  // namespace agenttest

#endif
