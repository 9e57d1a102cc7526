// SPDX-License-Identifier: MIT
//
// Serves the HTTP library's handlers on loopback, with a thread for each connection: long polls and
// idle connections delay no other client, and the port can be made to refuse connections.
//
// Thread safety: after Start: any thread.
#ifndef KECPP_SIMULATOR_HTTPSERVER_H
#define KECPP_SIMULATOR_HTTPSERVER_H

#include <httplib.h>

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include "simulator/Certificate.h"
#include "simulator/Connection.h"

namespace sim {

class HttpServer : public httplib::Server {
 public:
  // `tls` is null for plain HTTP.
  explicit HttpServer(TlsContext tls);
  ~HttpServer() override;

  // Takes a port of 127.0.0.1, 0 any free one, and returns it. Throws std::runtime_error.
  int Bind(int port);
  void Start();

  // Ends all connections, except that of the calling thread, and refuses new ones for some time.
  // When it returns the port is closed.
  void Refuse(std::chrono::milliseconds time);

  // Ends all connections except that of the calling thread.
  void EndConnections();

  // Ends everything and waits for the handlers, which must return by themselves.
  void Stop();

 private:
  struct Worker {
    std::thread thread;
    std::unique_ptr<Connection> connection;  // null: it has ended
  };
  class Descriptor;

  void Run();
  void AcceptUntilWoken();
  void RestWhileRefusing();
  void AddWorker(int socket);
  void Serve(Worker& worker);
  void Wake();

  const TlsContext tls;
  std::unique_ptr<Descriptor> reserved;  // keeps the port while nobody listens on it
  std::unique_ptr<Descriptor> wakes;
  int port = 0;
  std::thread thread;

  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  std::list<Worker> workers;
  std::chrono::steady_clock::time_point refuseUntil;
  bool listening = false;
  unsigned long long rests = 0;  // how often the port was closed
  bool stop = false;
};

}  // namespace sim

#endif
