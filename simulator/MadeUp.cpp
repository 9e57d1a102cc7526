// SPDX-License-Identifier: MIT
#include "simulator/MadeUp.h"

#include <cstdio>

namespace sim {

namespace {

const char* const kString = " xsi:type=\"xsd:string\"";

std::uint64_t Mix(std::uint64_t x) {
  x ^= x >> 33;
  x *= 0xff51afd7ed558ccdULL;
  x ^= x >> 33;
  return x;
}

std::string Uuid(std::uint64_t seed) {
  const std::uint64_t a = Mix(seed), b = Mix(seed + 1);
  char text[48];
  std::snprintf(text, sizeof(text), "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned int>(a),
                static_cast<unsigned int>(a >> 32) & 0xFFFFU, static_cast<unsigned int>(a >> 48),
                static_cast<unsigned int>(b) & 0xFFFFU, static_cast<unsigned long long>(b >> 16));
  return text;
}

std::string Address(unsigned int number) {
  return "10." + std::to_string(number >> 16 & 255) + "." + std::to_string(number >> 8 & 255) +
         "." + std::to_string(number & 255);
}

Property Text(const char* name, const std::string& xml) {
  return {name, xml, kString, false, 0};
}

}  // namespace

std::string MadeUpName(const std::string& stem, unsigned int number) {
  std::string name = stem + std::to_string(number);
  if (number % 17 == 5) name += " &lt;R&amp;D&gt;";
  if (number % 23 == 7) name += " K\xc3\xb6ln";
  return name;
}

std::vector<Property> MadeUpHost(const std::string& name, unsigned int number, std::uint64_t seed) {
  return {Text("name", name),
          Text("summary.overallStatus", number % 5 == 4 ? "yellow" : "green"),
          Text("hardware.systemInfo.uuid", Uuid(seed * 1000003 + number)),
          Text("hardware.systemInfo.vendor", "Zorbel Systems"),
          Text("hardware.systemInfo.model", "ORX " + std::to_string(number % 9 + 1) + "00"),
          {"vm", "", " xsi:type=\"ArrayOfManagedObjectReference\"", true, 0}};
}

std::vector<Property> MadeUpMachine(const std::string& id, const std::string& name,
                                    const std::string& host, unsigned int number,
                                    std::uint64_t seed) {
  static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
  static const char* const kSystems[] = {"Debian GNU/Linux 12 (64-bit)", "Other Linux (32-bit)",
                                         "FreeBSD &amp; friends"};
  const std::uint64_t random = Mix(seed + number);
  return {
      Text("name", name),
      Text("config.annotation", number % 3 == 0 ? "" : "Machine number " + std::to_string(number)),
      Text("config.uuid", Uuid(seed * 7919 + number)),
      Text("config.files.vmPathName", "[store1] " + id + "/" + id + ".cfg"),
      {"runtime.powerState", kStates[random % 3], " xsi:type=\"VirtualMachinePowerState\"", false,
       0},
      {"runtime.host", host, " type=\"HostSystem\" xsi:type=\"ManagedObjectReference\"", false, 0},
      Text("config.guestFullName", kSystems[random / 3 % 3]),
      Text("guest.hostName", id + ".example.org"),
      Text("guest.ipAddress", Address(number))};
}

}  // namespace sim
