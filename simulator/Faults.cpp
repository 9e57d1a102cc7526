// SPDX-License-Identifier: MIT
#include "simulator/Faults.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <set>

namespace sim {

bool Faults::IsKnownKind(const std::string& kind) {
  static const std::set<std::string>& kinds = *new std::set<std::string>{"close-before",
                                                                         "close-middle",
                                                                         "truncate",
                                                                         "truncate-wrong-length",
                                                                         "garbage",
                                                                         "empty",
                                                                         "http500",
                                                                         "soap-fault",
                                                                         "soap-fault-no-detail",
                                                                         "wrong-prefix",
                                                                         "no-body",
                                                                         "drip",
                                                                         "hang",
                                                                         "huge",
                                                                         "malformed-set"};
  return kinds.count(kind) > 0;
}

void Faults::Order(const FaultOrder& order) {
  const std::lock_guard<std::mutex> lock(mutex);
  orders.push_back(order);
}

void Faults::Clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  orders.clear();
}

bool Faults::Take(const std::string& method, FaultOrder& order) {
  const std::lock_guard<std::mutex> lock(mutex);
  for (auto it = orders.begin(); it != orders.end(); ++it) {
    if (it->method != "*" && it->method != method) continue;
    order = *it;
    if (--it->count == 0) orders.erase(it);
    return true;
  }
  return false;
}

void CloseConnectionFrom(int peerPort) {
  const int most = static_cast<int>(sysconf(_SC_OPEN_MAX));
  for (int fd = 3; fd < most && fd < 4096; ++fd) {
    sockaddr_in peer{};
    socklen_t size = sizeof(peer);
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) != 0) continue;
    if (peer.sin_family == AF_INET && ntohs(peer.sin_port) == peerPort) shutdown(fd, SHUT_RDWR);
  }
}

}  // namespace sim
