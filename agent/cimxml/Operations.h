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

namespace cimxml {

class Operations {
 public:
  // The gate outlives the object.
  explicit Operations(CacheGate& gate);

  // The whole reply message; an operation that fails is answered with its CIM status. `host` is the
  // name that absolute object paths bear. Throws NotReady. Memory and time are linear in the
  // instances that are answered.
  std::string Answer(const Request& request, const std::string& host) const;

 private:
  CacheGate& gate;
};

}  // namespace cimxml

#endif
