// SPDX-License-Identifier: MIT
//
// Everything at a glance: the connection, the sums over the inventory, and how much changes.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_API_SUMMARY_H
#define KECPP_TOOLS_AGENT_API_SUMMARY_H

#include <kecpp/inventory.h>

#include <mutex>
#include <string>

#include "tools/agent/ConnectionReport.h"
#include "tools/agent/api/Catalogues.h"
#include "tools/agent/api/Journal.h"

namespace tools::agent::api {

class Summary {
 public:
  // Everything outlives the object.
  Summary(const kecpp::Inventory& inventory, const ConnectionReport& report, Catalogues& catalogues,
          const Journal& journal);

  // As JSON. The first one reads the inventory, others are O(1).
  std::string Text() const;

  // Likewise; those who ask for it after the same change get the same.
  std::string SharedText();

 private:
  const kecpp::Inventory& inventory;
  const ConnectionReport& report;
  Catalogues& catalogues;
  const Journal& journal;
  std::mutex mutex;
  Journal::Version version;  // of the text; guarded by `mutex`
  std::string text;          // likewise
};

}  // namespace tools::agent::api

#endif
