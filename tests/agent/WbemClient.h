// SPDX-License-Identifier: MIT
//
// wbemcli, a CIM client that knows nothing of this project.
#ifndef KECPP_TESTS_AGENT_WBEMCLIENT_H
#define KECPP_TESTS_AGENT_WBEMCLIENT_H

#include <map>
#include <set>
#include <string>
#include <vector>

namespace agenttest {

using Properties = std::map<std::string, std::string>;  // text values without their quotes
using Instances = std::map<std::string, Properties>;    // by "CLASS KEY"
using Names = std::set<std::string>;

class WbemClient {
 public:
  // `server` is "[USER:PASSWORD@]ADDRESS:PORT".
  explicit WbemClient(const std::string& server, const std::string& scheme = "http");

  static bool IsInstalled();

  // Runs e.g. "ei" on e.g. "CIM_System" (or a class and its keys) and gives the lines of its
  // output; what it says of an error when it fails.
  std::string Run(const std::string& operation, const std::string& object,
                  const std::vector<std::string>& options = {}) const;

  // The same, read: "CLASS KEY" of each name, and what instances hold. Throws when it fails.
  Names GetNames(const std::string& operation, const std::string& object,
                 const std::vector<std::string>& options = {}) const;
  Instances GetInstances(const std::string& operation, const std::string& object,
                         const std::vector<std::string>& options = {}) const;

 private:
  std::string Succeed(const std::string& operation, const std::string& object,
                      const std::vector<std::string>& options) const;

  std::string prefix;  // of every object's path
};

// CLASS.CreationClassName="CLASS",NAME="KEY"
std::string ObjectPath(const std::string& type, const std::string& keyName, const std::string& key);

}  // namespace agenttest

#endif
