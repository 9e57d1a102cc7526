// SPDX-License-Identifier: MIT
//
// Starts the simulated management daemon as a process on a free port, writes the configuration that
// leads an agent to it, and controls it: faults, changes, the true inventory. For tests of an agent
// as much as for those of the library.
//
// Thread safety: one thread at a time for each daemon.
#ifndef KECPP_SIMULATOR_DRIVER_SIMULATOR_H
#define KECPP_SIMULATOR_DRIVER_SIMULATOR_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "simulator/driver/ChildProcess.h"

namespace httplib {
class Client;
}

namespace driver {

using Json = nlohmann::json;

class Simulator {
 public:
  // Starts it on a free port, with these further options, and waits until it listens.
  explicit Simulator(const std::vector<std::string>& options);
  // Several daemons in one process, which lives as long as one of the objects.
  static std::vector<Simulator> Several(int count, const std::vector<std::string>& options);

  // The configuration document that leads an agent to it: by local ticket, or as a user.
  std::string Config() const;
  std::string Config(const std::string& user, const std::string& password) const;
  pid_t Pid() const { return program->process.Pid(); }
  const std::string& TicketFolder() const { return program->folder.path; }
  // A document in a file, for programs that take a path.
  std::string ConfigFile(const std::string& config) const;

  // From now on the controls have one connection: for many orders in short time. An order that the
  // end of the connection overtakes may be given twice.
  void KeepConnection();

  // The inventory as it is now, in the form in which kecpp-inventory prints it.
  Json Truth() { return Ask("GET", "inventory"); }

  // Asks one of the controls: "POST /control/<name>" with `body`. Waits while a fault keeps the
  // daemon's port closed. Throws when it refuses.
  Json Control(const std::string& name, const Json& body = Json::object()) {
    return Ask("POST", name, body.dump());
  }
  void SetMachine(const std::string& id, const std::string& property, const std::string& value) {
    Control("machine", {{"do", "set"}, {"id", id}, {"property", property}, {"value", value}});
  }
  Json Stats() { return Ask("GET", "stats"); }

 private:
  struct Program {
    explicit Program(const std::vector<std::string>& options);
    TemporaryFolder folder;
    ChildProcess process;
  };

  Simulator(std::shared_ptr<Program> of, const std::string& url);
  std::string Document(const std::string& loginInfo) const;
  Json Ask(const std::string& method, const std::string& control, const std::string& body = "");

  std::shared_ptr<Program> program;
  std::string url;                          // of the service
  std::string host;                         // of the controls: scheme, address and port
  std::shared_ptr<httplib::Client> client;  // of kept controls
};

}  // namespace driver

#endif
