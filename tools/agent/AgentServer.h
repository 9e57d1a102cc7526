// SPDX-License-Identifier: MIT
//
// An HTTP server with limits: the HTTP library reads requests and writes answers; connections,
// their threads, their time and TLS are handled here.
//
// Thread safety: routes are added before Start; handlers run on the connections' threads, many at
// once. Bind, Adopt, Start and Stop are called by one thread.
#ifndef KECPP_TOOLS_AGENT_AGENTSERVER_H
#define KECPP_TOOLS_AGENT_AGENTSERVER_H

#include <httplib.h>

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "tools/agent/ConnectionThreads.h"
#include "tools/agent/Limits.h"
#include "tools/agent/TlsContext.h"

namespace tools::agent {

class SocketStream;

class AgentServer final : private httplib::Server {
 public:
  // Without a TLS context it serves plain HTTP.
  AgentServer(TlsContext tls, const Limits& limits);
  ~AgentServer() override;

  using httplib::Server::set_pre_routing_handler;

  // Serve a path; a path may have both.
  void Get(const char* path, Handler handler);
  void Post(const char* path, Handler handler);

  // Serves every path that begins so, as far as AnswerBelow is called. The path is decoded; a
  // handler that must know an encoded slash reads the request's target.
  void GetBelow(const char* prefix, Handler handler);

  // Answers a request for such a path; false for another. The HTTP library's own routes are regular
  // expressions, whose cost a path must not decide.
  bool AnswerBelow(const httplib::Request& request, httplib::Response& response) const;

  // The methods that a path serves, as an Allow header lists them; empty for an unknown path.
  std::string Methods(const std::string& path) const;

  // Takes the port, a free one for 0, and gives its number. Throws std::runtime_error.
  int Bind(const std::string& address, int port);

  // Serves on a socket that listens already and has another owner, who goes on listening when this
  // server stops; gives the port. The descriptor is the server's from now on. Throws
  // std::runtime_error for a socket of another kind.
  int Adopt(int socket);

  // The address that it listens on, in numbers.
  std::string Address() const;

  // Whether only programs of this machine reach the port that was taken.
  bool IsLocal() const;

  // Uses another certificate for new connections. Any thread may call it, for a server that was
  // made with a context.
  void UseTls(TlsContext context);

  // How many clients are connected.
  std::size_t Connections() const;

  // Serves, on threads that it makes.
  void Start();

  // Takes no more connections, ends those there are and waits for their threads.
  void Stop();

 private:
  const Handler* HandlerBelow(const std::string& path) const;
  bool process_and_close_socket(socket_t socket) override;
  void Enter(socket_t socket);
  void Serve(socket_t socket);
  bool Answer(SocketStream& stream, bool last);
  bool Process(httplib::Stream& stream, bool last, bool& closed,
               const std::function<void(httplib::Request&)>& setUp);
  void Rehearse();
  void Refuse(socket_t socket);
  void ShutConnections();
  void LeaveAdopted();

  TlsContext Tls();

  const Limits limits;
  bool isAdopted = false;
  std::map<std::string, std::string> methods;  // by path; constant once it serves, as the next
  std::map<std::string, Handler> below;        // by prefix
  mutable std::mutex mutex;
  TlsContext tls;                  // guarded by `mutex`
  std::set<socket_t> connections;  // guarded by `mutex`
  bool stopping = false;           // guarded by `mutex`
  ConnectionThreads threads;
  std::thread listener;
};

}  // namespace tools::agent

#endif
