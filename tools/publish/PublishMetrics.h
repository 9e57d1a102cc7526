// SPDX-License-Identifier: MIT
//
// GET /metrics on loopback: what a publisher has done and how it is, for Prometheus.
//
// Thread safety: one thread; the server has threads of its own until the object goes.
#ifndef KECPP_TOOLS_PUBLISH_PUBLISHMETRICS_H
#define KECPP_TOOLS_PUBLISH_PUBLISHMETRICS_H

#include <kecpp/inventory.h>

#include <memory>
#include <string>

#include "tools/publish/Counters.h"
#include "tools/publish/Marks.h"

namespace tools::publish {

class PublishMetrics {
 public:
  // Serves at this port of 127.0.0.1, 0: a free one. Everything outlives the object. Throws
  // std::runtime_error.
  PublishMetrics(int port, const kecpp::Inventory& inventory, const Counters& counters,
                 const Marks& marks);
  ~PublishMetrics();
  PublishMetrics(const PublishMetrics&) = delete;
  PublishMetrics& operator=(const PublishMetrics&) = delete;

  std::string Url() const;

 private:
  class Server;

  std::string Text() const;

  const kecpp::Inventory& inventory;
  const Counters& counters;
  const Marks& marks;
  std::unique_ptr<Server> server;
};

}  // namespace tools::publish

#endif
