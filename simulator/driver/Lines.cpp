// SPDX-License-Identifier: MIT
#include "simulator/driver/Lines.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace driver {
namespace {

constexpr std::size_t kPiece = 65536;  // bytes that are held for a slow receiver

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

class Lines::Socket {
 public:
  explicit Socket(int opened) : number(opened) {
    if (number < 0) throw std::runtime_error("no socket");
  }
  Socket(Socket&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Socket& operator=(Socket&&) = delete;
  ~Socket() {
    if (number >= 0) close(number);
  }

  static Socket Make() {
    return Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  }
  int Number() const { return number; }
  // The other end sees a reset when it is closed.
  void Reset() const {
    const linger at_once{1, 0};
    setsockopt(number, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  }

 private:
  int number;
};

struct Lines::Line {
  Socket listening;
  int server;  // its port
};

class Lines::Connection {
 public:
  Connection(Socket fromClient, Socket toServer)
      : client(std::move(fromClient)), server(std::move(toServer)) {}

  // Moves what can be moved; false at the end of the connection.
  bool Pump(State now) {
    if (now == State::resetting) {
      Reset();
      return false;
    }
    if (now == State::silent) return true;
    const bool isSound =
        there.Pump(client, server) && (now == State::oneWay || back.Pump(server, client));
    if (!isSound) Reset();
    return isSound && !(there.hasEnded && back.hasEnded);
  }

  // What is worth waking up for.
  void AddTo(std::vector<pollfd>& waited, State now) const {
    if (now == State::silent) return;
    there.AddTo(waited, client, server);
    if (now != State::oneWay) back.AddTo(waited, server, client);
  }

 private:
  struct Way {
    std::string held;
    bool hasEnded = false;

    bool Pump(const Socket& from, const Socket& to) {
      if (held.empty() && !hasEnded && !Receive(from, to)) return false;
      return held.empty() || Send(to);
    }
    bool Receive(const Socket& from, const Socket& to) {
      held.resize(kPiece);
      const ssize_t count = recv(from.Number(), held.data(), held.size(), 0);
      held.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
      if (count == 0) {
        hasEnded = true;
        shutdown(to.Number(), SHUT_WR);
      }
      return count >= 0 || errno == EAGAIN || errno == EINTR;
    }
    bool Send(const Socket& to) {
      const ssize_t count = send(to.Number(), held.data(), held.size(), MSG_NOSIGNAL);
      if (count > 0) held.erase(0, static_cast<std::size_t>(count));
      return count >= 0 || errno == EAGAIN || errno == EINTR;
    }
    void AddTo(std::vector<pollfd>& waited, const Socket& from, const Socket& to) const {
      if (!held.empty()) {
        waited.push_back({to.Number(), POLLOUT, 0});
      } else if (!hasEnded) {
        waited.push_back({from.Number(), POLLIN, 0});
      }
    }
  };

  void Reset() const {
    client.Reset();
    server.Reset();
  }

  Socket client;
  Socket server;
  Way there;
  Way back;
};

Lines::Lines(const std::string& servers) : wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + 1) {
    end = servers.find(',', at);
    const std::string url = servers.substr(at, end == std::string::npos ? end : end - at);
    const std::size_t port = url.rfind(':') + 1;
    Line line{Socket::Make(), std::stoi(url.substr(port))};
    sockaddr_in address = Loopback(0);
    socklen_t length = sizeof address;
    auto* name = reinterpret_cast<sockaddr*>(&address);
    if (bind(line.listening.Number(), name, length) != 0 ||
        listen(line.listening.Number(), 64) != 0 ||
        getsockname(line.listening.Number(), name, &length) != 0) {
      throw std::runtime_error("no free port");
    }
    urls +=
        (urls.empty() ? "" : ",") + url.substr(0, port) + std::to_string(ntohs(address.sin_port));
    lines.push_back(std::move(line));
  }
  thread = std::thread([this] { Run(); });
}

Lines::~Lines() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isEnding = true;
  }
  eventfd_write(wake, 1);
  thread.join();
  close(wake);
}

void Lines::Set(State next) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    state = next;
  }
  eventfd_write(wake, 1);
}

void Lines::Run() {
  while (true) {
    State now;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      if (isEnding) return;
      now = state;
    }
    if (now != State::silent) Accept(now);
    connections.remove_if([now](Connection& connection) { return !connection.Pump(now); });
    WaitForSomething(now);
  }
}

// A server that refuses is a reset for the client.
void Lines::Accept(State now) {
  for (const Line& line : lines) {
    while (true) {
      const int number =
          accept4(line.listening.Number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
      if (number < 0) break;
      Socket client(number);
      Socket server = Socket::Make();
      const sockaddr_in address = Loopback(line.server);
      const bool isConnected =
          now != State::resetting &&
          (connect(server.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0 ||
           errno == EINPROGRESS);
      if (isConnected) {
        connections.emplace_back(std::move(client), std::move(server));
      } else {
        client.Reset();
      }
    }
  }
}

void Lines::WaitForSomething(State now) {
  std::vector<pollfd> waited{{wake, POLLIN, 0}};
  if (now != State::silent) {
    for (const Line& line : lines) waited.push_back({line.listening.Number(), POLLIN, 0});
  }
  for (const Connection& connection : connections) connection.AddTo(waited, now);
  poll(waited.data(), waited.size(), -1);
  eventfd_t ignored;
  eventfd_read(wake, &ignored);
}

}  // namespace driver
