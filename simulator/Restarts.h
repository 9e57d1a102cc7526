// SPDX-License-Identifier: MIT
//
// The daemon as a process: its process-id file, and what ends with a restart.
//
// Thread safety: any thread.
#ifndef KECPP_SIMULATOR_RESTARTS_H
#define KECPP_SIMULATOR_RESTARTS_H

#include <string>

#include "simulator/Daemon.h"
#include "simulator/HttpServer.h"

namespace sim {

class Restarts {
 public:
  // `pidFile` may be empty: then there is no such file.
  Restarts(HttpServer& server, Daemon& daemon, const std::string& pidFile);

  // Writes the process-id file; readers see one whole text or the other.
  void WritePid(const std::string& pid);
  void RemovePid();

  void LoseSessions() { daemon.LoseSessions(); }

  // As another process: sessions end, and all connections but that of the calling thread.
  void Restart(const std::string& pid);

 private:
  HttpServer& server;
  Daemon& daemon;
  const std::string pidFile;
};

}  // namespace sim

#endif
