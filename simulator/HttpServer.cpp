// SPDX-License-Identifier: MIT
#include "simulator/HttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "servers/HttplibVersions.h"

namespace sim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kOn = 1;

int BoundSocket(int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return fd;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &kOn, sizeof(kOn));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return fd;
  close(fd);
  return -1;
}

int PortOf(int fd) {
  sockaddr_in address{};
  socklen_t size = sizeof(address);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

}  // namespace

class HttpServer::Descriptor {
 public:
  explicit Descriptor(int owned) : fd(owned) {
    if (fd < 0) throw std::system_error(errno, std::generic_category());
  }
  ~Descriptor() { close(fd); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  const int fd;
};

HttpServer::HttpServer(TlsContext context)
    : tls(std::move(context)),
      wakes(std::make_unique<Descriptor>(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))) {}

HttpServer::~HttpServer() {
  Stop();
}

int HttpServer::Bind(int wanted) {
  reserved = std::make_unique<Descriptor>(BoundSocket(wanted));
  port = PortOf(reserved->fd);
  // A port on which another process listens can be bound, but not listened on.
  const Descriptor probe(BoundSocket(port));
  if (::listen(probe.fd, 1) != 0) throw std::system_error(errno, std::generic_category());
  return port;
}

void HttpServer::Start() {
  thread = std::thread([this] { Run(); });
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [this] { return listening; });
}

void HttpServer::Wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wakes->fd, &one, sizeof(one));
}

void HttpServer::Refuse(std::chrono::milliseconds time) {
  std::unique_lock<std::mutex> lock(mutex);
  refuseUntil = Clock::now() + time;
  Wake();
  // On a busy machine the port may be open again before this thread goes on.
  const unsigned long long before = rests;
  changed.wait(lock, [&] { return !listening || rests != before || stop; });
  lock.unlock();
  EndConnections();
}

void HttpServer::EndConnections() {
  const std::lock_guard<std::mutex> lock(mutex);
  for (Worker& worker : workers) {
    const bool other = worker.connection.get() != Connection::Current();
    if (worker.connection != nullptr && other) worker.connection->End();
  }
}

void HttpServer::Stop() {
  if (!thread.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stop = true;
    changed.notify_all();
    Wake();
  }
  thread.join();
  EndConnections();
  for (Worker& worker : workers) worker.thread.join();
  workers.clear();
}

void HttpServer::Run() {
  for (;;) {
    AcceptUntilWoken();
    RestWhileRefusing();
    const std::lock_guard<std::mutex> lock(mutex);
    if (stop) return;
  }
}

void HttpServer::AcceptUntilWoken() {
  const Descriptor listener(BoundSocket(port));
  ::listen(listener.fd, 128);
  {
    const std::lock_guard<std::mutex> lock(mutex);
    listening = true;
    changed.notify_all();
  }
  pollfd entries[] = {{listener.fd, POLLIN, 0}, {wakes->fd, POLLIN, 0}};
  while (poll(entries, 2, -1) >= 0 && entries[1].revents == 0) {
    const int accepted = accept4(listener.fd, nullptr, nullptr, SOCK_CLOEXEC);
    if (accepted >= 0) AddWorker(accepted);
  }
}

// The listening socket is closed here.
void HttpServer::RestWhileRefusing() {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t got = ::read(wakes->fd, &count, sizeof(count));
  std::unique_lock<std::mutex> lock(mutex);
  listening = false;
  ++rests;
  changed.notify_all();
  while (!stop && Clock::now() < refuseUntil) changed.wait_until(lock, refuseUntil);
}

void HttpServer::AddWorker(int socket) {
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &kOn, sizeof(kOn));
  const std::lock_guard<std::mutex> lock(mutex);
  for (auto it = workers.begin(); it != workers.end();) {
    if (it->connection != nullptr) {
      ++it;
      continue;
    }
    it->thread.join();
    it = workers.erase(it);
  }
  Worker& worker = workers.emplace_back();
  worker.connection = std::make_unique<Connection>(socket, tls.get());
  worker.thread = std::thread([this, &worker] { Serve(worker); });
}

void HttpServer::Serve(Worker& worker) {
  Connection& connection = *worker.connection;
  Connection::Current() = &connection;
  bool closed = false;
  while (!closed && connection.WaitForRequest()) {
    if (!servers::ProcessRequest<httplib::Server>(*this, &HttpServer::process_request, connection,
                                                  false, closed, nullptr)) {
      break;
    }
  }
  const std::lock_guard<std::mutex> lock(mutex);
  worker.connection.reset();
}

}  // namespace sim
