// SPDX-License-Identifier: MIT
//
// A TCP server for tests that reads HTTP requests and answers exactly the bytes it is told to, or
// misbehaves: closes early, hangs.
//
//   RawServer server;                                      // 127.0.0.1, a free port
//   server.Push(Reply::Ok("<a/>"));                        // one reply per request, in this order
//   server.Push(Reply::Raw("HTTP/1.1 200 OK\r\n").AndClose());
//   server.Push(Reply::Ok("never seen").Hanging());
//   ... post to server.Url("/sdk") ...
//   ASSERT_TRUE(server.WaitForRequests(3));
//   EXPECT_EQ("<b/>", server.Requests()[0].body);
//
// Without a pushed reply the handler of SetHandler() is asked, by default one that answers an empty
// 200. A client may send a request once more when a kept connection is closed before any reply
// came: expect repeated requests there.
//
// Thread safety: every operation from any thread. The handler is called on connection threads, one
//   per connection. The destructor ends all connections, hanging ones too, and joins all threads.
#ifndef KECPP_TESTS_SUPPORT_RAWSERVER_H
#define KECPP_TESTS_SUPPORT_RAWSERVER_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// What to answer, and how.
struct Reply {
  std::string bytes;
  bool close = false;  // after the last byte
  bool hangs = false;  // behind the first `hangAfter` bytes
  std::size_t hangAfter = 0;

  // These bytes, whatever they are.
  static Reply Raw(std::string bytes) {
    Reply reply;
    reply.bytes = std::move(bytes);
    return reply;
  }

