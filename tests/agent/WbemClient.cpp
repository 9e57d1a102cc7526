// SPDX-License-Identifier: MIT
#include "agent/WbemClient.h"

#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "endtoend/ChildProcess.h"

namespace agenttest {
namespace {

constexpr const char* PROGRAM = "/usr/bin/wbemcli";

// The client puts a backslash before quotes and backslashes.
std::string Unescaped(const std::string& text) {
  std::string raw;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) ++at;
    raw += text[at];
  }
  return raw;
}

// Without the quotes around it; numbers and null have none.
std::string Unquoted(const std::string& text) {
  return text.size() < 2 || text.front() != '"' ? text : Unescaped(text.substr(1, text.size() - 2));
}

// "CLASS KEY" of a path; of a link's path "CLASS ORIGINKEY RESULTKEY".
std::string ShortName(const std::string& path) {
  const std::string rest = path.substr(path.find("cimv2:") + 6);
  std::string name = rest.substr(0, rest.find('.'));
  for (const char* key : {",Name=\"", ",InstanceID=\""}) {
    for (std::size_t at = 0; (at = rest.find(key, at)) != std::string::npos;) {
      at += std::string(key).size();
      name += " " + Unescaped(rest.substr(at, rest.find('"', at) - at));
    }
  }
  return name;
}

// The value of a reference is a path without the colon before the class.
std::string Value(const std::string& text) {
  const std::size_t place = text.find("cimv2ZORBEL");
  return place == std::string::npos ? Unquoted(text) : ShortName("cimv2:" + text.substr(place + 5));
}

}  // namespace

WbemClient::WbemClient(const std::string& server, const std::string& scheme)
    : prefix(scheme + "://" + server + "/root/cimv2") {}

bool WbemClient::IsInstalled() {
  return access(PROGRAM, X_OK) == 0;
}

std::string WbemClient::Run(const std::string& operation, const std::string& object,
                            const std::vector<std::string>& options) const {
  std::vector<std::string> command = {PROGRAM, operation, "-nl", "-noverify"};
  command.insert(command.end(), options.begin(), options.end());
  command.push_back(prefix + (object.empty() ? "" : ":" + object));
  endtoend::ChildProcess client(command);
  return client.Wait() == 0 ? client.Output() : "failed: " + client.Errors() + client.Output();
}

std::string WbemClient::Succeed(const std::string& operation, const std::string& object,
                                const std::vector<std::string>& options) const {
  std::string output = Run(operation, object, options);
  if (output.compare(0, 6, "failed") == 0) throw std::runtime_error(operation + " " + output);
  return output;
}

Names WbemClient::GetNames(const std::string& operation, const std::string& object,
                           const std::vector<std::string>& options) const {
  std::istringstream lines(Succeed(operation, object, options));
  Names names;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && !names.insert(ShortName(line)).second) {
      throw std::runtime_error("twice: " + line);
    }
  }
  return names;
}

Instances WbemClient::GetInstances(const std::string& operation, const std::string& object,
                                   const std::vector<std::string>& options) const {
  std::istringstream lines(Succeed(operation, object, options));
  Instances instances;
  Properties* current = nullptr;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (line.empty() || equals == std::string::npos) continue;
    if (line[0] == '-' && current) {
      (*current)[line.substr(1, equals - 1)] = Value(line.substr(equals + 1));
    } else {
      current = &instances[ShortName(line)];
    }
  }
  return instances;
}

std::string ObjectPath(const std::string& type, const std::string& keyName,
                       const std::string& key) {
  return type + ".CreationClassName=\"" + type + "\"," + keyName + "=\"" + key + "\"";
}

}  // namespace agenttest
