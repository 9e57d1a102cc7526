// SPDX-License-Identifier: MIT
#include "tools/agent/HttpServer.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <stdexcept>
#include <utility>

#include "servers/HttplibVersions.h"
#include "tools/agent/HostName.h"
#include "tools/agent/SocketStream.h"

namespace cimxml {
namespace {

constexpr int REQUESTS_PER_CONNECTION = 1000;

// Set while the listening thread hands over a connection for which there is no thread.
thread_local bool refusing = false;

// Set when what the client has sent after the request that this thread serves may be a part of it:
// when its end is in doubt, or when it was not read to the end, as those that fail.
thread_local bool endsConnection = false;

// The library's own options would let a second server take the same port.
void ShareNoPort(socket_t socket) {
  const int on = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

// Thousands of ranges and the best compression of a large answer would cost the client nothing and
// this process a lot. Both may be refused in silence.
void DropCostlyWishes(httplib::Request& request) {
  request.ranges.clear();
  request.headers.erase("Range");
  request.headers.erase("Accept-Encoding");
}

// The library takes whatever follows a chunk for its end, and no trailer; and it passes lines over
// that end otherwise than they should, which to others are headers.
bool HasDoubtfulEnd(const httplib::Request& request, const SocketStream& stream) {
  return request.has_header("Transfer-Encoding") || stream.HasBareLineEnd();
}

}  // namespace

// A thread for each connection, so that a slow client costs its own thread and nobody else's.
class HttpServer::ConnectionThreads final : public httplib::TaskQueue {
 public:
  explicit ConnectionThreads(unsigned connections) : limit(connections) {}

  servers::Enqueued enqueue(std::function<void()> serve) override {
    if (TakePlace()) {
      try {
        std::thread([this, serve] {
          serve();
          GivePlace();
        }).detach();
        return servers::Enqueued(true);
      } catch (const std::system_error&) {  // no more threads
        GivePlace();
      }
    }
    refusing = true;
    serve();
    refusing = false;
    return servers::Enqueued(true);  // its socket is closed already
  }

  void shutdown() override {
    std::unique_lock<std::mutex> lock(mutex);
    left.wait(lock, [this] { return taken == 0; });
  }

 private:
  bool TakePlace() {
    std::lock_guard<std::mutex> lock(mutex);
    if (taken == limit) return false;
    ++taken;
    return true;
  }

  // The last thing that a connection's thread does: after it this object may be gone.
  void GivePlace() {
    std::lock_guard<std::mutex> lock(mutex);
    --taken;
    left.notify_all();
  }

