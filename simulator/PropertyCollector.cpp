// SPDX-License-Identifier: MIT
#include "simulator/PropertyCollector.h"

#include <limits>
#include <stdexcept>
#include <unordered_set>

namespace sim {

namespace {

const char* const kSchemaReference = "<obj type=\"";

std::string Obj(const std::string& type, const std::string& id) {
  return kSchemaReference + type + "\">" + id + "</obj>";
}

std::string Change(const Property& property) {
  return "<changeSet><name>" + property.name + "</name><op>assign</op><val" + property.attributes +
         ">" + property.xml + "</val></changeSet>";
}

}  // namespace

PropertyCollector::PropertyCollector(Inventory& objects, unsigned int limit)
    : inventory(objects), maxObjects(limit) {}

// --- sessions ------------------------------------------------------------------------------------

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
  if (found == sessions.end()) {
    throw Fault{"NotAuthenticatedFault", "The session is not authenticated."};
  }
  return found->second;
}

std::string PropertyCollector::CreateFilter(const std::string& session,
                                            const pugi::xml_node& spec) {
  try {
    FilterSpec parsed(spec);
    const std::lock_guard<std::mutex> lock(inventory.Mutex());
    const std::string id =
        "session[" + session.substr(0, 8) + "]filter-" + std::to_string(nextFilter++);
    FindLocked(session).filters.emplace(id, Filter{std::move(parsed), {}, 0, false});
    inventory.Changed().notify_all();
    return id;
  } catch (const std::runtime_error& e) {
    throw Fault{"InvalidRequestFault", std::string("Bad filter: ") + e.what()};
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
  ++FindLocked(session).cancels;
  inventory.Changed().notify_all();
}

unsigned int PropertyCollector::PendingWaits() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  return pendingWaits;
}

unsigned int PropertyCollector::Filters() {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  std::size_t count = 0;
  for (const auto& session : sessions) count += session.second.filters.size();
  return static_cast<unsigned int>(count);
}

// --- waiting -------------------------------------------------------------------------------------

// A version that is not the last answer's means that the caller lacks something: everything is
// reported anew.
void PropertyCollector::BeginWaitLocked(Session& session, const std::string& version) {
  if (session.lastAnswer != 0 && version == std::to_string(session.lastAnswer)) return;
  for (auto& entry : session.filters) {
    entry.second.reported.clear();
    entry.second.since = 0;
    entry.second.complete = false;
  }
}

std::string PropertyCollector::Wait(const std::string& session, const std::string& version) {
  std::unique_lock<std::mutex> lock(inventory.Mutex());
  Session& first = FindLocked(session);
  BeginWaitLocked(first, version);
  const unsigned long long cancels = first.cancels;
  struct Count {
    explicit Count(unsigned int& n) : count(n) { ++count; }
    ~Count() { --count; }
    unsigned int& count;
  } const counted(pendingWaits);
  for (;;) {
    if (shutdown) throw Fault{"RequestCanceledFault", "The daemon is going down."};
    Session& current = FindLocked(session);  // it may have gone while this wait slept
    if (current.cancels != cancels) {
      throw Fault{"RequestCanceledFault", "The request was cancelled."};
    }
    const std::string sets = ReportLocked(current);
    if (!sets.empty()) {
      current.lastAnswer = nextAnswer++;
      return "<version>" + std::to_string(current.lastAnswer) + "</version>" + sets;
    }
    inventory.Changed().wait(lock);
  }
}

std::string PropertyCollector::ReportLocked(Session& session) {
  unsigned int room = maxObjects > 0 ? maxObjects : std::numeric_limits<unsigned int>::max();
  std::string sets;
  for (auto& entry : session.filters) {
    const std::string content = ReportFilterLocked(entry.second, room);
    if (content.empty()) continue;
    sets += "<filterSet><filter type=\"PropertyFilter\">" + entry.first + "</filter>" + content +
            "</filterSet>";
  }
  return sets;
}

// The objects to look at: those that changed, or the whole selection.
std::vector<std::string> PropertyCollector::CandidatesLocked(Filter& filter, bool& all) {
  std::vector<std::string> ids;
  all = !filter.complete || !inventory.ChangedSinceLocked(filter.since, ids);
  for (const std::string& id : ids) {
    Object* object = inventory.FindLocked(id);
    if (object != nullptr && filter.spec.Walks(object->type)) all = true;
  }
  if (all) ids = filter.spec.SelectLocked(inventory);
  return ids;
}

std::string PropertyCollector::ReportFilterLocked(Filter& filter, unsigned int& room) {
  bool all = false;
  const std::vector<std::string> candidates = CandidatesLocked(filter, all);
  std::string content;
  bool finished = true;
  std::unordered_set<std::string> selected;
  for (const std::string& id : candidates) {
    Object* object = inventory.FindLocked(id);
    if (!all && filter.reported.count(id) == 0) continue;
    if (object == nullptr) continue;
    if (all) selected.insert(id);
    if (room == 0) {
      finished = false;
      continue;
    }
    const std::string report = ReportObjectLocked(filter, id, *object);
    if (report.empty()) continue;
    content += report;
    --room;
  }
  for (auto it = filter.reported.begin(); it != filter.reported.end();) {
    const bool gone =
        all ? selected.count(it->first) == 0 : inventory.FindLocked(it->first) == nullptr;
    if (!gone) {
      ++it;
      continue;
    }
    const std::string type = it->first.compare(0, 3, "vm-") == 0     ? "VirtualMachine"
                             : it->first.compare(0, 5, "host-") == 0 ? "HostSystem"
                                                                     : "Task";
    content += "<objectSet><kind>leave</kind>" + Obj(type, it->first) + "</objectSet>";
    it = filter.reported.erase(it);
  }
  if (finished) {
    filter.since = inventory.NowLocked();
    filter.complete = true;
  }
  return content;
}

std::string PropertyCollector::ReportObjectLocked(Filter& filter, const std::string& id,
                                                  Object& object) {
  const std::set<std::string>* paths = filter.spec.PathsOf(object.type);
  if (paths == nullptr) return "";
  const auto known = filter.reported.find(id);
  const bool isNew = known == filter.reported.end();
  const Version since = isNew ? 0 : known->second;
  if (!isNew && object.changedAt <= since) return "";
  std::string changes;
  for (const Property& property : object.properties) {
    const bool wanted = paths->count(property.name) > 0;
    if (wanted && property.changedAt > since) changes += Change(property);
  }
  filter.reported[id] = inventory.NowLocked();
  if (changes.empty() && !isNew) return "";
  return std::string("<objectSet><kind>") + (isNew ? "enter" : "modify") + "</kind>" +
         Obj(object.type, id) + changes + "</objectSet>";
}

}  // namespace sim
