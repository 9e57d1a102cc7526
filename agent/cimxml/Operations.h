// SPDX-License-Identifier: MIT
//
// Answers CIM operations from the caches.
//
// Thread safety: any number of threads may answer at once.
#ifndef KECPP_AGENT_CIMXML_OPERATIONS_H
#define KECPP_AGENT_CIMXML_OPERATIONS_H

#include <string>

#include "agent/cimxml/CacheGate.h"
#include "agent/cimxml/Request.h"
#include "agent/cimxml/Turns.h"

namespace cimxml {

class Operations {
 public:
  // The gate outlives the object.
  explicit Operations(CacheGate& gate);

  // Waits until the operation can be answered, or never will in time: for the first fill, if it
  // reads caches.
  void Await(const Request& request) const;

  // The whole reply message; an operation that fails is answered with its CIM status. `host` is the
  // name that absolute object paths bear. Throws NotReady. Memory and time are linear in the
  // instances that are answered.
  std::string Answer(const Request& request, const std::string& host) const;

 private:
  CacheGate& gate;
  // Answering is all work and no waiting. More threads at it than processors would only be
  // interrupted while they hold the caches, and let the sync thread wait.
  mutable Turns turns;
};

}  // namespace cimxml

#endif
