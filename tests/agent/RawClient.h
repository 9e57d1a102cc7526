// SPDX-License-Identifier: MIT
//
// A client that sends bytes as they are.
#ifndef KECPP_TESTS_AGENT_RAWCLIENT_H
#define KECPP_TESTS_AGENT_RAWCLIENT_H

#include <string>

namespace agenttest {

class RawClient {
 public:
  explicit RawClient(int port);  // connects; throws when it cannot
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // False when the server has closed the connection.
  bool Send(const std::string& bytes);

  // What the server sends until it ends the connection, or until `end` has come. Gives up after a
  // minute.
  std::string Receive(const std::string& end = "");

 private:
  int fd;
};

}  // namespace agenttest

#endif
