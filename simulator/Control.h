// SPDX-License-Identifier: MIT
//
// What tests ask of the simulated daemon, as JSON over HTTP under /control/.
//   GET  inventory   the truth, in the form that kecpp-inventory prints
//   GET  stats {"calls":{METHOD:N},"faults":N,"lastFault":TEXT,"sessions":N,"filters":N,"waits":N}
//   POST machine     {"do":"create","name","host"} -> {"id"}; {"do":"remove","id"};
//                    {"do":"move","id","host"}; {"do":"set","id","property","value"}
//   POST host        {"do":"create","name"} -> {"id"}; {"do":"remove","id"}; {"do":"set",...}
//   POST role        {"do":"set","id","name","label","summary","system","privileges"};
//   {"do":"remove","id"} POST privilege   {"do":"set","id","name"}; {"do":"remove","id"} POST
//   permissions [{"principal","roleId","group"}] POST churn       {"rate":N} POST fault
//   {"method","kind","count","fault","delayMs"}; {"kind":"clear"} POST session-lost, restart
//   {"pid":N}, quit
// Texts are XML texts: they go over the wire as they stand.
#pragma once

#include <httplib.h>
#include <functional>

#include "simulator/Churn.h"
#include "simulator/Daemon.h"
#include "simulator/Faults.h"
#include "simulator/Statistics.h"

namespace sim {

struct Controlled {
  Inventory& inventory;
  Daemon& daemon;
  Churn& churn;
  Faults& faults;
  Statistics& statistics;
  std::function<void(const std::string& pid)> restart;
  std::function<void()> quit;
};

void AddControls(httplib::Server& server, Controlled& controlled);

}  // namespace sim
