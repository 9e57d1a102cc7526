// SPDX-License-Identifier: MIT
#include "simulator/Kinds.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "simulator/MadeUp.h"

namespace sim {

namespace {

using nlohmann::json;

std::vector<Property> MakeUpHost(const NewObject& host) {
  const unsigned int number = host.number;
  return {TextProperty("name", host.name),
          TextProperty("summary.overallStatus", number % 5 == 4 ? "yellow" : "green"),
          TextProperty("hardware.systemInfo.uuid", MadeUpUuid(host.seed * 1000003 + number)),
          TextProperty("hardware.systemInfo.vendor", "Zorbel Systems"),
          TextProperty("hardware.systemInfo.model", "ORX " + std::to_string(number % 9 + 1) + "00"),
          MembersProperty("vm")};
}

unsigned int StatusOfHost(const std::string& status) {
  if (status == "green") return 2;
  if (status == "yellow") return 3;
  return status == "red" ? 6 : 0;
}

json DescribeHost(const Object& host) {
  std::set<std::string> machines;
  for (const Object* machine : host.members) machines.insert(machine->id);
  return {{"Name", host.id},
          {"ElementName", host.Text("name")},
          {"Description", ""},
          {"UUID", host.Text("hardware.systemInfo.uuid")},
          {"Vendor", host.Text("hardware.systemInfo.vendor")},
          {"Model", host.Text("hardware.systemInfo.model")},
          {"OperationalStatus", StatusOfHost(host.Text("summary.overallStatus"))},
          {"machines", machines}};
}

std::vector<Property> MakeUpMachine(const NewObject& machine) {
  static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
  static const char* const kSystems[] = {"Debian GNU/Linux 12 (64-bit)", "Other Linux (32-bit)",
                                         "FreeBSD &amp; friends"};
  const unsigned int number = machine.number;
  const std::uint64_t random = MadeUpNumber(machine.seed + number);
  return {
      TextProperty("name", machine.name),
      TextProperty("config.annotation",
                   number % 3 == 0 ? "" : "Machine number " + std::to_string(number)),
      TextProperty("config.uuid", MadeUpUuid(machine.seed * 7919 + number)),
      TextProperty("config.files.vmPathName", "[store1] " + machine.id + "/" + machine.id + ".cfg"),
      {"runtime.powerState", kStates[random % 3], " xsi:type=\"VirtualMachinePowerState\"", false,
       0},
      {"runtime.host", machine.host, " type=\"HostSystem\" xsi:type=\"ManagedObjectReference\"",
       false, 0},
      TextProperty("config.guestFullName", kSystems[random / 3 % 3]),
      TextProperty("guest.hostName", machine.id + ".example.org"),
      TextProperty("guest.ipAddress", MadeUpAddress(number))};
}

unsigned int StatusOfPower(const std::string& state) {
  if (state == "poweredOn") return 2;
  if (state == "poweredOff") return 10;
  return state == "suspended" ? 15 : 0;
}

json DescribeMachine(const Object& machine) {
  const std::string host = machine.Text("runtime.host");
  return {{"Name", machine.id},
          {"ElementName", machine.Text("name")},
          {"Description", machine.Text("config.annotation")},
          {"UUID", machine.Text("config.uuid")},
          {"GuestFullName", machine.Text("config.guestFullName")},
          {"GuestHostName", machine.Text("guest.hostName")},
          {"GuestIPAddress", machine.Text("guest.ipAddress")},
          {"VMPathName", machine.Text("config.files.vmPathName")},
          {"PowerState", machine.Text("runtime.powerState")},
          {"OperationalStatus", StatusOfPower(machine.Text("runtime.powerState"))},
          {"host", host.empty() ? json(nullptr) : json(host)}};
}

}  // namespace

// Never freed: threads may still use it while the process ends.
const std::vector<Kind>& Kinds() {
  static const auto& kinds = *new std::vector<Kind>{
      {"HostSystem", "hosts", "group-h1", "host", false, 2, MakeUpHost, DescribeHost},
      {"VirtualMachine", "machines", "group-v1", "vm", true, 10, MakeUpMachine, DescribeMachine},
  };
  return kinds;
}

const Kind& KindOf(std::string_view type) {
  return *std::find_if(Kinds().begin(), Kinds().end(),
                       [type](const Kind& kind) { return kind.type == type; });
}

}  // namespace sim
