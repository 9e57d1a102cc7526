// SPDX-License-Identifier: MIT
//
// The interface for programs, and for the page: GET /api/v1/..., as openapi.json describes it.
//
// Thread safety: requests come on many threads at once; Look and End are called by one.
#ifndef KECPP_TOOLS_AGENT_API_API_H
#define KECPP_TOOLS_AGENT_API_API_H

#include <kecpp/inventory.h>

#include <future>
#include <mutex>

#include "tools/agent/AgentServer.h"
#include "tools/agent/ConnectionReport.h"
#include "tools/agent/StreamPlaces.h"
#include "tools/agent/api/ApiPath.h"
#include "tools/agent/api/Catalogues.h"
#include "tools/agent/api/Journal.h"
#include "tools/agent/api/Recorder.h"
#include "tools/agent/api/Summary.h"
#include "tools/agent/metrics/RequestCounters.h"

namespace tools::agent::api {

class Api {
 public:
  // Everything outlives the object. Changes are recorded from now on.
  Api(const kecpp::Inventory& inventory, const ConnectionReport& report, const StreamPlaces& places,
      RequestCounters& counters);

  // Serves everything below /api/. The object outlives the server's threads.
  void AddTo(AgentServer& server);

  // Somebody opens the page: makes what its first requests need, on another thread, while the
  // browser loads the page's files.
  void Prepare();

  // To be called with each new state of the connection, and several times a second.
  void Look(const kecpp::Status& status);

  // How many changes of objects there were since the object was made.
  std::uint64_t Changes() const { return journal.Count(); }

  // Ends the streams.
  void End() { journal.End(); }

 private:
  void Answer(const httplib::Request& request, httplib::Response& response);
  void AnswerPath(const ApiPath& path, const httplib::Request& request,
                  httplib::Response& response);
  void AnswerList(const KindInfo& kind, const httplib::Request& request,
                  httplib::Response& response);
  void AnswerObject(const KindInfo& kind, const std::string& key, const httplib::Request& request,
                    httplib::Response& response);
  void AnswerChanges(const httplib::Request& request, httplib::Response& response);
  void AnswerStream(const httplib::Request& request, httplib::Response& response);
  void RequireData(kecpp::Kind kind) const;

  const kecpp::Inventory& inventory;
  const StreamPlaces& places;
  RequestCounters& counters;
  Catalogues catalogues;
  Journal journal;
  Summary summary;
  kecpp::Status seen;  // by Look
  std::mutex preparingMutex;
  std::future<void> preparing;  // guarded by `preparingMutex`
  Recorder recorder;            // uses those above on its thread
};

}  // namespace tools::agent::api

#endif