  const unsigned limit;
  std::mutex mutex;
  std::condition_variable left;
  unsigned taken = 0;  // guarded by `mutex`
};

HttpServer::HttpServer(TlsContext context, const Limits& serverLimits)
    : limits(serverLimits), tls(std::move(context)) {
  new_task_queue = [this] { return new ConnectionThreads(limits.connections); };
  set_payload_max_length(limits.bodyBytes);
  set_keep_alive_max_count(REQUESTS_PER_CONNECTION);
  set_keep_alive_timeout(limits.time.count());
  set_socket_options(ShareNoPort);
  set_exception_handler([](const httplib::Request&, httplib::Response& response,
                           std::exception_ptr) { response.status = 500; });
  set_post_routing_handler([](const httplib::Request& request, httplib::Response& response) {
    // A client that begins with the extended method goes on without it when it reads this.
    if (request.method == "M-POST") response.status = 501;
    endsConnection = endsConnection || response.status >= 400;
    const bool isSaid = request.get_header_value("Connection") == "close";
    if (endsConnection && !isSaid) response.set_header("Connection", "close");
  });
}

HttpServer::~HttpServer() {
  Stop();
}

void HttpServer::Get(const char* path, Handler handler) {
  httplib::Server::Get(path, std::move(handler));
  std::string& list = methods[path];
  list = list.empty() ? "GET, HEAD" : "GET, HEAD, " + list;
}

void HttpServer::Post(const char* path, Handler handler) {
  httplib::Server::Post(path, std::move(handler));
  std::string& list = methods[path];
  list += list.empty() ? "POST" : ", POST";
}

std::string HttpServer::Methods(const std::string& path) const {
  const auto known = methods.find(path);
  return known == methods.end() ? "" : known->second;
}

int HttpServer::Bind(const std::string& address, int port) {
  const int bound =
      port != 0 ? (bind_to_port(address, port) ? port : -1) : bind_to_any_port(address);
  if (bound > 0) {
    ::listen(svr_sock_, SOMAXCONN);  // the library's own queue holds five
    return bound;
  }
  throw std::runtime_error("cannot listen on " + address + ":" + std::to_string(port));
}

bool HttpServer::IsLocal() const {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  auto* address = reinterpret_cast<sockaddr*>(&storage);
  if (getsockname(svr_sock_, address, &length) != 0) return false;
  char text[NI_MAXHOST] = {};
  getnameinfo(address, length, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
  return IsLoopback(text);
}

bool HttpServer::Process(httplib::Stream& stream, bool last, bool& closed,
                         const std::function<void(httplib::Request&)>& setUp) {
  return servers::ProcessRequest<httplib::Server>(*this, &HttpServer::process_request, stream, last,
                                                  closed, setUp);
}

void HttpServer::UseTls(TlsContext context) {
  std::lock_guard<std::mutex> lock(mutex);
  tls = std::move(context);
}

TlsContext HttpServer::Tls() {
  std::lock_guard<std::mutex> lock(mutex);
  return tls;
}

// One request, answered on this thread: tables that the HTTP library makes on first use are then
// made before several threads could use them first.
void HttpServer::Rehearse() {
  static const char REQUEST[] = "GET / HTTP/1.0\r\nRange: bytes=0-\r\n\r\n";
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
  send(ends[1], REQUEST, sizeof REQUEST - 1, MSG_NOSIGNAL);
  {
    SocketStream stream(ends[0], nullptr, limits);
    bool closed = false;
    if (stream.AwaitRequest()) Process(stream, true, closed, DropCostlyWishes);
  }
  ::close(ends[1]);
}

void HttpServer::Start() {
  Rehearse();
  listener = std::thread([this] { listen_after_bind(); });
}

void HttpServer::Stop() {
  if (!listener.joinable()) return;
  ShutConnections();
  stop();
  listener.join();
}

void HttpServer::ShutConnections() {
  std::lock_guard<std::mutex> lock(mutex);
  stopping = true;
  for (socket_t socket : connections) ::shutdown(socket, SHUT_RDWR);
}

bool HttpServer::process_and_close_socket(socket_t socket) {
  if (refusing) {
    Refuse(socket);
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(mutex);
    connections.insert(socket);
    if (stopping) ::shutdown(socket, SHUT_RDWR);
  }
  Serve(socket);
  return true;
}

// The socket leaves the set before it is closed: its number may be given away at once.
void HttpServer::Serve(socket_t socket) {
  const TlsContext context = Tls();
  SocketStream stream(socket, context.get(), limits);
  struct Leave {
    HttpServer& server;
    socket_t socket;
    ~Leave() {
      std::lock_guard<std::mutex> lock(server.mutex);
      server.connections.erase(socket);
    }
  } leave{*this, socket};
  if (!stream.Accept()) return;
  for (int left = REQUESTS_PER_CONNECTION; left > 0 && stream.AwaitRequest(); --left) {
    bool closed = false;
    endsConnection = false;
    const auto setUp = [&](httplib::Request& request) {
      request.ssl = stream.Tls();
      DropCostlyWishes(request);
      endsConnection = HasDoubtfulEnd(request, stream);
    };
    if (!Process(stream, left == 1, closed, setUp) || closed || endsConnection) return;
  }
}

// On the listening thread, which must not wait: the answer fits into an empty socket's buffer.
void HttpServer::Refuse(socket_t socket) {
  static const char ANSWER[] =
      "HTTP/1.1 503 Service Unavailable\r\nRetry-After: 1\r\nContent-Length: 0\r\n"
      "Connection: close\r\n\r\n";
  if (!Tls()) send(socket, ANSWER, sizeof ANSWER - 1, MSG_NOSIGNAL | MSG_DONTWAIT);
  ::shutdown(socket, SHUT_RDWR);
  ::close(socket);
}

}  // namespace cimxml
