// SPDX-License-Identifier: MIT
//
// Lines of a network between a client and its servers: forwards connections, and can be cut.
//
// Thread safety: any thread; it has one of its own.
#ifndef KECPP_SIMULATOR_DRIVER_LINES_H
#define KECPP_SIMULATOR_DRIVER_LINES_H

#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace driver {

class Lines {
 public:
  enum class State {
    whole,
    silent,     // nothing passes; what was sent passes late, when the lines are whole again
    oneWay,     // requests pass, their answers late
    resetting,  // connections end with a reset, new ones too
  };

  // To these servers, "SCHEME://127.0.0.1:PORT[,...]". Throws std::runtime_error.
  explicit Lines(const std::string& urls);
  ~Lines();
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  // What the client connects to, in the order of the servers.
  const std::string& Urls() const { return urls; }

  void Set(State state);

 private:
  class Socket;
  class Connection;
  struct Line;

  void Run();
  void Accept(State now);
  void WaitForSomething(State now);

  std::string urls;
  std::list<Line> lines;  // the thread's own, like the next one
  std::list<Connection> connections;
  int wake = -1;
  std::mutex mutex;
  State state = State::whole;  // guarded by `mutex`, like the next one
  bool isEnding = false;
  std::thread thread;
};

}  // namespace driver

#endif
