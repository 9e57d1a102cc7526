// SPDX-License-Identifier: MIT
//
// The options by which a program says who it is in an etcd cluster, and whom it trusts.
#ifndef KECPP_TOOLS_COMMON_CLUSTERLOGIN_H
#define KECPP_TOOLS_COMMON_CLUSTERLOGIN_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tools {

struct ClusterLogin {
  std::string user;  // empty: without a login
  std::string password;
  std::string file;         // that they are from
  std::string authorities;  // PEM files; empty: the system's authorities, no certificate
  std::string certificate;
  std::string key;
};

// Adds --credentials, --ca and --tls, which need the option `members`. Files are read when the
// command line is; what cannot be used is a mistake in it. `login` outlives `app`.
void AddLoginOptions(CLI::App& app, CLI::Option* members, ClusterLogin& login);

// Says on standard error what everybody may read who should not: a password on the way to one of
// these members ("http://HOST:PORT"), or in a file.
void WarnOfOpenDoors(const char* program, const ClusterLogin& login,
                     const std::vector<std::string>& members);

}  // namespace tools

#endif
