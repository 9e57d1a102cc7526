// SPDX-License-Identifier: MIT
#include "tools/common/ServiceManager.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "tools/common/CellText.h"

namespace tools {
namespace {

constexpr int FIRST_SOCKET = 3;  // where systemd puts those that it hands over
constexpr long long MICROSECONDS = 1000000;

// No other thread reads or writes the environment yet.
std::string Take(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
  std::string text = value ? value : "";
  unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
  return text;
}

// Nothing when the text is no number.
std::optional<long long> ReadNumber(const std::string& text) {
  long long number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return {};
  return number;
}

// A begin with @ means an address that is no file.
std::optional<sockaddr_un> AddressOf(const std::string& text, socklen_t& length) {
  sockaddr_un address{};
  if (text.empty() || text.size() >= sizeof address.sun_path) return {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, text.data(), text.size());
  if (text[0] == '@') address.sun_path[0] = '\0';
  length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + text.size() +
                                  (text[0] == '@' ? 0 : 1));
  return address;
}

}  // namespace

ServiceManager::ServiceManager() : address(Take("NOTIFY_SOCKET")) {
  ReadWatchdog();
  ReadSocket();
}

void ServiceManager::ReadWatchdog() {
  const auto microseconds = ReadNumber(Take("WATCHDOG_USEC"));
  const auto process = ReadNumber(Take("WATCHDOG_PID"));
  if (process.value_or(getpid()) != getpid() || microseconds.value_or(0) <= 0) return;
  interval = std::chrono::microseconds(*microseconds / 2);
}

void ServiceManager::ReadSocket() {
  const auto process = ReadNumber(Take("LISTEN_PID"));
  const auto count = ReadNumber(Take("LISTEN_FDS"));
  Take("LISTEN_FDNAMES");
  if (process != getpid() || count.value_or(0) <= 0) return;
  if (*count > 1) throw std::runtime_error("systemd hands over more than one socket");
  fcntl(FIRST_SOCKET, F_SETFD, FD_CLOEXEC);
  socket = FIRST_SOCKET;
}

// What cannot be sent is lost: the program does its work all the same.
void ServiceManager::Send(const std::string& message) const {
  socklen_t length = 0;
  const auto receiver = AddressOf(address, length);
  if (!receiver) return;
  const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (sender < 0) return;
  const timeval patience{1, 0};
  setsockopt(sender, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  sendto(sender, message.data(), message.size(), MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&*receiver), length);
  close(sender);
}

void ServiceManager::Look(bool isReady, const std::string& state) {
  if (address.empty()) return;
  ShowState(isReady, state);
  ShowLife();
}

// A daemon's text cannot add lines, which would be further messages: Printable lets none through.
void ServiceManager::ShowState(bool isReady, const std::string& state) {
  std::string message;
  if (!ready && isReady) {
    ready = true;
    message = "READY=1\n";
  }
  const std::string text = Printable(state);
  if (message.empty() && text == shown) return;
  shown = text;
  Send(message + "STATUS=" + text);
}

void ServiceManager::ShowLife() {
  const auto now = Clock::now();
  if (interval.count() == 0 || now - lastSign < interval) return;
  lastSign = now;
  Send("WATCHDOG=1");
}

void ServiceManager::BeginReload() const {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const long long time = static_cast<long long>(now.tv_sec) * MICROSECONDS + now.tv_nsec / 1000;
  if (ready) Send("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(time));
}

void ServiceManager::EndReload() const {
  if (ready) Send("READY=1");
}

}  // namespace tools
