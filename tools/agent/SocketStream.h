// SPDX-License-Identifier: MIT
//
// One connection as the HTTP library wants it, plain or TLS, with a bound on everything that a
// client can make it do: how long a request may take to arrive, how large it may be, how slowly an
// answer may be taken.
//
// Thread safety: one thread. Another one may shut the socket down, which ends every wait here.
// Ownership: closes the socket.
#ifndef KECPP_TOOLS_AGENT_SOCKETSTREAM_H
#define KECPP_TOOLS_AGENT_SOCKETSTREAM_H

#include <httplib.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "tools/agent/Limits.h"

namespace tools::agent {

class SocketStream final : public httplib::Stream {
 public:
  // `context` is null for plain connections; it outlives the stream.
  SocketStream(socket_t socket, SSL_CTX* context, const Limits& limits);
  ~SocketStream() override;
  SocketStream(const SocketStream&) = delete;
  SocketStream& operator=(const SocketStream&) = delete;

  // The TLS handshake, if there is one. False when it fails or takes too long.
  bool Accept();

  // Waits until the next request begins; from then on its time and size are counted. False when the
  // client has gone or rests for too long.
  bool AwaitRequest();

  // Sends what write has kept. False when the client does not take it.
  bool Flush() const;

  // True when a line of the request, of what was read by now, ends with a line feed alone.
  bool HasBareLineEnd() const { return bareLineEnd; }

  SSL* Tls() const { return ssl.get(); }

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* to, size_t size) override;
  // Small texts are kept until more follows, or until is_writable or Flush.
  ssize_t write(const char* from, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return fd; }

 private:
  using Clock = std::chrono::steady_clock;
  struct Free {
    void operator()(SSL* tls) const { SSL_free(tls); }
  };

  bool Fill(Clock::time_point deadline);
  ssize_t Receive();
  bool SendAll(std::string_view text) const;
  ssize_t Send(std::string_view text) const;
  bool AwaitClient(ssize_t result) const;
  bool Wait(short events, Clock::time_point deadline) const;
  bool WaitAsTlsWants(int result, Clock::time_point deadline) const;

  const socket_t fd;
  const Limits limits;
  std::unique_ptr<SSL, Free> ssl;
  std::array<char, 16384> buffer;
  std::size_t begin = 0;  // of what was received and not read yet
  std::size_t end = 0;
  std::size_t allowance = 0;  // bytes that the request may still have
  char last = '\0';           // byte that was read
  bool bareLineEnd = false;
  Clock::time_point requestDeadline;
  // The HTTP library asks a constant stream whether the next part can be written.
  mutable std::string kept;          // small parts of an answer that wait for what follows
  mutable Clock::duration patience;  // for which this answer may still wait for its client
};

}  // namespace tools::agent

#endif
