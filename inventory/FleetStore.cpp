// SPDX-License-Identifier: MIT
#include "inventory/FleetStore.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "inventory/FleetFollowerImpl.h"

namespace kecpp {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kPiece = 256;               // objects for which the mutex is held at a time
constexpr std::chrono::seconds kLongestLife(30);  // of a publisher's sign of life

std::size_t IndexOf(Kind kind) {
  return static_cast<std::size_t>(kind);
}

// The links that a kind of object has itself, as keys of another kind.
struct Links {
  Kind to = Kind::host;
  std::vector<std::string> keys;  // sorted
};

Links LinksOf(const fleet::Object& object) {
  if (const auto* machine = std::get_if<Machine>(&object)) {
    if (machine->host) return {Kind::host, {*machine->host}};
  } else if (const auto* role = std::get_if<Role>(&object)) {
    return {Kind::privilege, role->privileges};
  } else if (const auto* identity = std::get_if<Identity>(&object)) {
    return {Kind::role, identity->roles};
  }
  return {};
}

// As the interface promises them, whatever the document has.
void Sort(std::vector<std::string>& keys) {
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
}
void SortLinks(fleet::Object& object) {
  if (auto* role = std::get_if<Role>(&object)) Sort(role->privileges);
  if (auto* identity = std::get_if<Identity>(&object)) Sort(identity->roles);
}

// The field in which an object has the links that others have to it; null for a kind without.
std::vector<std::string>* DerivedOf(fleet::Object& object) {
  if (auto* host = std::get_if<Host>(&object)) return &host->machines;
  if (auto* role = std::get_if<Role>(&object)) return &role->identities;
  if (auto* privilege = std::get_if<Privilege>(&object)) return &privilege->roles;
  return nullptr;
}

std::vector<std::string> Without(const std::vector<std::string>& all,
                                 const std::vector<std::string>& others) {
  std::vector<std::string> left;
  std::set_difference(all.begin(), all.end(), others.begin(), others.end(),
                      std::back_inserter(left));
  return left;
}

// What a follower is told of.
auto Visible(const Site& site) {
  return std::make_tuple(site.state, site.isLive, site.isConnected, site.epoch, site.agent,
                         site.agreed);
}

}  // namespace

bool FleetPlace::IsBehind(const FleetChange& change) const {
  const int changeStage = change.kind ? 1 + static_cast<int>(*change.kind) : 0;
  return stage >= 0 && std::tie(change.site, changeStage, change.key) <= std::tie(site, stage, key);
}

bool FleetStore::Record::IsEmpty() const {
  return !document && !isLive && Size() == 0;
}

std::size_t FleetStore::Record::Size() const {
  std::size_t size = 0;
  for (const Objects& ofKind : objects) size += ofKind.size();
  return size;
}

// --- what comes in -------------------------------------------------------------------------------

void FleetStore::Apply(std::vector<FleetNews>&& news) {
  for (std::size_t at = 0; at < news.size();) {
    const std::lock_guard<std::mutex> lock(mutex);
    const std::size_t end = std::min(news.size(), at + kPiece);
    for (; at < end; ++at) ApplyNoLock(std::move(news[at]));
    WakeNoLock();
  }
}

void FleetStore::ApplyNoLock(FleetNews&& news) {
  const auto [site, isNew] = sites.try_emplace(news.site);
  if (isNew) NoteNoLock(Change::Type::added, site->first, {}, {});
  if (auto* object = std::get_if<ObjectNews>(&news.what)) {
    ApplyObjectNoLock(site, std::move(*object));
  } else if (auto* document = std::get_if<SiteNews>(&news.what)) {
    ChangeSiteNoLock(site, [&](Record& record) {
      record.document = std::move(document->document);
      record.documentReading = reading;
    });
  } else {
    ChangeSiteNoLock(site, [&](Record& record) {
      record.isLive = std::get<LifeNews>(news.what).isLive;
      record.lifeReading = reading;
    });
  }
  if (!site->second.IsEmpty()) return;
  NoteNoLock(Change::Type::removed, site->first, {}, {});
  sites.erase(site);
}

