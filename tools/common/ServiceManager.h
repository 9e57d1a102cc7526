// SPDX-License-Identifier: MIT
//
// What systemd and a program say to each other: the program is ready, it reads its files again, it
// ends, it is alive; and it may listen on a socket that systemd opened. Without systemd nothing of
// this has an effect.
//
// The messages are a few words in a datagram, as sd_notify(3) documents them, which is less than a
// library for them would be.
//
// Thread safety: any thread, once it is made.
#ifndef KECPP_TOOLS_COMMON_SERVICEMANAGER_H
#define KECPP_TOOLS_COMMON_SERVICEMANAGER_H

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace tools {

class ServiceManager {
 public:
  // Reads the environment and takes out of it what is meant for this process alone: no other thread
  // may use it yet. Throws std::runtime_error when more than one socket is handed over.
  ServiceManager();

  // A listening socket, which is the caller's from now on.
  std::optional<int> Socket() const { return socket; }

  // Called at least each second by a thread that goes on as long as the program is sound. Says once
  // that the program is ready, when `isReady` for the first time; shows `state`, a line, when that
  // is another than before; and says twice in each of the watchdog's intervals that the program is
  // alive.
  void Look(bool isReady, const std::string& state);

  // Around reading files again. Both are needed: in between the program counts as reloading.
  void BeginReload() const;
  void EndReload() const;

  void Stopping() const { Send("STOPPING=1"); }

 private:
  using Clock = std::chrono::steady_clock;

  void ReadWatchdog();
  void ReadSocket();
  void Send(const std::string& message) const;
  void ShowState(bool isReady, const std::string& state);
  void ShowLife();

  std::string address;  // of the datagrams; empty: nobody asks
  std::optional<int> socket;
  std::chrono::microseconds interval{0};  // between signs of life; zero: nobody asks
  std::atomic<bool> ready{false};
  // For the thread that calls Look:
  Clock::time_point lastSign;
  std::string shown;
};

}  // namespace tools

#endif
