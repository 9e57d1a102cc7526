// SPDX-License-Identifier: MIT
//
// The situations in which the library calls the daemon.
#ifndef KECPP_TESTS_FAULTS_SCENES_H
#define KECPP_TESTS_FAULTS_SCENES_H

#include <string>

#include "faults/Stage.h"

namespace faults {

struct Scene {
  const char* name;    // as the document has it
  const char* method;  // which the fault meets
  void (*prepare)(Stage&);
  std::string (*act)(Stage&);  // what the user sees
  bool (*again)(Stage&);       // the next attempt, when the fault has ended: did it work?
};

const Scene& FindScene(const std::string& name);

}  // namespace faults

#endif
