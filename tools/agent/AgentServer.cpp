// SPDX-License-Identifier: MIT
#include "tools/agent/AgentServer.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "servers/HttplibVersions.h"
#include "tools/agent/HostName.h"
#include "tools/agent/SocketStream.h"

namespace tools::agent {
namespace {

constexpr int REQUESTS_PER_CONNECTION = 1000;
constexpr int ADOPTED_SLICE_US = 100 * 1000;

// The library's own options would let a second server take the same port.
void ShareNoPort(socket_t socket) {
  const int on = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

// Thousands of ranges, or the best compression of a large answer, would cost this process a lot and
// the client nothing. A server may ignore both.
void DropCostlyWishes(httplib::Request& request) {
  request.ranges.clear();
  request.headers.erase("Range");
  request.headers.erase("Accept-Encoding");
}

// The HTTP library takes anything behind a chunk for its end and knows no trailers. It skips lines
// that end with a line feed alone, which other programs take for headers.
bool HasDoubtfulEnd(const httplib::Request& request, const SocketStream& stream) {
  return request.has_header("Transfer-Encoding") || stream.HasBareLineEnd();
}

// The address or the port that a socket is bound to, in numbers; empty when it is none of IP.
std::string NameOf(socket_t socket, int which) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  auto* address = reinterpret_cast<sockaddr*>(&storage);
  char host[NI_MAXHOST] = {}, port[NI_MAXSERV] = {};
  if (getsockname(socket, address, &length) != 0 || address->sa_family == AF_UNIX ||
      getnameinfo(address, length, host, sizeof host, port, sizeof port,
                  NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return "";
  }
  return which == NI_NUMERICHOST ? host : port;
}

bool EndsConnection(const httplib::Response& response) {
  return response.get_header_value("Connection") == "close";
}

// Hands each socket over on the listening thread, which decides whether it is served.
class OnThisThread final : public httplib::TaskQueue {
 public:
  explicit OnThisThread(std::function<void()> whenIdle) : idle(std::move(whenIdle)) {}
  servers::Enqueued enqueue(std::function<void()> handOver) override {
    handOver();
    return servers::Enqueued(true);
  }
  void on_idle() override { idle(); }
  void shutdown() override {}

 private:
  const std::function<void()> idle;
};

}  // namespace

AgentServer::AgentServer(TlsContext context, const Limits& serverLimits)
    : limits(serverLimits), tls(std::move(context)), threads(limits.connections) {
  new_task_queue = [this] { return new OnThisThread([this] { LeaveAdopted(); }); };
  set_payload_max_length(limits.bodyBytes);
  set_keep_alive_max_count(REQUESTS_PER_CONNECTION);
  set_keep_alive_timeout(limits.time.count());
  set_socket_options(ShareNoPort);
  set_exception_handler([](const httplib::Request&, httplib::Response& response,
                           const std::exception_ptr&) { response.status = 500; });
  set_post_routing_handler([](const httplib::Request& request, httplib::Response& response) {
    // A client that begins with the extended method goes on without it when it reads this.
    if (request.method == "M-POST") response.status = 501;
    response.headers.erase("Accept-Ranges");  // the HTTP library promises them to HEAD
    const bool goesOn = request.response_handler && request.response_handler(response);
    if (!goesOn && !EndsConnection(response)) response.set_header("Connection", "close");
  });
}

AgentServer::~AgentServer() {
  Stop();
}

void AgentServer::Get(const char* path, Handler handler) {
  httplib::Server::Get(path, std::move(handler));
  std::string& list = methods[path];
  list = list.empty() ? "GET, HEAD" : "GET, HEAD, " + list;
}

void AgentServer::Post(const char* path, Handler handler) {
  httplib::Server::Post(path, std::move(handler));
  std::string& list = methods[path];
  list += list.empty() ? "POST" : ", POST";
}

void AgentServer::GetBelow(const char* prefix, Handler handler) {
  below[prefix] = std::move(handler);
}

bool AgentServer::AnswerBelow(const httplib::Request& request, httplib::Response& response) const {
  const Handler* handler = HandlerBelow(request.path);
  if (handler) (*handler)(request, response);
  return handler != nullptr;
}

const httplib::Server::Handler* AgentServer::HandlerBelow(const std::string& path) const {
  for (const auto& [prefix, handler] : below) {
    if (path.compare(0, prefix.size(), prefix) == 0) return &handler;
  }
  return nullptr;
}

std::string AgentServer::Methods(const std::string& path) const {
  const auto known = methods.find(path);
  if (known != methods.end()) return known->second;
  return HandlerBelow(path) ? "GET, HEAD" : "";
}

int AgentServer::Bind(const std::string& address, int port) {
  const int bound =
      port != 0 ? (bind_to_port(address, port) ? port : -1) : bind_to_any_port(address);
  if (bound > 0) {
    ::listen(svr_sock_, SOMAXCONN);  // the library's own queue holds five
    return bound;
  }
  throw std::runtime_error("cannot listen on " + address + ":" + std::to_string(port));
}

int AgentServer::Adopt(int socket) {
  int isListening = 0;
  socklen_t length = sizeof isListening;
  getsockopt(socket, SOL_SOCKET, SO_ACCEPTCONN, &isListening, &length);
  svr_sock_ = socket;
  const int port = std::atoi(NameOf(svr_sock_, NI_NUMERICSERV).c_str());
  if (!isListening || port == 0) {
    throw std::runtime_error("the socket that systemd hands over does not listen for TCP");
  }
  isAdopted = true;
  set_idle_interval(0, ADOPTED_SLICE_US);
  return port;
}

std::string AgentServer::Address() const {
  return NameOf(svr_sock_, NI_NUMERICHOST);
}

bool AgentServer::IsLocal() const {
  return IsLoopback(Address());
}

bool AgentServer::Process(httplib::Stream& stream, bool last, bool& closed,
                          const std::function<void(httplib::Request&)>& setUp) {
  return servers::ProcessRequest<httplib::Server>(*this, &AgentServer::process_request, stream,
                                                  last, closed, setUp);
}

void AgentServer::UseTls(TlsContext context) {
  std::lock_guard<std::mutex> lock(mutex);
  tls = std::move(context);
}

TlsContext AgentServer::Tls() {
  std::lock_guard<std::mutex> lock(mutex);
  return tls;
}

// Answers one request on this thread: the HTTP library makes some tables on first use, and several
// threads must not make them at the same time.
void AgentServer::Rehearse() {
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

std::size_t AgentServer::Connections() const {
  std::lock_guard<std::mutex> lock(mutex);
  return connections.size();
}

void AgentServer::Start() {
  Rehearse();
  listener = std::thread([this] { listen_after_bind(); });
}

void AgentServer::Stop() {
  if (!listener.joinable()) return;
  const socket_t adopted = isAdopted ? svr_sock_.load() : INVALID_SOCKET;
  ShutConnections();
  if (!isAdopted) stop();
  listener.join();
  if (isAdopted) ::close(adopted);
  threads.AwaitEnd();
}

// On the listening thread, before each connection and when none comes. The library's own end would
// shut the socket down, for its other owner too: connections that come until the agent runs again
// would be refused. Without a socket the library leaves its loop.
void AgentServer::LeaveAdopted() {
  std::lock_guard<std::mutex> lock(mutex);
  if (isAdopted && stopping) svr_sock_ = INVALID_SOCKET;
}

void AgentServer::ShutConnections() {
  std::lock_guard<std::mutex> lock(mutex);
  stopping = true;
  for (socket_t socket : connections) ::shutdown(socket, SHUT_RDWR);
}

// On the listening thread.
bool AgentServer::process_and_close_socket(socket_t socket) {
  LeaveAdopted();
  const bool isServed = threads.Start([this, socket] {
    Enter(socket);
    Serve(socket);
  });
  if (!isServed) Refuse(socket);
  return isServed;
}

void AgentServer::Enter(socket_t socket) {
  std::lock_guard<std::mutex> lock(mutex);
  connections.insert(socket);
  if (stopping) ::shutdown(socket, SHUT_RDWR);
}

// The socket leaves the set before it is closed: its number may be given away at once.
void AgentServer::Serve(socket_t socket) {
  const TlsContext context = Tls();
  SocketStream stream(socket, context.get(), limits);
  struct Leave {
    AgentServer& server;
    socket_t socket;
    ~Leave() {
      std::lock_guard<std::mutex> lock(server.mutex);
      server.connections.erase(socket);
    }
  } leave{*this, socket};
  if (!stream.Accept()) return;
  int left = REQUESTS_PER_CONNECTION;
  while (left > 0 && stream.AwaitRequest() && Answer(stream, left == 1)) --left;
}

// False when the connection has to end: after a request whose end is in doubt or which was not read
// to its end, such as a request that fails. What the client has sent after it may be a part of it.
// A request whose head cannot be read does not get as far as `setUp`.
bool AgentServer::Answer(SocketStream& stream, bool last) {
  bool closed = false;
  bool goesOn = false;
  const auto setUp = [&](httplib::Request& request) {
    request.ssl = stream.Tls();
    DropCostlyWishes(request);
    const bool doubtful = HasDoubtfulEnd(request, stream);
    // The library leaves this field to its clients. Here the answer's last handler calls it.
    request.response_handler = [&goesOn, doubtful](const httplib::Response& response) {
      return goesOn = !doubtful && response.status < 400 && !EndsConnection(response);
    };
  };
  const bool answered = Process(stream, last, closed, setUp);
  return stream.Flush() && answered && !closed && goesOn;
}

// On the listening thread, which must not wait: the answer fits into an empty socket's buffer.
void AgentServer::Refuse(socket_t socket) {
  static const char ANSWER[] =
      "HTTP/1.1 503 Service Unavailable\r\nRetry-After: 1\r\nContent-Length: 0\r\n"
      "Connection: close\r\n\r\n";
  if (!Tls()) send(socket, ANSWER, sizeof ANSWER - 1, MSG_NOSIGNAL | MSG_DONTWAIT);
  ::shutdown(socket, SHUT_RDWR);
  ::close(socket);
}

}  // namespace tools::agent
