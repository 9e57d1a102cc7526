// SPDX-License-Identifier: MIT
//
// Misbehaviour on demand: which of the next calls go wrong, and how.
//
// Thread safety: any thread.
#ifndef KECPP_SIMULATOR_FAULTS_H
#define KECPP_SIMULATOR_FAULTS_H

#include <list>
#include <mutex>
#include <string>

namespace sim {

// The call is not carried out:
//   refuse        the connection is reset and the port closed for `delayMs` (1000)
//   close-before  the connection is closed
//   hang          nothing happens for `delayMs` (ten minutes), then the connection is closed
//   garbage, empty, http500  an answer of 200 that is no XML, or nothing; a page of HTML
//   soap-fault    the fault `fault`; soap-fault-no-detail the same without the detail
//   restart       as another process: the process-id file changes, sessions and connections end
//   pid-gone      the process-id file is removed and the connection closed
//   huge          an answer of 100 MB without line ends
// The call is carried out:
//   session-lost  after every session has ended
//   lost-reply    the connection is closed before the answer
//   close-middle  the connection is reset in the middle of the answer
//   truncate-wrong-length  it is closed there, though the head announces the whole answer
//   truncate      half of the answer, announced as such
//   wrong-prefix  the envelope's elements have another prefix
//   no-body       an envelope without a body
//   malformed-set one change set of the answer is closed by another tag
//   drip          the answer comes byte by byte, `delayMs` apart
struct FaultOrder {
  std::string method = "*";  // which method's calls; "*": every method's
  std::string kind;
  std::string fault;         // without the ending "Fault"
  unsigned int count = 1;    // how many calls
  unsigned int delayMs = 0;  // 0: as said above
};

class Faults {
 public:
  static bool IsKnown(const std::string& kind);
  static bool CarriesOut(const std::string& kind);

  void Order(const FaultOrder& order);
  void Clear();

  // The fault for the next call of a method; false when it is to go right.
  bool Take(const std::string& method, FaultOrder& order);

 private:
  std::mutex mutex;
  std::list<FaultOrder> orders;
};

}  // namespace sim

#endif
