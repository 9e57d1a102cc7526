// SPDX-License-Identifier: MIT
#include "tools/agent/PullSessions.h"

#include <openssl/rand.h>

#include <array>
#include <utility>

#include "tools/agent/Errors.h"

namespace tools::agent {
namespace {

constexpr std::size_t MOST_SESSIONS = 128;
constexpr std::size_t MOST_BYTES = std::size_t{16} << 20;

// A client can neither guess nor confuse them.
std::string NewContext() {
  std::array<unsigned char, 16> bits = {};
  if (RAND_bytes(bits.data(), static_cast<int>(bits.size())) != 1) {
    throw OperationError(Status::Failed, "no random numbers");
  }
  std::string text;
  for (const unsigned char byte : bits) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

[[noreturn]] void Unknown() {
  throw OperationError(Status::InvalidEnumerationContext, "there is no such enumeration");
}

}  // namespace

std::string PullSessions::Open(Session session) {
  std::string context = NewContext();
  std::lock_guard<std::mutex> lock(mutex);
  DropExpired();
  std::size_t bytes = session.cursor->Bytes();
  for (const auto& [other, kept] : sessions) bytes += kept.session.cursor->Bytes();
  if (sessions.size() == MOST_SESSIONS || bytes > MOST_BYTES) {
    throw OperationError(Status::ServerLimitsExceeded, "too many enumerations are open");
  }
  const auto ends = Clock::now() + session.timeout;
  sessions.emplace(context, Kept{std::move(session), ends});
  return context;
}

PullSessions::Taken PullSessions::Take(const std::string& context, Space space,
                                       std::size_t client) {
  std::lock_guard<std::mutex> lock(mutex);
  return sessions.extract(Find(context, space, client));
}

PullSessions::Taken PullSessions::Take(const std::string& context, Space space, std::size_t client,
                                       Kind kind) {
  std::lock_guard<std::mutex> lock(mutex);
  const auto found = Find(context, space, client);
  if (found->second.session.kind != kind) Unknown();
  return sessions.extract(found);
}

void PullSessions::Return(Taken taken) {
  std::lock_guard<std::mutex> lock(mutex);
  taken.mapped().ends = Clock::now() + taken.mapped().session.timeout;
  sessions.insert(std::move(taken));
}

// The caller holds the mutex, here and below.
void PullSessions::DropExpired() {
  const auto now = Clock::now();
  for (auto at = sessions.begin(); at != sessions.end();) {
    at = at->second.ends < now ? sessions.erase(at) : std::next(at);
  }
}

PullSessions::Sessions::iterator PullSessions::Find(const std::string& context, Space space,
                                                    std::size_t client) {
  DropExpired();
  const auto found = sessions.find(context);
  if (found == sessions.end() || found->second.session.space != space ||
      found->second.session.client != client) {
    Unknown();
  }
  return found;
}

}  // namespace tools::agent
