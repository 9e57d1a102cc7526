// SPDX-License-Identifier: MIT
//
// The SOAP endpoint: checks headers and envelope, carries the call out, and answers, correctly or
// as a fault order says.
#ifndef KECPP_SIMULATOR_ENDPOINT_H
#define KECPP_SIMULATOR_ENDPOINT_H

#include <httplib.h>

#include <string>

#include "simulator/Daemon.h"
#include "simulator/Faults.h"
#include "simulator/HttpServer.h"
#include "simulator/Misbehaviour.h"
#include "simulator/Statistics.h"

namespace sim {

class Endpoint {
 public:
  Endpoint(Daemon& daemon, Faults& faults, Misbehaviour& misbehaviour, Statistics& statistics);

  // Answers POSTs to the service's path, in any letter case.
  void AddTo(HttpServer& server);

 private:
  void Post(const httplib::Request& request, httplib::Response& response);
  std::string CarryOut(const SoapCall& call, std::string& cookie, const FaultOrder* order);

  Daemon& daemon;
  Faults& faults;
  Misbehaviour& misbehaviour;
  Statistics& statistics;
};

}  // namespace sim

#endif
