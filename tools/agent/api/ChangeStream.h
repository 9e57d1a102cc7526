// SPDX-License-Identifier: MIT
//
// What one client gets as server-sent events: the summary, and each change.
//
// Thread safety: one thread.
#ifndef KECPP_TOOLS_AGENT_API_CHANGESTREAM_H
#define KECPP_TOOLS_AGENT_API_CHANGESTREAM_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/agent/api/Journal.h"
#include "tools/agent/api/Summary.h"

namespace tools::agent::api {

class ChangeStream {
 public:
  // Begins behind the change `last` that the client has seen before, else with what comes next.
  // Everything outlives the object.
  ChangeStream(const Journal& journal, Summary& summary, Catalogues& catalogues,
               std::optional<std::uint64_t> last);

  // Waits until there is something for the client, at most ten seconds, and gives it as the text of
  // events; a comment when there was nothing. Changes come at most ten times a second, the summary
  // once in each second. Empty after the end.
  std::string Next();

 private:
  using Clock = Journal::Clock;

  std::string SummaryNews(Clock::time_point now, std::uint64_t before);
  std::string ChangeNews();

  const Journal& journal;
  Summary& summary;
  Catalogues& catalogues;
  std::uint64_t last;
  unsigned state = 0;
  std::string sent;               // the summary that was sent last
  bool isDue = true;              // another one may have come
  Clock::time_point rest;         // no changes are taken before
  Clock::time_point summaryRest;  // no summary is sent before
};

}  // namespace tools::agent::api

#endif
