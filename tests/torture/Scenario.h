// SPDX-License-Identifier: MIT
//
// The life of one service instance: login, first fill, an update, a failed cycle, the end of the
// watches, shutdown. A step that fails is repeated once without refusals and must succeed then.
//
// Thread safety: one thread makes, runs and destroys it.
#ifndef KECPP_TESTS_TORTURE_SCENARIO_H
#define KECPP_TESTS_TORTURE_SCENARIO_H

#include <kecpp.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "endtoend/Simulator.h"

namespace torture {

// What a run has shown.
struct Findings {
  std::string errors;                   // texts that the library reported, exceptions first
  std::vector<std::string> complaints;  // what must not be
  bool orphaned = false;                // the server still has the session: its logout was lost
};

class Scenario {
 public:
  // Keeps a configuration in a file beside the simulator's own files.
  explicit Scenario(endtoend::Simulator& simulator);

  Findings Run();

 private:
  using Action = std::function<void()>;
  bool Attempt(const std::string& name, const Action& action);
  void Step(const std::string& name, const Action& action);
  void End(const std::string& name, const Action& action);

  void Connect();
  void Rename();
  void AwaitChange();
  void Call();
  void UseBothHandles();

  endtoend::Simulator& simulator;
  const std::string document, file;
  unsigned int runs = 0;
  int waitsBefore = 0;  // that the simulator had seen before the change

  Findings findings;
  KE::Service::KEServiceInstManager* manager = nullptr;
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
};

}  // namespace torture

#endif
