// SPDX-License-Identifier: MIT
//
// A member of a cluster for what is hard to get from a real one: a map of keys, and a script of
// what becomes of each watch. It shares no code with the client.
//
// Thread safety: Change, the scripts and the counters from any thread.
#ifndef KECPP_TESTS_FLEET_FAKEGATEWAY_H
#define KECPP_TESTS_FLEET_FAKEGATEWAY_H

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fleet/Base64.h"
#include "support/RawServer.h"

namespace kecpp::fleet {

class FakeGateway {
 public:
  using Json = nlohmann::json;
  using Script = std::function<Reply()>;

  FakeGateway() {
    server.SetHandler([this](const RawServer::Request& request) { return Answer(request); });
  }

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(server.Port()); }

  // An empty value removes the key. The line that a watch gives of it.
  std::string Change(const std::string& key, const std::string& value) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++revision;
    keys.erase(key);
    if (!value.empty()) keys[key] = {value, revision};
    Json event = {{"kv", Entry(key, value, revision)}};
    if (value.empty()) event["type"] = "DELETE";
    const char* const number = key[0] == 'i' ? "1" : key[0] == 's' ? "2" : "3";
    return LineNoLock({{"watch_id", number}, {"events", {event}}});
  }

  // A line of a stream.
  std::string Line(const Json& result) {
    const std::lock_guard<std::mutex> lock(mutex);
    return LineNoLock(result);
  }

  // From now on it is another cluster, or one that was set back.
  void Become(const std::string& otherCluster, std::int64_t otherRevision) {
    const std::lock_guard<std::mutex> lock(mutex);
    cluster = otherCluster;
    revision = otherRevision;
  }

  // The next so many requests that have a token are refused.
  void RefuseTokens(int count) {
    const std::lock_guard<std::mutex> lock(mutex);
    refusedTokens = count;
  }

  // What becomes of the next watch; without one it is silent.
  void Push(Script script) {
    const std::lock_guard<std::mutex> lock(mutex);
    scripts.push_back(std::move(script));
  }

  std::size_t Watches() { return Matching("/v3/watch").size(); }
  std::size_t Logins() { return Matching("/v3/auth/authenticate").size(); }
  // The revisions that a watch asked for, by range.
  std::vector<std::string> From(std::size_t watch) {
    std::vector<std::string> from;
    std::istringstream lines(Matching("/v3/watch").at(watch).body);
    for (std::string line; std::getline(lines, line);) {
      from.push_back(Json::parse(line)["create_request"]["start_revision"]);
    }
    return from;
  }
  bool AllAskForALeader() {
    const auto all = server.Requests();
    return std::all_of(all.begin(), all.end(), [](const RawServer::Request& request) {
      return request.Header("Grpc-Metadata-hasleader") == "true";
    });
  }

  // A stream that goes on with these lines; it ends with AndClose, or hangs.
  static constexpr std::size_t kAll = 1 << 30;
  static Reply Stream(const std::string& lines) {
    return Reply::Raw("HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n" + lines);
  }

 private:
  static std::string Encoded(const std::string& text) {
    std::string out;
    AppendBase64(out, text);
    return out;
  }
  static Json Entry(const std::string& key, const std::string& value, std::int64_t revision) {
    return {{"key", Encoded(key)},
            {"value", Encoded(value)},
            {"mod_revision", std::to_string(revision)}};
  }
  std::string LineNoLock(Json result) const {
    result["header"] = Header();
    return Json{{"result", result}}.dump() + '\n';
  }
  Json Header() const { return {{"cluster_id", cluster}, {"revision", std::to_string(revision)}}; }

  std::vector<RawServer::Request> Matching(const std::string& path) {
    std::vector<RawServer::Request> found;
    for (const auto& request : server.Requests()) {
      if (request.head.find(' ' + path + ' ') != std::string::npos) found.push_back(request);
    }
    return found;
  }

  Reply Answer(const RawServer::Request& request) {
    std::unique_lock<std::mutex> lock(mutex);
    const auto asks = [&](const char* path) {
      return request.head.find(path) != std::string::npos;
    };
    if (asks("/v3/auth/")) return Reply::Ok(R"({"token":"t"})");
    if (!request.Header("Authorization").empty() && refusedTokens > 0) {
      --refusedTokens;
      return Reply::Status("401 Unauthorized",
                           R"({"error":"invalid auth token","code":16,"message":"invalid"})");
    }
    if (asks("/v3/kv/range")) return Reply::Ok(Range(Json::parse(request.body)).dump());
    if (scripts.empty()) return Stream("").Hanging(kAll);
    const Script script = std::move(scripts.front());
    scripts.pop_front();
    lock.unlock();
    return script();
  }

  Json Range(const Json& asked) {
    const std::string begin = *DecodeBase64(asked["key"].get<std::string>());
    const std::string end = *DecodeBase64(asked.value("range_end", ""));
    Json list = Json::array();
    for (const auto& [key, held] : keys) {
      if (end.empty() ? key != begin : key < begin || key >= end) continue;
      list.push_back(Entry(key, held.first, held.second));
    }
    return {{"header", Header()}, {"kvs", list}};
  }

  std::mutex mutex;  // guards all below but the server
  int refusedTokens = 0;
  std::string cluster = "7";
  std::int64_t revision = 10;
  std::map<std::string, std::pair<std::string, std::int64_t>> keys;  // value and revision
  std::deque<Script> scripts;
  RawServer server;  // ends first
};

}  // namespace kecpp::fleet

#endif
