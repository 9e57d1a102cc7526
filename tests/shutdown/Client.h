// SPDX-License-Identifier: MIT
//
// One service instance of the library in this process, and what it uses of the process.
#ifndef KECPP_TESTS_SHUTDOWN_CLIENT_H
#define KECPP_TESTS_SHUTDOWN_CLIENT_H

#include <kecpp.h>

#include <future>
#include <string>

#include "endtoend/Simulator.h"

namespace shutdowntest {

class Client {
 public:
  // Connects and logs in; `timeout` in seconds is the configuration's.
  Client(endtoend::Simulator& simulator, int timeout);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  KE::Service::KEDataSync& Sync() { return *sync; }

  // Sets up the watch of hosts and machines. False when it was not to be.
  bool Watch();
  // The same on a thread of its own, which Free() lets go of.
  void WatchElsewhere();

  // Frees the instance and waits for the other thread. Returns how long the freeing took.
  long FreeMilliseconds();

 private:
  KE::Service::KEServiceInstManager* const manager;
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
  std::future<bool> elsewhere;
};

// What the process has now. Equal before and after, once the last thread is gone.
struct Belongings {
  long threads, descriptors, blocks;  // blocks of operator new
  bool operator==(const Belongings& other) const;
};
Belongings CountBelongings();
std::ostream& operator<<(std::ostream& out, const Belongings& belongings);

}  // namespace shutdowntest

#endif