void FleetStore::ApplyObjectNoLock(Records::iterator site, ObjectNews&& news) {
  Record& record = site->second;
  Objects& objects = record.objects[IndexOf(news.kind)];
  const auto found = objects.find(news.key);
  if (!news.object) {
    if (found == objects.end()) return;
    const fleet::Object before = std::move(found->second.object);
    objects.erase(found);
    NoteNoLock(Change::Type::removed, site->first, news.kind, news.key);
    return ChangeLinksNoLock(site, news.key, &before, nullptr);
  }
  record.changed = std::max(record.changed, news.changed);
  SortLinks(*news.object);
  if (found == objects.end()) {
    const auto added = objects.emplace(news.key, Held{std::move(*news.object), reading}).first;
    NoteNoLock(Change::Type::added, site->first, news.kind, news.key);
    return ChangeLinksNoLock(site, news.key, nullptr, &added->second.object);
  }
  found->second.reading = reading;
  if (found->second.object == *news.object) return;
  const fleet::Object before = std::exchange(found->second.object, std::move(*news.object));
  NoteNoLock(Change::Type::changed, site->first, news.kind, news.key);
  ChangeLinksNoLock(site, news.key, &before, &found->second.object);
}

// A new or lost link is a change of both ends; this is for the other one.
void FleetStore::ChangeLinksNoLock(Records::iterator site, const std::string& key,
                                   const fleet::Object* before, const fleet::Object* now) {
  const Links old = before ? LinksOf(*before) : Links{};
  const Links present = now ? LinksOf(*now) : Links{};
  Record& record = site->second;
  const Kind to = before && !old.keys.empty() ? old.to : present.to;
  auto& links = record.links[IndexOf(to)];
  const auto note = [&](const std::string& end) {
    if (record.objects[IndexOf(to)].count(end) == 0) return;
    NoteNoLock(Change::Type::changed, site->first, to, end);
  };
  for (const std::string& end : Without(old.keys, present.keys)) {
    const auto keys = links.find(end);
    keys->second.erase(key);
    if (keys->second.empty()) links.erase(keys);
    note(end);
  }
  for (const std::string& end : Without(present.keys, old.keys)) {
    links[end].insert(key);
    note(end);
  }
}

void FleetStore::ChangeSiteNoLock(Records::iterator site,
                                  const std::function<void(Record&)>& change) {
  Record& record = site->second;
  const Site before = SiteNoLock(site->first, record);
  change(record);
  const Site now = SiteNoLock(site->first, record);
  if (Visible(before) == Visible(now)) return;
  if (before.IsTrue() && !now.IsTrue()) {
    // The sign of life ends that long after the publisher.
    record.trueUntil = Clock::now() - (now.isLive ? milliseconds(0) : milliseconds(kLongestLife));
  }
  NoteNoLock(Change::Type::changed, site->first, {}, {});
}

void FleetStore::BeginReading() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++reading;
}

void FleetStore::EndReading() {
  for (std::optional<std::string> name = SiteAfter({}); name; name = SiteAfter(name)) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto site = sites.find(*name);
    if (site != sites.end()) RemoveUnreadNoLock(site);
  }
  const std::lock_guard<std::mutex> lock(mutex);
  isFilled = true;
  WakeNoLock();
}

void FleetStore::RemoveUnreadNoLock(Records::iterator site) {
  Record& record = site->second;
  std::vector<FleetNews> gone;
  for (std::size_t kind = 0; kind < record.objects.size(); ++kind) {
    for (const auto& [key, held] : record.objects[kind]) {
      if (held.reading == reading) continue;
      gone.push_back({site->first, ObjectNews{static_cast<Kind>(kind), key, {}, 0}});
    }
  }
  if (record.document && record.documentReading != reading) {
    gone.push_back({site->first, SiteNews{}});
  }
  if (record.isLive && record.lifeReading != reading) {
    gone.push_back({site->first, LifeNews{false}});
  }
  for (FleetNews& news : gone) ApplyNoLock(std::move(news));
}

// --- followers -----------------------------------------------------------------------------------

void FleetStore::Add(const std::shared_ptr<FleetFollower::Impl>& follower) {
  const std::lock_guard<std::mutex> lock(mutex);
  followers.erase(std::remove_if(followers.begin(), followers.end(),
                                 [](const auto& one) { return one.expired(); }),
                  followers.end());
  followers.push_back(follower);
  if (isClosed) follower->CloseNoLock();
}

void FleetStore::Close() {
  const std::lock_guard<std::mutex> lock(mutex);
  isClosed = true;
  CloseFollowersNoLock();
}

void FleetStore::Clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  CloseFollowersNoLock();
  sites.clear();
  isFilled = false;
}

void FleetStore::CloseFollowersNoLock() {
  for (const auto& follower : followers) {
    if (const auto living = follower.lock()) living->CloseNoLock();
  }
}

void FleetStore::NoteNoLock(Change::Type type, const std::string& site, std::optional<Kind> kind,
                            const std::string& key) {
  if (!isFilled) return;  // followers begin behind that
  for (const auto& follower : followers) {
    if (const auto living = follower.lock()) living->NoteNoLock({type, site, kind, key});
  }
}

