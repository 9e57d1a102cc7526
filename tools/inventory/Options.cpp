// SPDX-License-Identifier: MIT
#include "tools/inventory/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "tools/common/ConfigArgument.h"
#include "tools/common/Split.h"

namespace tools::inventory {
namespace {

constexpr int USAGE_ERROR = 2;

std::string CheckList(const std::string& name) {
  return FindKind(name) ? std::string() : "there is no list " + name;
}

std::string ListNames() {
  std::string names;
  for (const Kind& kind : Kinds()) names += (names.empty() ? "" : ",") + std::string(kind.name);
  return names;
}

std::string CheckTask(const std::string& text) {
  return ParseTaskCall(text) ? std::string() : "expected METHOD:TYPE:VALUE, got " + text;
}

std::string CheckMembers(const std::string& text) {
  for (const std::string_view member : Split(text, ',')) {
    if (member.substr(0, 7) == "http://" || member.substr(0, 8) == "https://") continue;
    return "expected http(s)://HOST:PORT[,...], got " + text;
  }
  return {};
}

// With --fleet a cluster is shown; the options that are for a daemon make no sense then.
void DeclareFleet(CLI::App& app, std::vector<std::string>& clusters, std::string& sites,
                  ClusterLogin& login) {
  auto* members = app.add_option("--fleet", clusters,
                                 "Show all sites of an etcd cluster: http(s)://HOST:PORT[,...]; "
                                 "several times: of several clusters")
                      ->type_name("URL,...")
                      ->allow_extra_args(false)
                      ->check(CheckMembers);
  for (const char* other : {"--config", "--run-task", "--settle", "--log-level"}) {
    members->excludes(app.get_option(other));
  }
  app.add_option("--site", sites, "Sites to show: a name, or a pattern with * and ?")
      ->type_name("PATTERN")
      ->needs(members);
  AddLoginOptions(app, members, login);
}

// Clusters are told apart by their names.
void CheckNames(const std::vector<std::string>& clusters) {
  std::set<std::string> names;
  for (const std::string& members : clusters) {
    const std::string name = ClusterName(members);
    if (!names.insert(name).second) {
      throw CLI::ValidationError("--fleet", "two clusters begin with " + name);
    }
  }
}

kecpp::FleetOptions FleetOf(const std::string& members, const std::string& sites,
                            const ClusterLogin& login) {
  kecpp::FleetOptions fleet{members, sites};
  fleet.user = login.user;
  fleet.password = login.password;
  fleet.authorities = login.authorities;
  fleet.certificate = login.certificate;
  fleet.key = login.key;
  fleet.connectInBackground = true;  // the end of the run need not wait for it
  return fleet;
}

// Tables show the systems unless other lists are asked for, the other formats everything.
bool IsShown(const Kind& kind, const std::vector<std::string>& names, Format format) {
  if (names.empty()) return format != Format::table || kind.group == Group::systems;
  return std::find(names.begin(), names.end(), kind.name) != names.end();
}

void ChooseLists(const std::vector<std::string>& names, Options& options) {
  for (const Kind& kind : Kinds()) {
    if (IsShown(kind, names, options.format)) options.lists.push_back(&kind);
  }
  options.wantsAuthorization = !names.empty() && HasGroup(options.lists, Group::authorization);
}

}  // namespace

std::string ClusterName(const std::string& members) {
  return members.substr(0, members.find(','));
}

kecpp::Options InventoryOptions(const Options& options) {
  kecpp::Options asked{options.config};
  asked.systems = !options.task;
  asked.authorization = kecpp::Authorization::none;
  if (!options.task && HasGroup(options.lists, Group::authorization)) {
    asked.authorization = options.wantsAuthorization ? kecpp::Authorization::required
                                                     : kecpp::Authorization::whereAllowed;
  }
  asked.connectInBackground = true;
  asked.logLevel = options.logLevel;
  return asked;
}

void WarnOfOpenDoors(const Options& options) {
  std::vector<std::string> members;
  for (const kecpp::FleetOptions& cluster : options.clusters) {
    for (const std::string_view member : Split(cluster.members, ',')) members.emplace_back(member);
  }
  if (!members.empty()) tools::WarnOfOpenDoors(PROGRAM, options.login, members);
}

std::optional<TaskCall> ParseTaskCall(const std::string& text) {
  const std::size_t first = text.find(':');
  const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
  if (second == std::string::npos) return {};
  TaskCall call{text.substr(0, first), text.substr(first + 1, second - first - 1),
                text.substr(second + 1)};
  if (call.method.empty() || call.type.empty() || call.value.empty()) return {};
  return call;
}

std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options) {
  CLI::App app(
      "Shows the inventory of a virtualization host, or of a fleet of them: hosts, machines, who "
      "may do "
      "what.",
      PROGRAM);
  const std::map<std::string, Format> formats = {
      {"table", Format::table}, {"json", Format::json}, {"events", Format::events}};
  std::string format = "table";
  std::string task;
  std::vector<std::string> lists;
  app.add_option("--config", options.config, "Configuration: a file, or an XML text")
      ->type_name("FILE")
      ->check(CheckConfig);
  app.add_option("--format", format, "How to print: table, json, or events, one a line")
      ->type_name("NAME")
      ->check(CLI::IsMember({"table", "json", "events"}));
  app.add_option("--show", lists, "Lists to show: " + ListNames())
      ->delimiter(',')
      ->check(CheckList);
  app.add_flag("--follow", options.follow, "Print again at every change, until Ctrl-C");
  app.add_option("--duration", options.duration, "End after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.1, 1e9));
  app.add_option("--settle", options.settle, "Print when nothing changed for so long")
      ->capture_default_str()
      ->type_name("MS")
      ->check(CLI::Range(1, 60000));
  app.add_option("--log-level", options.logLevel, "What goes to the system log")
      ->type_name("NAME")
      ->check(CLI::IsMember({"none", "panic", "error", "warning", "info", "verbose", "trivia"}));
  app.add_option("--run-task", task, "Call a method that starts a task; wait for its outcome")
      ->type_name("METHOD:TYPE:VALUE")
      ->check(CheckTask);
  std::vector<std::string> clusters;
  std::string sites;
  DeclareFleet(app, clusters, sites, options.login);
  app.set_version_flag(
      "--version",
      std::string("kecpp-inventory " KECPP_TOOLS_VERSION ", library ") + kecpp::Version());
  try {
    app.parse(argc, argv);
    CheckNames(clusters);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : USAGE_ERROR;
  }
  options.format = formats.at(format);
  if (!task.empty()) options.task = ParseTaskCall(task);
  ChooseLists(lists, options);
  for (const std::string& members : clusters) {
    options.clusters.push_back(FleetOf(members, sites, options.login));
  }
  return {};
}

}  // namespace tools::inventory
