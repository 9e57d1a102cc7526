// SPDX-License-Identifier: MIT
#include "benchmarks/agent/PlainClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

bool Has(const std::string& head, const char* line) {
  return strcasestr(head.c_str(), line) != nullptr;
}

std::size_t LengthIn(const std::string& head) {
  const char* field = strcasestr(head.c_str(), "\r\nContent-Length:");
  return field ? std::strtoul(field + 17, nullptr, 10) : 0;
}

}  // namespace

PlainClient::PlainClient(int port)
    : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), buffer(std::size_t{256} << 10) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return;
  close(fd);
  throw std::runtime_error("cannot connect");
}

PlainClient::~PlainClient() {
  close(fd);
}

Transfer PlainClient::Ask(const std::string& request) {
  Transfer transfer;
  const auto start = Clock::now();
  std::string head;
  if (!Send(request) || !ReadHead(head)) return transfer;
  if (unread.empty() && !Fill()) return transfer;
  transfer.firstByteSeconds = std::chrono::duration<double>(Clock::now() - start).count();
  transfer.ends = Has(head, "\r\nConnection: close");
  const bool isChunked = Has(head, "\r\nTransfer-Encoding: chunked");
  if (!isChunked) transfer.bytes = LengthIn(head);
  const bool isWhole = isChunked ? SkipChunks(transfer.bytes) : Skip(transfer.bytes);
  transfer.good = isWhole && head.compare(0, 13, "HTTP/1.1 200 ") == 0;
  return transfer;
}

bool PlainClient::Send(const std::string& request) const {
  for (std::size_t sent = 0; sent < request.size();) {
    const ssize_t count = send(fd, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

bool PlainClient::Fill() {
  const ssize_t count = recv(fd, buffer.data(), buffer.size(), 0);
  if (count <= 0) return false;
  unread = {buffer.data(), static_cast<std::size_t>(count)};
  return true;
}

bool PlainClient::ReadHead(std::string& head) {
  for (std::string line; ReadLine(line); head += "\r\n") {
    if (line.empty()) return true;
    head += line;
  }
  return false;
}

bool PlainClient::ReadLine(std::string& line) {
  line.clear();
  while (true) {
    const std::size_t end = unread.find('\n');
    line += unread.substr(0, end);
    if (end != std::string_view::npos) break;
    if (!Fill()) return false;
  }
  unread.remove_prefix(unread.find('\n') + 1);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

bool PlainClient::Skip(std::size_t bytes) {
  while (bytes > 0) {
    if (unread.empty() && !Fill()) return false;
    const std::size_t count = std::min(bytes, unread.size());
    unread.remove_prefix(count);
    bytes -= count;
  }
  return true;
}

bool PlainClient::SkipChunks(std::size_t& bytes) {
  for (std::string line; ReadLine(line);) {
    const std::size_t size = std::strtoul(line.c_str(), nullptr, 16);
    if (!Skip(size) || !ReadLine(line)) return false;
    if (size == 0) return true;
    bytes += size;
  }
  return false;
}

}  // namespace bench
