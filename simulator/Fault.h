// SPDX-License-Identifier: MIT
//
// The end of a call that the daemon refuses: the element in the SOAP fault's detail, and its text.
// Thrown by the code that carries calls out.
#ifndef KECPP_SIMULATOR_FAULT_H
#define KECPP_SIMULATOR_FAULT_H

#include <string>

namespace sim {

struct Fault {
  std::string type;  // "NotAuthenticatedFault"
  std::string text;
};

[[noreturn]] inline void Refuse(const std::string& text) {
  throw Fault{"InvalidRequestFault", text};
}

[[noreturn]] inline void RefuseUnauthenticated() {
  throw Fault{"NotAuthenticatedFault", "The session is not authenticated."};
}

}  // namespace sim

#endif
