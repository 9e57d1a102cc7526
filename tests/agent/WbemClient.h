// SPDX-License-Identifier: MIT
//
// wbemcli, a CIM client that knows nothing of this project.
#ifndef KECPP_TESTS_AGENT_WBEMCLIENT_H
#define KECPP_TESTS_AGENT_WBEMCLIENT_H

#include <unistd.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/driver/ChildProcess.h"

namespace agenttest {

using Properties = std::map<std::string, std::string>;  // not empty, without quotes
using Instances = std::map<std::string, Properties>;    // by "CLASS KEY"
using Names = std::set<std::string>;

class WbemClient {
 public:
  // `server` is "[USER:PASSWORD@]ADDRESS:PORT".
  explicit WbemClient(const std::string& server, const std::string& scheme = "http",
                      const std::string& space = "root/cimv2")
      : prefix(scheme + "://" + server + "/" + space) {}

  static bool IsInstalled() { return access(PROGRAM, X_OK) == 0; }

  // Runs e.g. "ei" on e.g. "CIM_System" (or a class and its keys) and gives the lines of its
  // output; what it says of an error when it fails.
  std::string Run(const std::string& operation, const std::string& object) const {
    driver::ChildProcess client({PROGRAM, operation, "-nl", "-noverify"},
                                {prefix + (object.empty() ? "" : ":" + object)});
    return client.Wait() == 0 ? client.Output() : "failed: " + client.Errors() + client.Output();
  }

  // The same, read: "CLASS KEY" of each name, and what instances hold. Throw when it fails.
  Names GetNames(const std::string& operation, const std::string& object) const {
    Names names;
    for (const std::string& line : Succeed(operation, object)) {
      if (!names.insert(ShortName(line)).second) throw std::runtime_error("twice: " + line);
    }
    return names;
  }
  Instances GetInstances(const std::string& operation, const std::string& object) const {
    Instances instances;
    Properties* current = nullptr;
    for (const std::string& line : Succeed(operation, object)) {
      const std::size_t equals = line.find('=');
      if (equals == std::string::npos) continue;
      if (line[0] == '-' && current != nullptr) {
        const std::string value = Value(line.substr(equals + 1));
        if (!value.empty()) (*current)[line.substr(1, equals - 1)] = value;
      } else {
        current = &instances[ShortName(line)];
      }
    }
    return instances;
  }

 private:
  static constexpr const char* PROGRAM = "/usr/bin/wbemcli";

  std::vector<std::string> Succeed(const std::string& operation, const std::string& object) const {
    const std::string output = Run(operation, object);
    if (output.compare(0, 6, "failed") == 0) throw std::runtime_error(operation + " " + output);
    std::istringstream text(output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
      if (!line.empty()) lines.push_back(line);
    }
    return lines;
  }

  // The client puts a backslash before quotes and backslashes.
  static std::string Unescaped(const std::string& text) {
    return std::regex_replace(text, std::regex(R"(\\(.))"), "$1");
  }

  // "CLASS KEY" of a path; of a link's path "CLASS ORIGINKEY RESULTKEY".
  static std::string ShortName(const std::string& path) {
    static const std::regex kKey(",(?:Name|InstanceID)=\"([^\"]*)\"");
    const std::string rest = path.substr(path.find("cimv2:") + 6);
    std::string name = rest.substr(0, rest.find('.'));
    for (std::sregex_iterator it(rest.begin(), rest.end(), kKey), end; it != end; ++it) {
      name += " " + Unescaped((*it)[1]);
    }
    return name;
  }

  // The value of a reference is a path; texts are in quotes.
  static std::string Value(const std::string& text) {
    if (text.compare(0, 11, "root/cimv2:") == 0) return ShortName(text);
    const bool quoted = text.size() >= 2 && text.front() == '"';
    return quoted ? Unescaped(text.substr(1, text.size() - 2)) : text;
  }

  const std::string prefix;  // of every object's path
};

// CLASS.CreationClassName="CLASS",NAME="KEY"
inline std::string ObjectPath(const std::string& type, const std::string& keyName,
                              const std::string& key) {
  return type + ".CreationClassName=\"" + type + "\"," + keyName + "=\"" + key + "\"";
}

}  // namespace agenttest

#endif
