// SPDX-License-Identifier: MIT
#include "simulator/Sessions.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <random>

#include "simulator/Fault.h"

namespace sim {

namespace {

std::string Random() {
  std::random_device source;
  std::string text;
  char word[16];
  for (int i = 0; i < 4; ++i) {
    std::snprintf(word, sizeof(word), "%08x", source());
    text += word;
  }
  return text;
}

// Only this user may read it, from its first byte on.
bool WriteSecret(const std::string& path, const std::string& text) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0) return false;
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return close(fd) == 0 && written;
}

// All daemons of the process may have one folder.
std::string NextTicketName() {
  static std::atomic<unsigned long> next{0};
  return "/ticket-" + std::to_string(getpid()) + '-' + std::to_string(next++);
}

}  // namespace

Sessions::Sessions(const Account& given) : account(given) {}

std::string Sessions::IssueTicket(const std::string& user) {
  if (user != account.user) throw Fault{"InvalidLoginFault", "There is no user " + user};
  if (account.ticketFolder.empty()) Refuse("This daemon hands no local tickets out.");
  const std::string password = Random() + "<&>";  // a client that sends it as XML has to escape it
  const std::lock_guard<std::mutex> lock(mutex);
  std::string path = account.ticketFolder + NextTicketName();
  if (!WriteSecret(path, password)) Refuse("The password file cannot be written.");
  tickets[password] = user;
  return path;
}

std::string Sessions::Login(const std::string& user, const std::string& password,
                            const std::string& cookie) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto ticket = tickets.find(password);
  const bool byTicket = ticket != tickets.end() && ticket->second == user;
  if (!byTicket && (user != account.user || password != account.password)) {
    throw Fault{"InvalidLoginFault", "Login refused."};
  }
  if (cookies.count(cookie) > 0) throw Fault{"InvalidStateFault", "Already logged in."};
  if (byTicket) tickets.erase(ticket);
  return *cookies.insert(Random()).first;
}

void Sessions::Logout(const std::string& cookie) {
  const std::lock_guard<std::mutex> lock(mutex);
  cookies.erase(cookie);
}

void Sessions::LogoutAll() {
  const std::lock_guard<std::mutex> lock(mutex);
  cookies.clear();
}

void Sessions::Check(const std::string& cookie) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (cookies.count(cookie) == 0) RefuseUnauthenticated();
}

std::size_t Sessions::Count() {
  const std::lock_guard<std::mutex> lock(mutex);
  return cookies.size();
}

}  // namespace sim
