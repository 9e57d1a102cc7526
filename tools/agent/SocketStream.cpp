// SPDX-License-Identifier: MIT
#include "tools/agent/SocketStream.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace tools::agent {
namespace {

// More than any client's headers have.
constexpr std::size_t HEADER_BYTES = 65536;
constexpr std::size_t SLOWEST_BYTES_PER_SECOND = 65536;

void Address(const sockaddr_storage& storage, std::string& ip, int& port) {
  char text[INET6_ADDRSTRLEN] = {};
  if (storage.ss_family == AF_INET6) {
    const auto& address = reinterpret_cast<const sockaddr_in6&>(storage);
    inet_ntop(AF_INET6, &address.sin6_addr, text, sizeof text);
    port = ntohs(address.sin6_port);
  } else if (storage.ss_family == AF_INET) {
    const auto& address = reinterpret_cast<const sockaddr_in&>(storage);
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    port = ntohs(address.sin_port);
  }
  ip = text;
}

}  // namespace

SocketStream::SocketStream(socket_t socket, SSL_CTX* context, const Limits& streamLimits)
    : fd(socket), limits(streamLimits), ssl(context ? SSL_new(context) : nullptr) {
  fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (ssl) SSL_set_fd(ssl.get(), fd);
}

SocketStream::~SocketStream() {
  if (ssl) SSL_shutdown(ssl.get());
  ssl.reset();
  ::shutdown(fd, SHUT_RDWR);
  ::close(fd);
}

bool SocketStream::Accept() {
  const auto deadline = Clock::now() + limits.time;
  while (ssl) {
    const int result = SSL_accept(ssl.get());
    if (result == 1) return true;
    if (!WaitAsTlsWants(result, deadline)) return false;
  }
  return true;
}

bool SocketStream::AwaitRequest() {
  allowance = HEADER_BYTES + limits.bodyBytes;
  bareLineEnd = false;
  if (begin == end && !Fill(Clock::now() + limits.time)) return false;
  requestDeadline = Clock::now() + limits.time;
  return true;
}

bool SocketStream::is_readable() const {
  return begin < end || Wait(POLLIN, requestDeadline);
}

// Asked before each part of an answer: a client that has gone is noticed here.
bool SocketStream::is_writable() const {
  char byte = 0;
  if (!ssl && recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0) return false;
  return Wait(POLLOUT, Clock::now() + limits.time);
}

ssize_t SocketStream::read(char* to, size_t size) {
  if (allowance == 0) return -1;
  if (begin == end && !Fill(requestDeadline)) return -1;
  const std::size_t count = std::min({size, end - begin, allowance});
  std::memcpy(to, buffer.data() + begin, count);
  begin += count;
  allowance -= count;
  if (size == 1) {  // lines are read byte by byte
    bareLineEnd = bareLineEnd || (*to == '\n' && last != '\r');
    last = *to;
  }
  return static_cast<ssize_t>(count);
}

bool SocketStream::Fill(Clock::time_point deadline) {
  while (true) {
    const ssize_t count = Receive();
    if (count > 0) {
      begin = 0;
      end = static_cast<std::size_t>(count);
      return true;
    }
    if (count == 0 && !ssl) return false;
    const bool retry = ssl ? WaitAsTlsWants(static_cast<int>(count), deadline)
                           : (errno == EAGAIN || errno == EINTR) && Wait(POLLIN, deadline);
    if (!retry) return false;
  }
}

ssize_t SocketStream::write(const char* from, size_t size) {
  const auto deadline =
      Clock::now() + limits.time + std::chrono::seconds(size / SLOWEST_BYTES_PER_SECOND);
  std::size_t sent = 0;
  while (sent < size) {
    const ssize_t count = Send(from + sent, size - sent);
    if (count > 0) {
      sent += static_cast<std::size_t>(count);
      continue;
    }
    const bool retry = ssl ? WaitAsTlsWants(static_cast<int>(count), deadline)
                           : (errno == EAGAIN || errno == EINTR) && Wait(POLLOUT, deadline);
    if (!retry || Clock::now() > deadline) return -1;
  }
  return static_cast<ssize_t>(size);
}

ssize_t SocketStream::Receive() {
  if (!ssl) return recv(fd, buffer.data(), buffer.size(), 0);
  ERR_clear_error();
  return SSL_read(ssl.get(), buffer.data(), static_cast<int>(buffer.size()));
}

ssize_t SocketStream::Send(const char* from, size_t size) {
  if (!ssl) return send(fd, from, size, MSG_NOSIGNAL);
  ERR_clear_error();
  return SSL_write(ssl.get(), from, static_cast<int>(std::min<size_t>(size, INT_MAX)));
}

bool SocketStream::Wait(short events, Clock::time_point deadline) const {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (left <= 0) return false;
  pollfd waiting{fd, events, 0};
  const int ready = poll(&waiting, 1, static_cast<int>(std::min<long long>(left, INT_MAX)));
  return ready > 0 || (ready < 0 && errno == EINTR);
}

bool SocketStream::WaitAsTlsWants(int result, Clock::time_point deadline) const {
  switch (SSL_get_error(ssl.get(), result)) {
    case SSL_ERROR_WANT_READ:
      return Wait(POLLIN, deadline);
    case SSL_ERROR_WANT_WRITE:
      return Wait(POLLOUT, deadline);
    default:
      return false;
  }
}

void SocketStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  if (getpeername(fd, reinterpret_cast<sockaddr*>(&storage), &length) == 0) {
    Address(storage, ip, port);
  }
}

void SocketStream::get_local_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  if (getsockname(fd, reinterpret_cast<sockaddr*>(&storage), &length) == 0) {
    Address(storage, ip, port);
  }
}

}  // namespace tools::agent
