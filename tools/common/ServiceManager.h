// SPDX-License-Identifier: MIT
//
// What systemd and the agent say to each other: the agent is ready once it knows the inventory, it
// reads its files again, it ends, it is alive; and it may listen on a socket that systemd opened.
// Without systemd nothing of this has an effect.
//
// The messages are a few words in a datagram, as sd_notify(3) documents them, which is less than a
// library for them would be.
//
// Thread safety: any thread, once it is made.
#ifndef KECPP_TOOLS_AGENT_SERVICEMANAGER_H
#define KECPP_TOOLS_AGENT_SERVICEMANAGER_H

#include <kecpp/inventory.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace tools::agent {

class ServiceManager {
 public:
  // Reads the environment and takes out of it what is meant for this process alone: no other thread
  // may use it yet. Throws std::runtime_error when more than one socket is handed over.
  ServiceManager();

  // A listening socket, which is the caller's from now on.
  std::optional<int> Socket() const { return socket; }

  // Called at least each second by the thread that watches the connection. Says once that the agent
  // is ready, when the inventory is known for the first time; shows how the connection is; and says
  // twice in each of the watchdog's intervals that the agent is alive.
  void Look(const kecpp::Status& status);

  // Around reading files again. Both are needed: in between the agent counts as reloading.
  void BeginReload() const;
  void EndReload() const;

  void Stopping() const { Send("STOPPING=1"); }

 private:
  using Clock = std::chrono::steady_clock;

  void ReadWatchdog();
  void ReadSocket();
  void Send(const std::string& message) const;
  void ShowState(const kecpp::Status& status);
  void ShowLife();

  std::string address;  // of the datagrams; empty: nobody asks
  std::optional<int> socket;
  std::chrono::microseconds interval{0};  // between signs of life; zero: nobody asks
  std::atomic<bool> ready{false};
  // For the thread that calls Look:
  Clock::time_point lastSign;
  std::string shown;
};

}  // namespace tools::agent

#endif
