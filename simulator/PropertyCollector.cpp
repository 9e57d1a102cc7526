// SPDX-License-Identifier: MIT
#include "simulator/PropertyCollector.h"

#include <chrono>
#include <limits>
#include <stdexcept>

namespace sim {

namespace {

// How often a wait looks whether its client is still there.
constexpr std::chrono::milliseconds kLook{500};

struct Counted {
  explicit Counted(unsigned int& n) : count(n) { ++count; }
  ~Counted() { --count; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  unsigned int& count;
};

}  // namespace

PropertyCollector::PropertyCollector(Inventory& objects, unsigned int limit)
    : inventory(objects), maxObjects(limit) {}

void PropertyCollector::OpenSession(const std::string& session) {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  sessions[session];
}

void PropertyCollector::CloseSession(const std::string& session) {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  sessions.erase(session);
  inventory.Changed().notify_all();
}

void PropertyCollector::CloseAll() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  sessions.clear();
  inventory.Changed().notify_all();
}

void PropertyCollector::Shutdown() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  shutdown = true;
  inventory.Changed().notify_all();
}

PropertyCollector::Session& PropertyCollector::FindLocked(const std::string& session) {
  const auto found = sessions.find(session);
  if (found == sessions.end()) RefuseUnauthenticated();
  return found->second;
}

std::string PropertyCollector::CreateFilter(const std::string& session,
                                            const pugi::xml_node& element) {
  try {
    Selection asked(element);
    const std::lock_guard<std::mutex> lock(inventory.Mutex());
    Session& owner = FindLocked(session);
    std::string id = "session[" + session.substr(0, 8) + "]filter-" + std::to_string(nextFilter++);
    owner.filters.emplace(id, Filter(std::move(asked)));
    inventory.Changed().notify_all();
    return id;
  } catch (const std::runtime_error& e) {
    Refuse(std::string("Bad filter: ") + e.what());
  }
}

void PropertyCollector::DestroyFilter(const std::string& session, const std::string& filter) {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  if (FindLocked(session).filters.erase(filter) == 0) {
    throw Fault{"ManagedObjectNotFoundFault", "There is no filter " + filter};
  }
}

void PropertyCollector::CancelWait(const std::string& session) {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  ++FindLocked(session).wait;
  inventory.Changed().notify_all();
}

unsigned int PropertyCollector::PendingWaits() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  return pendingWaits;
}

std::size_t PropertyCollector::Filters() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  std::size_t count = 0;
  for (const auto& session : sessions) count += session.second.filters.size();
  return count;
}

void PropertyCollector::BeginWaitLocked(Session& session, const std::string& version) {
  ++session.wait;
  inventory.Changed().notify_all();
  const bool isLast = session.lastAnswer != 0 && version == std::to_string(session.lastAnswer);
  for (auto& [id, filter] : session.filters) {
    if (isLast) {
      filter.Acknowledge();
    } else if (version.empty()) {
      filter.Forget();
    } else {
      filter.RepeatAll();
    }
  }
}

std::string PropertyCollector::Wait(const std::string& session, const std::string& version,
                                    const std::function<bool()>& abandoned) {
  std::unique_lock<std::mutex> lock(inventory.Mutex());
  BeginWaitLocked(FindLocked(session), version);
  const unsigned long long mine = FindLocked(session).wait;
  const Counted counted(pendingWaits);
  for (;;) {
    if (shutdown) throw Fault{"RequestCanceledFault", "The daemon is going down."};
    Session& current = FindLocked(session);  // it may have gone while this wait slept
    if (current.wait != mine) throw Fault{"RequestCanceledFault", "The request was cancelled."};
    if (abandoned()) throw Fault{"RequestCanceledFault", "The client has gone."};
    std::string answer;
    if (ReportLocked(current, answer)) return answer;
    inventory.Changed().wait_for(lock, kLook);
  }
}

bool PropertyCollector::ReportLocked(Session& session, std::string& answer) {
  unsigned int room = maxObjects > 0 ? maxObjects : std::numeric_limits<unsigned int>::max();
  answer = "<version>" + std::to_string(nextAnswer) + "</version>";
  const std::size_t nothing = answer.size();
  for (auto& [id, filter] : session.filters) {
    const std::size_t start = answer.size();
    answer += "<filterSet><filter type=\"PropertyFilter\">" + id + "</filter>";
    const std::size_t head = answer.size();
    filter.ReportLocked(inventory, room, answer);
    if (answer.size() > head) {
      answer += "</filterSet>";
    } else {
      answer.resize(start);
    }
  }
  if (answer.size() == nothing) return false;
  session.lastAnswer = nextAnswer++;
  return true;
}

}  // namespace sim
