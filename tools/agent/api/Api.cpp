// SPDX-License-Identifier: MIT
#include "tools/agent/api/Api.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <system_error>
#include <utility>

#include "tools/agent/api/ChangeStream.h"
#include "tools/agent/api/Details.h"
#include "tools/agent/api/EntityTag.h"
#include "tools/agent/api/Items.h"
#include "tools/agent/api/OpenApiText.h"
#include "tools/agent/api/Problem.h"

namespace tools::agent::api {
namespace {

constexpr const char* JSON_TYPE = "application/json";
constexpr int SOON = 5;    // seconds, until there may be data
constexpr int LATER = 30;  // until there may be a place for a stream
constexpr std::size_t USUAL_CHANGES = 100;

void SetJson(const std::string& text, httplib::Response& response) {
  response.set_header("Cache-Control", "no-store");
  response.set_content(text, JSON_TYPE);
}

// An answer that a client may keep and ask about again.
void SetTagged(const std::string& text, const httplib::Request& request,
               httplib::Response& response) {
  const std::string tag = EntityTagOf(text);
  response.set_header("Cache-Control", "no-cache");
  response.set_header("ETag", tag);
  if (HasTag(request.get_header_value("If-None-Match"), tag)) {
    response.status = 304;
  } else {
    response.set_content(text, JSON_TYPE);
  }
}

std::string ListText(const KindInfo& kind, const Page& page, const HostTable& hosts) {
  std::string text = "{\"items\":[";
  for (const Entry* entry : page.entries) {
    const auto host = hosts.find(entry->first);
    const HostInfo* machines = host == hosts.end() ? nullptr : &host->second;
    if (entry != page.entries.front()) text += ',';
    text += Dump(ItemOf(kind.kind, entry->first, entry->second, machines));
  }
  return text + "],\"total\":" + std::to_string(page.total) +
         ",\"next\":" + (page.next.empty() ? "null" : Dump(page.next)) + "}";
}

// For the counters: one of few.
const char* OperationOf(const ApiPath& path) {
  if (path.name == "summary") return "api:summary";
  if (path.name == "changes") return "api:changes";
  if (path.name == "changes/stream") return "api:stream";
  if (path.name == "openapi.json") return "api:openapi";
  if (!FindPlural(path.name)) return "api:none";
  return path.key ? "api:object" : "api:list";
}

// What a client that comes again has seen last. What is no number is no change that is known.
std::optional<std::uint64_t> LastEvent(const httplib::Request& request) {
  if (!request.has_header("Last-Event-ID")) return {};
  const std::string text = request.get_header_value("Last-Event-ID");
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return 0;
  return number;
}

const kecpp::Kind* FindKind(const std::string& name) {
  const auto found = std::find_if(KINDS.begin(), KINDS.end(),
                                  [&](kecpp::Kind kind) { return name == kecpp::NameOf(kind); });
  if (found == KINDS.end()) throw BadRequest("\"kind\" has no value \"" + name + "\"");
  return &*found;
}

}  // namespace

Api::Api(const kecpp::Inventory& shown, const ConnectionReport& report,
         const StreamPlaces& streamPlaces, RequestCounters& requestCounters)
    : inventory(shown),
      places(streamPlaces),
      counters(requestCounters),
      catalogues(shown),
      summary(shown, report, catalogues, journal),
      recorder(shown, catalogues, journal) {}

void Api::AddTo(AgentServer& server) {
  server.GetBelow("/api/", [this](const httplib::Request& request, httplib::Response& response) {
    Answer(request, response);
  });
}

// What fails here fails again for the request that needs it, which says so.
void Api::Prepare() {
  if (inventory.State().connections == 0) return;
  const std::lock_guard<std::mutex> lock(preparingMutex);
  if (preparing.valid() &&
      preparing.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    return;
  }
  try {
    preparing = std::async(std::launch::async, [this] { catalogues.Prepare(); });
  } catch (const std::system_error&) {
    preparing = {};
  }
}

void Api::Look(const kecpp::Status& status) {
  catalogues.ForgetIfUnused();
  const bool isSame = status.state == seen.state && status.reason == seen.reason &&
                      status.connections == seen.connections && status.failures == seen.failures;
  if (isSame) return;
  seen = status;
  journal.NoteState();
}

void Api::Answer(const httplib::Request& request, httplib::Response& response) {
  const auto begin = std::chrono::steady_clock::now();
  const char* operation = "api:none";
  const char* outcome = "ok";
  response.set_header("X-Content-Type-Options", "nosniff");
  try {
    const ApiPath path = ReadPath(request.target);
    operation = OperationOf(path);
    AnswerPath(path, request, response);
  } catch (const Problem& problem) {
    outcome = problem.status == 503 ? "not_ready" : "refused";
    SetProblem(problem, response);
  } catch (const std::exception&) {
    outcome = "failed";
    SetProblem({500, "the answer could not be made"}, response);
  }
  counters.Count(operation, outcome, std::chrono::steady_clock::now() - begin);
}

void Api::AnswerPath(const ApiPath& path, const httplib::Request& request,
                     httplib::Response& response) {
  if (path.name == "changes") return AnswerChanges(request, response);
  if (path.name == "changes/stream") return AnswerStream(request, response);
  if (const KindInfo* kind = FindPlural(path.name)) {
    RequireData(kind->kind);
    if (path.key) return AnswerObject(*kind, *path.key, request, response);
    return AnswerList(*kind, request, response);
  }
  Parameters(request.params, {});
  if (path.name == "summary") return SetJson(summary.Text(), response);
  if (path.name == "openapi.json") return SetTagged(OPENAPI_TEXT, request, response);
  throw Problem(404, "there is nothing under this path");
}

// The last known objects stay while a lost connection is replaced.
void Api::RequireData(kecpp::Kind kind) const {
  const kecpp::Status status = inventory.State();
  if (status.connections == 0) throw Problem(503, "the inventory was not read yet", SOON);
  const bool isSystem = kind == kecpp::Kind::host || kind == kecpp::Kind::machine;
  if (!isSystem && !status.hasAuthorization) {
    throw Problem(403, "the daemon does not show these to the agent's account: " +
                           status.authorizationFailure);
  }
}

void Api::AnswerList(const KindInfo& kind, const httplib::Request& request,
                     httplib::Response& response) {
  const ListQuery query = ReadListQuery(
      kind, Parameters(request.params,
                       {"text", "sort", "limit", "cursor", "offset", "power", "status", "host"}));
  catalogues.Find(query, [&](const Page& page, const HostTable& hosts) {
    SetJson(ListText(kind, page, hosts), response);
  });
}

void Api::AnswerObject(const KindInfo& kind, const std::string& key,
                       const httplib::Request& request, httplib::Response& response) {
  Parameters(request.params, {});
  const std::string text = DetailsOf(kind.kind, key, inventory);
  if (text.empty()) throw Problem(404, "there is no such " + std::string(NameOf(kind.kind)));
  SetTagged(text, request, response);
}

void Api::AnswerChanges(const httplib::Request& request, httplib::Response& response) {
  const Parameters parameters(request.params, {"kind", "key", "limit"});
  const auto name = parameters.One("kind");
  const auto key = parameters.One("key");
  const std::size_t limit = parameters.Number("limit", 1, Journal::KEPT, USUAL_CHANGES);
  std::string text = "{\"items\":[";
  for (const std::string& item :
       journal.Newest(name ? FindKind(*name) : nullptr, key ? &*key : nullptr, limit)) {
    if (text.back() != '[') text += ',';
    text += item;
  }
  SetJson(text + "]}", response);
}

// At the end the connection is cut, as for any answer that cannot go on.
void Api::AnswerStream(const httplib::Request& request, httplib::Response& response) {
  Parameters(request.params, {});
  std::shared_ptr<void> place = places.Take();
  if (!place) throw Problem(503, "there are too many streams", LATER);
  const auto stream =
      std::make_shared<ChangeStream>(journal, summary, catalogues, LastEvent(request));
  response.set_header("Cache-Control", "no-store");
  response.set_chunked_content_provider(
      "text/event-stream", [stream, place = std::move(place)](size_t, httplib::DataSink& sink) {
        if (!sink.is_writable()) return false;  // sends what there is, too, before the wait
        const std::string events = stream->Next();
        return !events.empty() && sink.write(events.data(), events.size());
      });
}

}  // namespace tools::agent::api
