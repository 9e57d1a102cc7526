// SPDX-License-Identifier: MIT
//
// The documents that are measured: update sets of an inventory of machines and hosts, made up the
// same way in every run.
//
// A machine has nine properties of everyday lengths, about 1.4 KB of text; a host has five and the
// list of its machines. Hosts come first, as a server that walks from the hosts reports them.
#ifndef KECPP_BENCHMARKS_DOCUMENT_H
#define KECPP_BENCHMARKS_DOCUMENT_H

#include <cstddef>
#include <memory>
#include <string>

namespace bench {

// A text in one block from array new, allocated at its final size and ended by a NUL.
struct Text {
  std::unique_ptr<char[]> characters;
  std::size_t length = 0;
};

struct Inventory {
  unsigned int machines = 0;
  unsigned int machinesPerHost = 50;

  unsigned int Hosts() const { return (machines + machinesPerHost - 1) / machinesPerHost; }
};

// The filter that all update sets speak of.
extern const char* const kFilter;

std::string MachineId(unsigned int number);
std::string HostId(unsigned int number);

// The inner XML of the first "WaitForUpdates": every host and every machine enters.
Text FirstSet(const Inventory& inventory);

// One property of one machine changes; `turn` makes the new value. Which one: name, power state or
// address in turn.
Text ChangeSet(unsigned int machine, unsigned int turn);

// The same of `count` machines from `first` on, each in a separate object set and `step` turns
// after the one before: with three it is the same property of each.
Text ChangeSets(unsigned int first, unsigned int count, unsigned int turn, unsigned int step = 1);

// So many machines are on that host now, each in a separate object set, and each `step` machines
// behind the one before; with a large step the processor cannot guess which comes next.
Text MoveSets(unsigned int machines, unsigned int host, unsigned long long step);

// The list of privileges, and that of roles that grant all of them.
Text PrivilegeSet(unsigned int privileges);
Text RoleSet(unsigned int roles, unsigned int privileges);

}  // namespace bench

#endif
