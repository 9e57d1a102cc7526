// SPDX-License-Identifier: MIT
//
// Which events a filter's query lets pass: "SELECT * FROM CIM_InstModification WHERE SourceInstance
// ISA CIM_ComputerSystem AND SourceInstance.EnabledState <> PreviousInstance.EnabledState". It is
// bound to the classes once, so that an event is asked of the conditions on its class alone.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_EVENTFILTER_H
#define KECPP_TOOLS_AGENT_INDICATIONS_EVENTFILTER_H

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/agent/indications/EventText.h"
#include "tools/agent/query/Condition.h"

namespace tools::agent {

// The classes whose instances come, go and change: those of the inventory's objects and links.
const std::vector<const ClassRow*>& EventSources();

class EventFilter {
 public:
  // Throws OperationError: "query language not supported", "invalid query", also for a query that
  // no event can pass.
  EventFilter(const std::string& language, const std::string& query);

  // Whether an event of that type about an instance of that class can pass.
  bool Covers(EventType type, const ClassRow& source) const;

  bool Passes(const Event& event) const;

 private:
  using Place = std::pair<EventType, const ClassRow*>;

  // What is asked of each; without a condition everything passes.
  std::map<Place, std::optional<query::Condition>> covered;
};

}  // namespace tools::agent

#endif