  // A complete reply with a Content-Length; `headers` are complete lines.
  static Reply Status(const std::string& status, const std::string& body,
                      const std::string& headers = "") {
    return Raw("HTTP/1.1 " + status + "\r\nContent-Type: text/xml; charset=utf-8\r\n" + headers +
               "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  }
  static Reply Ok(const std::string& body, const std::string& headers = "") {
    return Status("200 OK", body, headers);
  }

  // In chunked coding, `chunkSize` bytes a chunk.
  static Reply Chunked(const std::string& body, std::size_t chunkSize) {
    std::ostringstream bytes;
    bytes << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" << std::hex;
    for (std::size_t at = 0; at < body.size(); at += chunkSize) {
      const std::string chunk = body.substr(at, chunkSize);
      bytes << chunk.size() << "\r\n" << chunk << "\r\n";
    }
    return Raw(bytes.str() + "0\r\n\r\n");
  }

  Reply AndClose() && {
    close = true;
    return std::move(*this);
  }

  // Sends nothing until ReleaseHanging(), the client's leaving or the server's end. With `after`
  // the first bytes are sent before that.
  Reply Hanging(std::size_t after = 0) && {
    hangs = true;
    hangAfter = std::min(after, bytes.size());
    return std::move(*this);
  }
};

class RawServer {
 public:
  struct Request {
    std::string head;  // request line and headers, each with its line end
    std::string body;  // as long as its Content-Length says

    // The value of the first header of that name, letter case ignored; empty without one.
    std::string Header(const std::string& name) const {
      const std::string start = "\r\n" + name + ":";
      const char* value = strcasestr(head.c_str(), start.c_str());
      if (value == nullptr) return "";
      value += start.size();
      value += std::strspn(value, " ");
      return std::string(value, std::strcspn(value, "\r"));
    }
  };

  using Handler = std::function<Reply(const Request&)>;

  RawServer() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener, plain, length) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, plain, &length) != 0) {
      throw std::runtime_error("RawServer cannot listen");
    }
    port = ntohs(address.sin_port);
    acceptor = std::thread([this] { Accept(); });
  }

  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  ~RawServer() {
    {
      std::lock_guard<std::mutex> guard(mutex);
      stopping = true;
      ::shutdown(listener, SHUT_RDWR);
      for (const int client : clients) ::shutdown(client, SHUT_RDWR);
    }
    acceptor.join();
    changed.notify_all();
    for (std::thread& thread : threads) thread.join();
    ::close(listener);
  }

  int Port() const { return port; }
  std::string Url(const std::string& path = "/") const {
    return "http://127.0.0.1:" + std::to_string(port) + path;
  }

  void Push(Reply reply) {
    std::lock_guard<std::mutex> guard(mutex);
    script.push_back(std::move(reply));
  }

  void SetHandler(Handler value) {
    std::lock_guard<std::mutex> guard(mutex);
    handler = std::move(value);
  }

  // What was received so far, in order of arrival.
  std::vector<Request> Requests() const {
    std::lock_guard<std::mutex> guard(mutex);
    return requests;
  }

  // Waits until so many requests have arrived. False after ten seconds.
  bool WaitForRequests(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(10),
                            [&] { return requests.size() >= count; });
  }

  // Lets all replies that hang now, and later ones, go on.
  void ReleaseHanging() {
    std::lock_guard<std::mutex> guard(mutex);
    released = true;
    changed.notify_all();
  }

 private:
  void Accept() {
    while (true) {
      const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      std::lock_guard<std::mutex> guard(mutex);
      if (stopping) {
        if (client >= 0) ::close(client);
        return;
      }
      if (client < 0) continue;
      clients.insert(client);
      threads.emplace_back([this, client] { Serve(client); });
    }
  }

  void Serve(int client) {
    std::string pending;
    Request request;
    while (Read(client, pending, request) && Answer(client, Next(request))) {
    }
    std::lock_guard<std::mutex> guard(mutex);
    clients.erase(client);
    ::close(client);
  }

  // Receives until `enough` is true. False when the client is gone before.
  template <typename Enough>
  static bool Fill(int client, std::string& pending, Enough enough) {
    char buffer[65536];
    while (!enough()) {
      const ssize_t count = ::recv(client, buffer, sizeof buffer, 0);
      if (count <= 0) return false;
      pending.append(buffer, static_cast<std::size_t>(count));
    }
    return true;
  }

  // One request off the connection; what arrived behind it stays pending.
  static bool Read(int client, std::string& pending, Request& request) {
    std::size_t end = 0;
    const auto wholeHead = [&] { return (end = pending.find("\r\n\r\n")) != std::string::npos; };
    if (!Fill(client, pending, wholeHead)) return false;
    request.head = pending.substr(0, end + 2);
    pending.erase(0, end + 4);
    const std::size_t length = std::strtoul(request.Header("Content-Length").c_str(), nullptr, 10);
    if (!Fill(client, pending, [&] { return pending.size() >= length; })) return false;
    request.body = pending.substr(0, length);
    pending.erase(0, length);
    return true;
  }

  Reply Next(const Request& request) {
    std::unique_lock<std::mutex> lock(mutex);
    requests.push_back(request);
    changed.notify_all();
    if (!script.empty()) {
      Reply reply = std::move(script.front());
      script.pop_front();
      return reply;
    }
    const Handler answer = handler;
    lock.unlock();
    return answer ? answer(request) : Reply::Ok("");
  }

  // False when the connection is to be closed.
  bool Answer(int client, const Reply& reply) {
    const std::size_t first = reply.hangs ? reply.hangAfter : reply.bytes.size();
    if (!Send(client, reply.bytes.substr(0, first))) return false;
    if (reply.hangs && !Hang(client)) return false;
    return Send(client, reply.bytes.substr(first)) && !reply.close;
  }

  // Looks after the client every few milliseconds: it may leave, which no condition tells.
  bool Hang(int client) {
    std::unique_lock<std::mutex> lock(mutex);
    while (!released && !stopping) {
      char next;
      if (::recv(client, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0) return false;
      changed.wait_for(lock, std::chrono::milliseconds(5));
    }
    return !stopping;
  }

  static bool Send(int client, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = ::send(client, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }

  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int port = 0;
  std::thread acceptor;

  mutable std::mutex mutex;  // guards all below
  std::condition_variable changed;
  std::vector<std::thread> threads;
  std::set<int> clients;
  std::deque<Reply> script;
  Handler handler;
  std::vector<Request> requests;
  bool stopping = false;
  bool released = false;
};

#endif
