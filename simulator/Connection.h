// SPDX-License-Identifier: MIT
//
// A client's connection, with or without TLS, as the HTTP library reads and writes it. Unlike the
// library's own it can be ended in any state, by any thread, and keeps the head of the request as
// it came, since the library may drop headers without a value.
//
// Thread safety: End and Reset: any thread. Everything else: the thread that serves it.
#ifndef KECPP_SIMULATOR_CONNECTION_H
#define KECPP_SIMULATOR_CONNECTION_H

#include <httplib.h>
#include <openssl/ssl.h>

#include <atomic>
#include <memory>
#include <string>

namespace sim {

class Connection : public httplib::Stream {
 public:
  // Takes the socket over. `tls` is null without TLS; the handshake is made by the first wait.
  Connection(int socket, SSL_CTX* tls);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // The connection that the calling thread serves; null on any other thread.
  static Connection*& Current();

  // Waits for the next request; false when there will be none.
  bool WaitForRequest();

  // The head of the request, from its first line to the empty one.
  const std::string& Head() const { return head; }

  // Ends the connection in both directions; the peer sees that it was closed.
  void End();
  // The same, but the peer sees an error, and loses what it has not read yet.
  void Reset();

  bool PeerIsGone() const;

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* to, std::size_t size) override;
  ssize_t write(const char* from, std::size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return fd; }
  using httplib::Stream::write;

 private:
  bool Fill();

  const int fd;
  const std::unique_ptr<SSL, decltype(&SSL_free)> tls;
  bool shaken = false;
  std::atomic<bool> ended{false};
  std::string buffer;        // bytes received
  std::size_t position = 0;  // the first one that was not handed out
  std::string head;
  bool headIsWhole = false;
};

}  // namespace sim

#endif
