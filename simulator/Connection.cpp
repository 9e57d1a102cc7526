// SPDX-License-Identifier: MIT
#include "simulator/Connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace sim {

namespace {

constexpr std::size_t kBuffer = 16384;

bool Is(int fd, short events, int milliseconds) {
  pollfd entry{fd, events, 0};
  return poll(&entry, 1, milliseconds) > 0 && (entry.revents & events) != 0;
}

}  // namespace

Connection::Connection(int socketToOwn, SSL_CTX* context)
    : fd(socketToOwn), tls(context != nullptr ? SSL_new(context) : nullptr, &SSL_free) {
  if (tls != nullptr) SSL_set_fd(tls.get(), fd);
}

Connection::~Connection() {
  close(fd);
}

Connection*& Connection::Current() {
  thread_local Connection* current = nullptr;
  return current;
}

bool Connection::WaitForRequest() {
  if (tls != nullptr && !shaken) shaken = SSL_accept(tls.get()) == 1;
  if (tls != nullptr && !shaken) return false;
  head.clear();
  headIsWhole = false;
  if (position >= buffer.size() && !Fill()) return false;
  // A client that begins TLS here would wait, as the HTTP library might, for the end of a line.
  constexpr char kHandshake = 0x16;
  return tls != nullptr || buffer[position] != kHandshake;
}

bool Connection::Fill() {
  if (ended) return false;
  buffer.resize(kBuffer);
  position = 0;
  const ssize_t got = tls != nullptr ? SSL_read(tls.get(), buffer.data(), kBuffer)
                                     : recv(fd, buffer.data(), kBuffer, 0);
  buffer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return got > 0;
}

void Connection::End() {
  ended = true;
  shutdown(fd, SHUT_RDWR);
}

void Connection::Reset() {
  const linger atOnce{1, 0};
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
  ended = true;
  shutdown(fd, SHUT_RD);  // wakes the thread that serves it, which closes it
}

bool Connection::PeerIsGone() const {
  pollfd entry{fd, POLLRDHUP, 0};
  return ended || (poll(&entry, 1, 0) > 0 && entry.revents != 0);
}

bool Connection::is_readable() const {
  return position < buffer.size() || Is(fd, POLLIN, 60000);
}

bool Connection::is_writable() const {
  return !ended && Is(fd, POLLOUT, 60000);
}

ssize_t Connection::read(char* to, std::size_t size) {
  if (position >= buffer.size() && !Fill()) return -1;
  const std::size_t n = std::min(size, buffer.size() - position);
  std::memcpy(to, buffer.data() + position, n);
  position += n;
  if (!headIsWhole) {
    head.append(to, n);
    headIsWhole = head.size() >= 4 && head.compare(head.size() - 4, 4, "\r\n\r\n") == 0;
  }
  return static_cast<ssize_t>(n);
}

ssize_t Connection::write(const char* from, std::size_t size) {
  if (ended) return -1;
  const std::size_t n = std::min<std::size_t>(size, INT_MAX);
  if (tls != nullptr) return SSL_write(tls.get(), from, static_cast<int>(n));
  return send(fd, from, n, MSG_NOSIGNAL);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
  ip = "127.0.0.1";
  port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
  get_remote_ip_and_port(ip, port);
}

}  // namespace sim
