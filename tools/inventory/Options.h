// SPDX-License-Identifier: MIT
//
// What the command line asks for.
#ifndef KECPP_TOOLS_INVENTORY_OPTIONS_H
#define KECPP_TOOLS_INVENTORY_OPTIONS_H

#include <kecpp/fleet.h>
#include <kecpp/inventory.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/common/ClusterLogin.h"
#include "tools/inventory/Lists.h"

namespace tools::inventory {

// A method of the server that starts a task, and the object to call it on.
struct TaskCall {
  std::string method;
  std::string type;
  std::string value;
};

constexpr const char* PROGRAM = "kecpp-inventory";  // as messages name it

// How the inventory is printed: events are what became of which object, a line each.
enum class Format { table, json, events };

struct Options {
  std::string config;  // a file's path, an XML text, or empty for the library's default
  Format format = Format::table;
  bool follow = false;   // go on until interrupted or for `duration`
  double duration = 0;   // seconds; 0 is without limit
  int settle = 300;      // milliseconds without a change after which the inventory is complete
  std::string logLevel;  // empty: as the configuration says
  Lists lists;           // what is shown; at least one
  bool wantsAuthorization = false;            // asked for by name: its absence is an error
  std::optional<TaskCall> task;               // run this and show no inventory
  std::vector<kecpp::FleetOptions> clusters;  // show these in place of a daemon's inventory
  ClusterLogin login;                         // to each of them
};

// A cluster, where there are several: its first member.
std::string ClusterName(const std::string& members);

// How the inventory of what is shown is made: in the background, so that the end of the run need
// not wait for it.
kecpp::Options InventoryOptions(const Options& options);

// Reads the command line. Gives the exit status when there is nothing more to do: 0 after --help
// and --version, which print on standard output, 2 for a mistake, reported on standard error.
std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options);

// Says on standard error what everybody may read who should not, when a fleet is asked for.
void WarnOfOpenDoors(const Options& options);

// "METHOD:TYPE:VALUE"; the value may hold colons. Nothing when a part is missing.
std::optional<TaskCall> ParseTaskCall(const std::string& text);

}  // namespace tools::inventory

#endif
