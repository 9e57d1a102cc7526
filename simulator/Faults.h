// SPDX-License-Identifier: MIT
//
// Misbehaviour on demand: which of the next answers go wrong, and how.
//
// Thread safety: any thread.
#pragma once

#include <list>
#include <mutex>
#include <string>

namespace sim {

struct FaultOrder {
  std::string method = "*";  // of which method's answers; "*": of every method's
  std::string kind;          // see IsKnownKind
  std::string fault;         // for "soap-fault": the fault's type, without "Fault"
  unsigned int count = 1;    // how many answers
  unsigned int delayMs = 0;  // "hang": how long; "drip": between two bytes
};

class Faults {
 public:
  static bool IsKnownKind(const std::string& kind);

  void Order(const FaultOrder& order);
  void Clear();

  // The fault for the next answer of a method; false when it is to be right.
  bool Take(const std::string& method, FaultOrder& order);

 private:
  std::mutex mutex;
  std::list<FaultOrder> orders;
};

// Ends the connection of this process whose peer uses that port on the loopback interface, so that
// the peer sees it closed before an answer.
void CloseConnectionFrom(int peerPort);

}  // namespace sim
