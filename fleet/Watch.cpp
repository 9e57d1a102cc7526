// SPDX-License-Identifier: MIT
#include "fleet/Watch.h"

#include <algorithm>
#include <utility>

#include "fleet/Base64.h"

namespace kecpp::fleet {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

constexpr int kOutOfRange = 11;  // gRPC's code

[[noreturn]] void Refuse(const std::string& reason, int code = 0) {
  throw EtcdError(EtcdError::Kind::notDone, code, reason);
}

std::string ClusterOf(const json& answer) {
  const auto header = answer.find("header");
  if (header == answer.end() || !header->is_object()) Refuse("an answer without a header");
  const auto number = header->find("cluster_id");
  return number != header->end() && number->is_string() ? number->get<std::string>() : "";
}

bool IsTrue(const json& line, const char* name) {
  const auto found = line.find(name);
  return found != line.end() && *found == true;
}

void RefuseCanceled(const json& line) {
  if (ReadNumber(line, "compact_revision") != 0) {
    Refuse("the changes from there on have been compacted", kOutOfRange);
  }
  const auto reason = line.find("cancel_reason");
  Refuse("the member ended the watch" +
         (reason != line.end() && reason->is_string() ? ": " + reason->get<std::string>() : ""));
}

WatchEvent ReadEvent(const json& event) {
  const auto entry = event.is_object() ? event.find("kv") : event.end();
  if (entry == event.end()) Refuse("an event without a key");
  const auto type = event.find("type");
  return {type != event.end() && *type == "DELETE", ReadKeyValue(*entry)};
}

std::vector<WatchEvent> ReadEvents(const json& line) {
  std::vector<WatchEvent> events;
  const auto list = line.find("events");
  if (list == line.end() || !list->is_array()) return events;
  events.reserve(list->size());
  for (const json& event : *list) events.push_back(ReadEvent(event));
  return events;
}

}  // namespace

Position ReadPosition(EtcdClient& client, std::string_view key) {
  std::string request = R"({"key":")";
  AppendBase64(request, key);
  const json answer = client.Read("kv/range", request + R"(","limit":"1","keys_only":true})");
  return {ClusterOf(answer), ReadRevision(answer)};
}

Watch::Watch(std::vector<WatchRange> ranges, Position position)
    : cluster(std::move(position.cluster)) {
  for (WatchRange& range : ranges) parts.push_back({std::move(range), position.revision + 1});
}

bool Watch::IsAt(const Position& now) const {
  return now.cluster == cluster && std::all_of(parts.begin(), parts.end(), [&](const Part& part) {
           return part.next <= now.revision + 1;
         });
}

// One request a range, one behind the other in one body: a watch is known by its number from 1 on.
// Fragments keep a line as short as a write may be.
std::string Watch::Request() const {
  std::string request;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    request += R"({"create_request":{"key":")";
    AppendBase64(request, parts[i].range.begin);
    if (!parts[i].range.end.empty()) {
      request += R"(","range_end":")";
      AppendBase64(request, parts[i].range.end);
    }
    request += R"(","start_revision":")" + std::to_string(parts[i].next) + R"(","watch_id":")" +
               std::to_string(i + 1) + R"(","progress_notify":true,"fragment":true}})" + "\n";
  }
  return request;
}

void Watch::Run(EtcdClient& client, std::chrono::milliseconds silence, const UseEvents& use) {
  auto last = Clock::now();
  try {
    client.Stream("watch", Request(), silence, [&](const json& line) {
      TakeLine(line, use);
      last = Clock::now();
      return true;
    });
  } catch (const EtcdError& error) {
    if (error.IsAnswer() || Clock::now() - last < silence) throw;
  }
}

Watch::Part& Watch::PartOf(const json& line) {
  const std::int64_t number = ReadNumber(line, "watch_id");
  if (number < 1 || number > static_cast<std::int64_t>(parts.size())) {
    Refuse("a watch that was not asked for");
  }
  return parts[static_cast<std::size_t>(number - 1)];
}

void Watch::TakeLine(const json& line, const UseEvents& use) {
  if (ClusterOf(line) != cluster) Refuse("another cluster answers than before");
  if (IsTrue(line, "canceled")) RefuseCanceled(line);
  Part& part = PartOf(line);
  if (IsTrue(line, "created")) return;
  std::vector<WatchEvent> events = ReadEvents(line);
  if (events.empty()) {
    // Progress: nothing else happened until then.
    part.next = std::max(part.next, ReadRevision(line) + 1);
    return;
  }
  const std::int64_t revision = events.back().entry.revision;
  use(std::move(events));
  // The rest of a revision may be in the next fragment; what comes twice changes nothing.
  part.next = std::max(part.next, IsTrue(line, "fragment") ? revision : revision + 1);
}

}  // namespace kecpp::fleet
