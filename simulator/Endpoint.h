// SPDX-License-Identifier: MIT
//
// The SOAP endpoint: checks headers and envelope, carries the call out, and answers, rightly or as
// a fault order says.
#pragma once

#include <httplib.h>

#include <atomic>

#include "simulator/Daemon.h"
#include "simulator/Faults.h"
#include "simulator/Statistics.h"

namespace sim {

class Endpoint {
 public:
  Endpoint(Daemon& served, Faults& ordered, Statistics& counted)
      : daemon(served), faults(ordered), statistics(counted) {}

  // Answers POSTs to the service's path, in any letter case.
  void AddTo(httplib::Server& server);

  // Ends answers that hang or drip on purpose.
  void Shutdown() { shutdown = true; }

 private:
  void Post(const httplib::Request& request, httplib::Response& response);
  void Misbehave(const FaultOrder& order, const std::string& answer,
                 const httplib::Request& request, httplib::Response& response);
  void Drip(const std::string& answer, unsigned int delayMs, httplib::Response& response);
  void Pause(unsigned int milliseconds);

  Daemon& daemon;
  Faults& faults;
  Statistics& statistics;
  std::atomic<bool> shutdown{false};
};

}  // namespace sim