void FleetStore::WakeNoLock() {
  if (!isFilled) return;
  for (const auto& follower : followers) {
    if (const auto living = follower.lock()) living->WakeNoLock();
  }
}

std::vector<FleetChange> FleetStore::WalkNoLock(FleetPlace& place, std::size_t most) const {
  std::vector<FleetChange> walked;
  auto site = sites.lower_bound(place.site);
  for (; site != sites.end() && walked.size() < most; ++site) {
    if (place.stage < 0 || site->first != place.site) {
      place = {site->first, 0, {}};
      walked.push_back({Change::Type::added, site->first, {}, {}});
    }
    for (int stage = std::max(1, place.stage); stage <= 5; ++stage) {
      const Objects& objects = site->second.objects[static_cast<std::size_t>(stage - 1)];
      auto at = stage == place.stage ? objects.upper_bound(place.key) : objects.begin();
      for (; at != objects.end() && walked.size() < most; ++at) {
        walked.push_back(
            {Change::Type::added, site->first, static_cast<Kind>(stage - 1), at->first});
        place.stage = stage;
        place.key = at->first;
      }
    }
  }
  return walked;
}

// --- reading -------------------------------------------------------------------------------------

Site FleetStore::SiteNoLock(const std::string& name, const Record& record) const {
  Site site;
  site.name = name;
  site.isLive = record.isLive;
  site.objects = record.Size();
  std::int64_t known = record.changed;
  if (record.document) {
    const fleet::SiteDocument& document = *record.document;
    site.state = document.isComplete ? Site::State::complete : Site::State::syncing;
    site.isConnected = document.isConnected;
    site.epoch = document.epoch;
    site.agent = document.agent;
    const std::int64_t agreed = fleet::ReadTime(document.agreed).value_or(0);
    site.agreed = Clock::time_point(milliseconds(agreed));
    known = std::max(known, agreed);
  }
  const auto now = Clock::now();
  site.asOf =
      site.IsTrue() ? now : std::max(record.trueUntil, Clock::time_point(milliseconds(known)));
  site.asOf = std::min(site.asOf, now);  // of a clock that is ahead
  return site;
}

std::vector<Site> FleetStore::Sites() const {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<Site> all;
  all.reserve(sites.size());
  for (const auto& [name, record] : sites) all.push_back(SiteNoLock(name, record));
  return all;
}

std::optional<Site> FleetStore::FindSite(const std::string& name) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto site = sites.find(name);
  if (site == sites.end()) return {};
  return SiteNoLock(name, site->second);
}

fleet::Object FleetStore::WithLinks(const Record& record, const Held& held) {
  fleet::Object object = held.object;
  std::vector<std::string>* derived = DerivedOf(object);
  if (derived == nullptr) return object;
  const std::string& key =
      std::visit([](const auto& copy) -> const std::string& { return copy.key; }, object);
  const auto& links = record.links[object.index()];
  const auto keys = links.find(key);
  if (keys != links.end()) derived->assign(keys->second.begin(), keys->second.end());
  return object;
}

std::optional<fleet::Object> FleetStore::Find(const std::string& site, Kind kind,
                                              const std::string& key) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto record = sites.find(site);
  if (record == sites.end()) return {};
  const Objects& objects = record->second.objects[IndexOf(kind)];
  const auto found = objects.find(key);
  if (found == objects.end()) return {};
  return WithLinks(record->second, found->second);
}

std::size_t FleetStore::Count(const std::string& site, Kind kind) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto record = sites.find(site);
  return record == sites.end() ? 0 : record->second.objects[IndexOf(kind)].size();
}

std::size_t FleetStore::Count(Kind kind) const {
  const std::lock_guard<std::mutex> lock(mutex);
  std::size_t count = 0;
  for (const auto& [name, record] : sites) count += record.objects[IndexOf(kind)].size();
  return count;
}

std::vector<fleet::Object> FleetStore::Next(const std::string& site, Kind kind,
                                            const std::optional<std::string>& after,
                                            std::size_t most) const {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<fleet::Object> next;
  const auto record = sites.find(site);
  if (record == sites.end()) return next;
  const Objects& objects = record->second.objects[IndexOf(kind)];
  auto at = after ? objects.upper_bound(*after) : objects.begin();
  for (; at != objects.end() && next.size() < most; ++at) {
    next.push_back(WithLinks(record->second, at->second));
  }
  return next;
}

std::optional<std::string> FleetStore::SiteAfter(const std::optional<std::string>& after) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto site = after ? sites.upper_bound(*after) : sites.begin();
  if (site == sites.end()) return {};
  return site->first;
}

}  // namespace kecpp
