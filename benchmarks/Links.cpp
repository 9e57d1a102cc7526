// SPDX-License-Identifier: MIT
#include <cstdio>
#include <utility>

#include "benchmarks/LibraryContender.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Workloads.h"

namespace bench {

namespace {

double MicrosecondsOf(LibraryContender& library, Text text) {
  const Clocks begin = Clocks::Now();
  library.Apply(std::move(text));
  return (Clocks::Now() - begin).cpu;
}

// Of each machine, when all of a host's machines move to another host.
double Move(unsigned int machines, unsigned long long step) {
  Inventory inventory;
  inventory.machines = machines;
  inventory.machinesPerHost = machines - 1;
  LibraryContender library;
  library.Apply(FirstSet(inventory));
  return MicrosecondsOf(library, MoveSets(machines, 1, step)) / machines;
}

// Of each link between a role and a privilege, when every role grants every privilege.
double Grant(unsigned int roles, unsigned int privileges) {
  LibraryContender library;
  for (const char* name : {"Zorbel_Role", "Zorbel_Privilege"}) {
    KELib::KEString type(name);
    library.Cache().CreateDataCache(type);
  }
  library.Apply(PrivilegeSet(privileges));
  return MicrosecondsOf(library, RoleSet(roles, privileges)) / roles / privileges;
}

void Print(const char* name, double small, double large) {
  std::printf(", \"%s\": {\"small\": %.4f, \"large\": %.4f, \"growth\": %.3f}", name, small, large,
              large / small);
}

}  // namespace

void RunLinks() {
  constexpr unsigned int kFew = 1000, kMany = 100000;
  constexpr unsigned long long kLargeStep = 2654435761;
  std::printf("{\"workload\": \"links\"");
  Print("move", Move(kFew, 1), Move(kMany, 1));
  Print("moveInAnyOrder", Move(kFew, kLargeStep), Move(kMany, kLargeStep));
  Print("grant", Grant(100, 100), Grant(1000, 2000));
  std::printf("}\n");
}

}  // namespace bench
