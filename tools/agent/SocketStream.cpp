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
constexpr std::size_t KEPT_BYTES = 16384;  // what one TLS record holds

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
    : fd(socket),
      limits(streamLimits),
      ssl(context ? SSL_new(context) : nullptr),
      patience(limits.time) {
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
  patience = limits.time;
  return true;
}

bool SocketStream::is_readable() const {
  return begin < end || Wait(POLLIN, requestDeadline);
}

// Asked before each part of an answer, which may be long in coming: what there is must not wait for
// it. And a client that has gone is noticed here.
bool SocketStream::is_writable() const {
  char byte = 0;
  const bool hasGone = !ssl && recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
  return !hasGone && Flush();
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

// An answer's head, and the size of a chunk, leave together with what follows: each packet wakes
// the client.
ssize_t SocketStream::write(const char* from, size_t size) {
  if (kept.size() + size <= KEPT_BYTES) {
    kept.append(from, size);
    return static_cast<ssize_t>(size);
  }
  const std::size_t fits = kept.empty() ? 0 : std::min(size, KEPT_BYTES);
  kept.append(from, fits);
  if (!Flush() || !SendAll({from + fits, size - fits})) return -1;
  return static_cast<ssize_t>(size);
}

bool SocketStream::Flush() const {
  const bool sent = SendAll(kept);
  kept.clear();
  return sent;
}

bool SocketStream::SendAll(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t count = Send(text);
    if (count > 0) {
      const auto sent = static_cast<std::size_t>(count);
      text.remove_prefix(sent);
      patience +=
          sent * std::chrono::nanoseconds(std::chrono::seconds(1)) / SLOWEST_BYTES_PER_SECOND;
      patience = std::min<Clock::duration>(patience, limits.time);
    } else if (!AwaitClient(count)) {
      return false;
    }
  }
  return true;
}

// The time that a whole answer waits for its client is limited, however many parts it has.
bool SocketStream::AwaitClient(ssize_t result) const {
  const auto start = Clock::now();
  const auto deadline = start + patience;
  const bool retry = ssl ? WaitAsTlsWants(static_cast<int>(result), deadline)
                         : (errno == EAGAIN || errno == EINTR) && Wait(POLLOUT, deadline);
  patience -= Clock::now() - start;
  return retry && patience.count() > 0;
}

ssize_t SocketStream::Receive() {
  if (!ssl) return recv(fd, buffer.data(), buffer.size(), 0);
  ERR_clear_error();
  return SSL_read(ssl.get(), buffer.data(), static_cast<int>(buffer.size()));
}

ssize_t SocketStream::Send(std::string_view text) const {
  if (!ssl) return send(fd, text.data(), text.size(), MSG_NOSIGNAL);
  ERR_clear_error();
  return SSL_write(ssl.get(), text.data(),
                   static_cast<int>(std::min<size_t>(text.size(), INT_MAX)));
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
