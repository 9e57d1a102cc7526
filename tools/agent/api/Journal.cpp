// SPDX-License-Identifier: MIT
#include "tools/agent/api/Journal.h"

#include <algorithm>

#include "tools/agent/api/Json.h"

namespace tools::agent::api {
namespace {

using std::chrono::system_clock;

const char* NameOf(kecpp::Change::Type type) {
  using Type = kecpp::Change::Type;
  if (type == Type::added) return "added";
  return type == Type::removed ? "removed" : "changed";
}

std::string ItemText(std::uint64_t id, const Json& time, const KnownChange& known) {
  return Dump({{"id", id},
               {"time", time},
               {"type", NameOf(known.change.type)},
               {"kind", kecpp::NameOf(known.change.kind)},
               {"key", known.change.key},
               {"name", known.name},
               {"fields", known.fields}});
}

std::string MoreText(const KnownChange& known) {
  std::string text;
  if (!known.item.empty()) text += ",\"item\":" + known.item;
  if (!known.hosts) return text;
  text += ",\"hosts\":[";
  for (const std::string& host : *known.hosts) {
    if (&host != &known.hosts->front()) text += ',';
    text += host;
  }
  return text + ']';
}

std::uint64_t FirstNumber() {
  const auto now = system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

// Wakes the streams once the lock is free, which they take first.
class Waking {
 public:
  explicit Waking(std::condition_variable& waited) : news(waited) {}
  ~Waking() { news.notify_all(); }
  Waking(const Waking&) = delete;
  Waking& operator=(const Waking&) = delete;

 private:
  std::condition_variable& news;
};

long long SlotNow() {
  return Journal::Clock::now().time_since_epoch() / Journal::SLOT;
}

}  // namespace

Journal::Journal() : last(FirstNumber()) {}

void Journal::Add(const std::vector<KnownChange>& changes) {
  const auto now = system_clock::now();
  const Json time = TimeText(now);
  const Waking waking(news);
  const std::lock_guard<std::mutex> lock(mutex);
  lastTime = now;
  for (const KnownChange& known : changes) {
    ++last;
    items.push_back(
        {last, known.change.kind, known.change.key, ItemText(last, time, known), MoreText(known)});
    if (items.size() > KEPT) items.pop_front();
  }
  count += changes.size();
  AddToSlot(changes.size());
}

std::uint64_t Journal::Count() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return count;
}

// Slots that have passed without a change are empty.
void Journal::AddToSlot(std::size_t changes) {
  const long long now = SlotNow();
  const auto size = static_cast<long long>(SLOTS);
  for (long long slot = std::max(newestSlot + 1, now - size + 1); slot <= now; ++slot) {
    slots[static_cast<std::size_t>(slot % size)] = 0;
  }
  newestSlot = now;
  slots[static_cast<std::size_t>(now % size)] += changes;
}

std::array<std::size_t, Journal::SLOTS> Journal::Activity() const {
  const std::lock_guard<std::mutex> lock(mutex);
  const long long now = SlotNow();
  const auto size = static_cast<long long>(SLOTS);
  std::array<std::size_t, SLOTS> counts = {};
  for (long long slot = now - size + 1; slot <= std::min(now, newestSlot); ++slot) {
    if (slot > newestSlot - size) {
      counts[static_cast<std::size_t>(slot - now + size - 1)] =
          slots[static_cast<std::size_t>(slot % size)];
    }
  }
  return counts;
}

void Journal::BeginAgain() {
  const Waking waking(news);
  const std::lock_guard<std::mutex> lock(mutex);
  items.clear();
  ++last;
}

void Journal::NoteState() {
  const Waking waking(news);
  const std::lock_guard<std::mutex> lock(mutex);
  ++states;
}

void Journal::End() {
  const Waking waking(news);
  const std::lock_guard<std::mutex> lock(mutex);
  ended = true;
}

bool Journal::HasEnded() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return ended;
}

std::vector<std::string> Journal::Newest(const kecpp::Kind* kind, const std::string* key,
                                         std::size_t limit) const {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::string> texts;
  for (auto item = items.rbegin(); item != items.rend() && texts.size() < limit; ++item) {
    if ((!kind || item->kind == *kind) && (!key || item->key == *key)) texts.push_back(item->json);
  }
  return texts;
}

std::uint64_t Journal::Last() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return last;
}

system_clock::time_point Journal::LastTime() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return lastTime;
}

// The numbers of those that are kept follow each other.
bool Journal::After(std::uint64_t& id, std::vector<Item>& taken) const {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::uint64_t known = id;
  id = last;
  if (known > last || last - known > items.size()) return false;
  taken.assign(items.end() - static_cast<std::ptrdiff_t>(last - known), items.end());
  return true;
}

Journal::Version Journal::Now() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return {last + states, SlotNow()};
}

void Journal::Await(std::uint64_t id, unsigned& state, Clock::time_point deadline) const {
  std::unique_lock<std::mutex> lock(mutex);
  news.wait_until(lock, deadline, [&] { return ended || last != id || states != state; });
  state = states;
}

}  // namespace tools::agent::api
