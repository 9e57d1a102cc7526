// SPDX-License-Identifier: MIT
#include "tools/agent/api/ChangeStream.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace tools::agent::api {
namespace {

constexpr std::chrono::milliseconds REST(100);
constexpr std::chrono::seconds HEARTBEAT(10);

}  // namespace

ChangeStream::ChangeStream(const Journal& changes, Summary& glance, Catalogues& rows,
                           std::optional<std::uint64_t> seen)
    : journal(changes), summary(glance), catalogues(rows), last(seen.value_or(changes.Last())) {}

std::string ChangeStream::Next() {
  const auto heartbeat = Clock::now() + HEARTBEAT;
  while (!journal.HasEnded()) {
    catalogues.Touch();
    const unsigned known = state;
    const std::uint64_t before = last;
    if (!sent.empty())
      journal.Await(last, state, isDue ? std::min(summaryRest, heartbeat) : heartbeat);
    std::this_thread::sleep_until(rest);
    const auto now = Clock::now();
    std::string events = ChangeNews();
    isDue = isDue || state != known || last != before || now >= heartbeat;
    if (isDue && now >= summaryRest) events.insert(0, SummaryNews(now, before));
    if (!events.empty()) return events;
    if (now >= heartbeat) return ": nothing new\n\n";
  }
  return {};
}

// The first one has the number of the change before those that follow, so that a client that comes
// again misses nothing.
std::string ChangeStream::SummaryNews(Clock::time_point now, std::uint64_t before) {
  isDue = false;
  std::string text = summary.SharedText();
  if (text == sent) return {};
  summaryRest = std::chrono::ceil<std::chrono::seconds>(now);
  const std::string number = sent.empty() ? "id: " + std::to_string(before) + "\n" : "";
  sent = std::move(text);
  return "event: summary\n" + number + "data: " + sent + "\n\n";
}

std::string ChangeStream::ChangeNews() {
  std::vector<Journal::Item> items;
  const std::uint64_t before = last;
  if (!journal.After(last, items)) {
    return "event: reset\nid: " + std::to_string(last) + "\ndata: {}\n\n";
  }
  if (last != before) rest = Clock::now() + REST;
  std::string events;
  for (const Journal::Item& item : items) {
    events += "event: change\nid: " + std::to_string(item.id) + "\ndata: " + item.json;
    events.pop_back();  // its brace
    events += item.more + "}\n\n";
  }
  return events;
}

}  // namespace tools::agent::api
