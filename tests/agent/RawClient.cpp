// SPDX-License-Identifier: MIT
#include "agent/RawClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace agenttest {

RawClient::RawClient(int port) : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(fd);
    throw std::runtime_error("cannot connect");
  }
}

RawClient::~RawClient() {
  close(fd);
}

bool RawClient::Send(const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

std::string RawClient::Receive(const std::string& end) {
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

}  // namespace agenttest
