// SPDX-License-Identifier: MIT
#include "simulator/Restarts.h"

#include <cstdio>
#include <fstream>

namespace sim {

Restarts::Restarts(HttpServer& http, Daemon& served, const std::string& path)
    : server(http), daemon(served), pidFile(path) {}

void Restarts::WritePid(const std::string& pid) {
  if (pidFile.empty()) return;
  const std::string fresh = pidFile + ".new";
  std::ofstream(fresh) << pid << "\n";
  std::rename(fresh.c_str(), pidFile.c_str());
}

void Restarts::RemovePid() {
  if (!pidFile.empty()) std::remove(pidFile.c_str());
}

void Restarts::Restart(const std::string& pid) {
  WritePid(pid);
  server.EndConnections();
  daemon.LoseSessions();
}

}  // namespace sim
