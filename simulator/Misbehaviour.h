// SPDX-License-Identifier: MIT
//
// Answers that go wrong, each in the way that a fault order names.
#ifndef KECPP_SIMULATOR_MISBEHAVIOUR_H
#define KECPP_SIMULATOR_MISBEHAVIOUR_H

#include <httplib.h>

#include <condition_variable>
#include <mutex>
#include <string>

#include "simulator/Connection.h"
#include "simulator/Faults.h"
#include "simulator/HttpServer.h"
#include "simulator/Restarts.h"

namespace sim {

extern const char* const kXmlContent;  // the content type of right answers

class Misbehaviour {
 public:
  Misbehaviour(HttpServer& http, Restarts& process) : server(http), restarts(process) {}

  // What happens to the daemon before it looks at a call.
  void Strike(const FaultOrder& order);

  // Spoils the answer: changes the response or ends the connection that the calling thread serves.
  void Spoil(const FaultOrder& order, std::string answer, httplib::Response& response);

  // Ends answers that hang or drip.
  void Shutdown();

 private:
  void SpoilConnection(const FaultOrder& order, const std::string& answer);
  void SpoilText(const std::string& kind, std::string answer, httplib::Response& response);
  void Drip(const std::string& answer, unsigned int delayMs, Connection& connection);
  bool Pause(unsigned int milliseconds);  // false when the daemon is going down

  HttpServer& server;
  Restarts& restarts;
  std::mutex mutex;
  std::condition_variable woken;
  bool shutdown = false;
};

}  // namespace sim

#endif
