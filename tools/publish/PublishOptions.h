// SPDX-License-Identifier: MIT
//
// What kecpp-publish's command line asks for.
#ifndef KECPP_TOOLS_PUBLISH_PUBLISHOPTIONS_H
#define KECPP_TOOLS_PUBLISH_PUBLISHOPTIONS_H

#include <kecpp/inventory.h>

#include <optional>
#include <string>

#include "fleet/EtcdClient.h"
#include "tools/common/ClusterLogin.h"

namespace tools::publish {

constexpr const char* PROGRAM = "kecpp-publish";  // as messages name it

struct PublishOptions {
  std::string config;  // a file's path, an XML text, or empty for the library's default
  std::string site;
  kecpp::fleet::EtcdOptions cluster;  // without members: events are printed
  ClusterLogin login;
  int metricsPort = -1;  // of 127.0.0.1; 0: a free one; -1: no metrics
  double duration = 0;   // seconds; 0 is without limit
  std::string logLevel;  // empty: as the configuration says

  bool HasCluster() const { return !cluster.members.empty(); }
};

// Reads the command line and the credentials. Gives the exit status when there is nothing more to
// do: 0 after --help and --version, which print on standard output, 2 for a mistake, reported on
// standard error.
std::optional<int> ParsePublishOptions(int argc, const char* const* argv, PublishOptions& options);

}  // namespace tools::publish

#endif
