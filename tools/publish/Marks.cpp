// SPDX-License-Identifier: MIT
#include "tools/publish/Marks.h"

#include <algorithm>

#include "fleet/Documents.h"

namespace tools::publish {

void Marks::Add(const std::string& part, std::int64_t time) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto [entry, isNew] = entries.try_emplace(part, Entry{time, next});
    if (!isNew) return;
    ++next;
    order.push_back(&*entry);
    if (order.size() != awaited) return;
  }
  changed.notify_one();
}

std::vector<Mark> Marks::Take(std::size_t most) {
  std::vector<Mark> taken;
  const std::lock_guard<std::mutex> lock(mutex);
  taken.reserve(std::min(most, order.size()));
  while (!order.empty() && taken.size() < most) {
    const auto found = entries.find(order.front()->first);
    order.pop_front();
    auto entry = entries.extract(found);
    taken.push_back({std::move(entry.key()), entry.mapped().changed, entry.mapped().place});
  }
  return taken;
}

void Marks::Return(std::vector<Mark> marks) {
  const std::lock_guard<std::mutex> lock(mutex);
  for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) {
    const auto [entry, isNew] =
        entries.try_emplace(std::move(mark->part), Entry{mark->changed, mark->place});
    if (isNew) order.push_front(&*entry);
  }
}

void Marks::Wait(std::size_t count, Clock::time_point until) {
  std::unique_lock<std::mutex> lock(mutex);
  awaited = count;
  changed.wait_until(lock, until, [&] { return isWoken || order.size() >= count; });
  awaited = 0;
  isWoken = false;
}

void Marks::Wake() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isWoken = true;
  }
  changed.notify_one();
}

std::size_t Marks::Size() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return order.size();
}

double Marks::Age() const {
  const std::lock_guard<std::mutex> lock(mutex);
  if (order.empty()) return 0;
  const std::int64_t age = kecpp::fleet::NowMilliseconds() - order.front()->second.changed;
  return static_cast<double>(std::max<std::int64_t>(age, 0)) / 1000;
}

std::uint64_t Marks::Place() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return next;
}

bool Marks::HasPassed(std::uint64_t place) const {
  const std::lock_guard<std::mutex> lock(mutex);
  return order.empty() || order.front()->second.place >= place;
}

}  // namespace tools::publish
