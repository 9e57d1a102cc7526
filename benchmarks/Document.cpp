// SPDX-License-Identifier: MIT
#include "benchmarks/Document.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace bench {

namespace {

const char* const kStrings = "xsi:type=\"xsd:string\"";
const char* const kReference = "type=\"HostSystem\" xsi:type=\"ManagedObjectReference\"";
const char* const kHead =
    "<returnval "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><version>17</"
    "version><filterSet><filter type=\"PropertyFilter\">";
const char* const kTail = "</filterSet></returnval>";

std::uint64_t Mix(std::uint64_t x) {
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

template <typename... Values>
std::string Format(const char* format, Values... values) {
  char text[160];
  std::snprintf(text, sizeof(text), format, values...);
  return text;
}

std::string Uuid(std::uint64_t seed) {
  const std::uint64_t high = Mix(seed), low = Mix(high);
  return Format("%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned>(high),
                static_cast<unsigned>(high >> 32) & 0xffffU, static_cast<unsigned>(high >> 48),
                static_cast<unsigned>(low) & 0xffffU, static_cast<unsigned long long>(low >> 16));
}

void AppendProperty(std::string& out, const char* name, const std::string& value,
                    const char* attributes) {
  out.append("<changeSet><name>").append(name).append("</name><op>assign</op><val ");
  out.append(attributes).append(">").append(value).append("</val></changeSet>");
}

void AppendObjectStart(std::string& out, const char* kind, const char* type,
                       const std::string& id) {
  out.append("<objectSet><kind>").append(kind).append("</kind><obj type=\"").append(type);
  out.append("\">").append(id).append("</obj>");
}

void AppendMachine(std::string& out, const Inventory& inventory, unsigned int number) {
  static const char* const kRoles[] = {"web", "mail", "database", "build", "directory"};
  static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
  static const char* const kSystems[] = {"Debian GNU/Linux 12 (64-bit)", "FreeBSD 14 (64-bit)",
                                         "Other Linux kernel 6.x (32-bit)"};
  const std::uint64_t random = Mix(number);
  const std::string name = Format("%s-server-%06u", kRoles[random % 5], number);
  AppendObjectStart(out, "enter", "VirtualMachine", MachineId(number));
  AppendProperty(out, "name", name, kStrings);
  AppendProperty(out, "config.annotation",
                 Format("Owner: team %u. Restored from backup on Sundays.",
                        static_cast<unsigned>(random >> 8) % 90 + 10),
                 kStrings);
  AppendProperty(out, "config.uuid", Uuid(number), kStrings);
  AppendProperty(out, "config.files.vmPathName",
                 Format("[datastore-%02u] %s/%s.cfg", number % 40, name.c_str(), name.c_str()),
                 kStrings);
  AppendProperty(out, "runtime.powerState", kStates[random / 7 % 3],
                 "xsi:type=\"VirtualMachinePowerState\"");
  AppendProperty(out, "runtime.host", HostId(number / inventory.machinesPerHost), kReference);
  AppendProperty(out, "config.guestFullName", kSystems[random / 31 % 3], kStrings);
  AppendProperty(out, "guest.hostName", Format("%s.example.org", name.c_str()), kStrings);
  AppendProperty(out, "guest.ipAddress",
                 Format("10.%u.%u.%u", number >> 16 & 255, number >> 8 & 255, number & 255),
                 kStrings);
  out += "</objectSet>";
}

void AppendHost(std::string& out, const Inventory& inventory, unsigned int number) {
  AppendObjectStart(out, "enter", "HostSystem", HostId(number));
  AppendProperty(out, "name", Format("host-%05u.example.org", number), kStrings);
  AppendProperty(out, "hardware.systemInfo.uuid", Uuid(number + 0x100000000ULL), kStrings);
  AppendProperty(out, "hardware.systemInfo.vendor", "Zorbel Systems", kStrings);
  AppendProperty(out, "hardware.systemInfo.model", Format("ORX %u00", number % 9 + 1), kStrings);
  AppendProperty(out, "summary.overallStatus", number % 8 == 7 ? "yellow" : "green",
                 "xsi:type=\"ManagedEntityStatus\"");
  std::string list;
  const unsigned int first = number * inventory.machinesPerHost;
  for (unsigned int i = 0; i < inventory.machinesPerHost && first + i < inventory.machines; ++i) {
    list += "<ManagedObjectReference type=\"VirtualMachine\">" + MachineId(first + i) +
            "</ManagedObjectReference>";
  }
  AppendProperty(out, "vm", list, "xsi:type=\"ArrayOfManagedObjectReference\"");
  out += "</objectSet>";
}

void AppendChange(std::string& out, unsigned int machine, unsigned int turn) {
  AppendObjectStart(out, "modify", "VirtualMachine", MachineId(machine));
  if (turn % 3 == 0) {
    AppendProperty(out, "name", Format("renamed-server-%06u", turn), kStrings);
  } else if (turn % 3 == 1) {
    AppendProperty(out, "runtime.powerState", turn % 2 == 0 ? "poweredOn" : "suspended",
                   "xsi:type=\"VirtualMachinePowerState\"");
  } else {
    AppendProperty(out, "guest.ipAddress", Format("192.168.%u.%u", turn >> 8 & 255, turn & 255),
                   kStrings);
  }
  out += "</objectSet>";
}

std::string PrivilegeId(unsigned int number) {
  return Format("Folder.Operation%u", number);
}

// Calls `append` with a string for each piece of a set, twice: first to measure, then to write, so
// that the text is in a block of exactly its size.
template <typename Pieces>
Text Write(Pieces pieces) {
  Text text;
  pieces([&](const std::string& piece) { text.length += piece.size(); });
  text.characters.reset(new char[text.length + 1]);
  char* at = text.characters.get();
  pieces([&](const std::string& piece) {
    std::memcpy(at, piece.data(), piece.size());
    at += piece.size();
  });
  *at = '\0';
  return text;
}

// A list of the authorization manager, with the pieces of its items.
template <typename Items>
Text ListSet(const char* property, const char* type, Items items) {
  return Write([&](auto emit) {
    std::string begin = std::string(kHead) + kFilter + "</filter>";
    AppendObjectStart(begin, "modify", "AuthorizationManager", "authorization");
    emit(begin + "<changeSet><name>" + property + "</name><op>assign</op><val xsi:type=\"" + type +
         "\">");
    items(emit);
    emit(std::string("</val></changeSet></objectSet>") + kTail);
  });
}

}  // namespace

const char* const kFilter = "filter-1";

std::string MachineId(unsigned int number) {
  return Format("vm-%u", 100 + number);
}

std::string HostId(unsigned int number) {
  return Format("host-%u", 10 + number);
}

Text FirstSet(const Inventory& inventory) {
  return Write([&](auto emit) {
    emit(std::string(kHead) + kFilter + "</filter>");
    std::string piece;
    for (unsigned int i = 0; i < inventory.Hosts(); ++i) {
      piece.clear();
      AppendHost(piece, inventory, i);
      emit(piece);
    }
    for (unsigned int i = 0; i < inventory.machines; ++i) {
      piece.clear();
      AppendMachine(piece, inventory, i);
      emit(piece);
    }
    emit(kTail);
  });
}

Text ChangeSet(unsigned int machine, unsigned int turn) {
  return ChangeSets(machine, 1, turn);
}

Text ChangeSets(unsigned int first, unsigned int count, unsigned int turn, unsigned int step) {
  std::string set = std::string(kHead) + kFilter + "</filter>";
  for (unsigned int i = 0; i < count; ++i) AppendChange(set, first + i, turn + i * step);
  set.append(kTail);
  return Write([&](auto emit) { emit(set); });
}

Text MoveSets(unsigned int machines, unsigned int host, unsigned long long step) {
  return Write([&](auto emit) {
    emit(std::string(kHead) + kFilter + "</filter>");
    std::string piece;
    for (unsigned int i = 0; i < machines; ++i) {
      piece.clear();
      const auto machine = static_cast<unsigned int>(i * step % machines);
      AppendObjectStart(piece, "modify", "VirtualMachine", MachineId(machine));
      AppendProperty(piece, "runtime.host", HostId(host), kReference);
      emit(piece + "</objectSet>");
    }
    emit(kTail);
  });
}

Text PrivilegeSet(unsigned int privileges) {
  return ListSet("privilegeList", "ArrayOfAuthorizationPrivilege", [&](auto emit) {
    for (unsigned int i = 0; i < privileges; ++i) {
      emit("<AuthorizationPrivilege><privId>" + PrivilegeId(i) +
           "</privId></AuthorizationPrivilege>");
    }
  });
}

Text RoleSet(unsigned int roles, unsigned int privileges) {
  return ListSet("roleList", "ArrayOfAuthorizationRole", [&](auto emit) {
    for (unsigned int i = 0; i < roles; ++i) {
      emit(Format("<AuthorizationRole><roleId>%u</roleId>", i));
      for (unsigned int j = 0; j < privileges; ++j) {
        emit("<privilege>" + PrivilegeId(j) + "</privilege>");
      }
      emit("</AuthorizationRole>");
    }
  });
}

}  // namespace bench
