// SPDX-License-Identifier: MIT
//
// What tests ask of the simulated daemon, as JSON over HTTP under /control/. Texts are XML texts:
// they go over the wire as they are.
#ifndef KECPP_SIMULATOR_CONTROL_H
#define KECPP_SIMULATOR_CONTROL_H

#include <functional>
#include <string>

#include "simulator/Churn.h"
#include "simulator/Daemon.h"
#include "simulator/Faults.h"
#include "simulator/HttpServer.h"
#include "simulator/Restarts.h"
#include "simulator/Statistics.h"

namespace sim {

struct Controlled {
  Inventory& inventory;
  Daemon& daemon;
  Churn& churn;
  Faults& faults;
  Statistics& statistics;
  HttpServer& server;
  Restarts& restarts;
  std::function<void()> quit;  // called when the answer is on its way
};

// clang-format off
// Adds these to the server:
//   GET  inventory     the truth, in the form that kecpp-inventory prints
//   GET  stats         {"calls":{METHOD:N},"faults":N,"lastFault":TEXT,"sessions":N,"filters":N,
//                       "waits":N}
//   POST machine       {"do":"create","name","host"} -> {"id"}; {"do":"remove","id"};
//                      {"do":"move","id","host"}; {"do":"set","id","property","value"}
//   POST host          {"do":"create","name"} -> {"id"}; {"do":"remove","id"}; {"do":"set",...}
//   POST role          {"do":"set","id","name","label","summary","system","privileges"};
//                      {"do":"remove","id"}
//   POST privilege     {"do":"set","id","name"}; {"do":"remove","id"}
//   POST permissions   [{"principal","roleId","group"}]
//   POST churn         {"rate":N}: changes per second; 0 has ended them when it is answered
//   POST fault         {"method","kind","count","fault","delayMs"}, see FaultOrder; "refuse" without
//                      "method" closes the port at once; {"kind":"clear"} takes all orders back
//   POST session-lost  every session ends, its wait with a fault
//   POST restart       {"pid":N}: sessions and connections end, the process-id file changes
//   POST quit          the process ends
// clang-format on
// What cannot be done is answered with status 400 and a text. `controlled` outlives the server.
void AddControls(Controlled& controlled);

}  // namespace sim

#endif
