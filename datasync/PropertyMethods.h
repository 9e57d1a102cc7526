// SPDX-License-Identifier: MIT
//
// Runs property methods: server methods without arguments whose answers fill caches. The server
// does not report changes of what they answer, so they are invoked again after every cycle of the
// loop.
//
// A method that fails keeps no other from being invoked. The loop leaves it out until a second has
// passed. A quiet server ends no wait, so the loop ends its own for a method that failed: after one
// second, two, four, at most a minute.
//
// Thread safety: every operation from any thread; runs are serialised by a mutex that is taken
//   before all others of the data sync. No other lock is held while the server is asked.
// Ownership: borrows what it is made with. The records are in the watches.
#ifndef KECPP_DATASYNC_PROPERTYMETHODS_H
#define KECPP_DATASYNC_PROPERTYMETHODS_H

#include <atomic>
#include <vector>

#include "datasync/SyncSeams.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"
#include "instance/KETypeCache.h"

namespace KE::Service {

class ServerCalls;
class SyncState;
class Watches;

class PropertyMethods {
 public:
  PropertyMethods(Watches& watches, ServerCalls& server, SyncState& state,
                  KE::Instance::KETypeCache& types, const std::atomic<bool>& stopRequested);
  PropertyMethods(const PropertyMethods&) = delete;
  PropertyMethods& operator=(const PropertyMethods&) = delete;

  // Invokes all methods that are due and applies the answers; throws the first failure in the end.
  void Run();

  // As Run, for a watch that is being set up: the methods of its record, whose reference has the
  // value `record`, are due whatever became of their last calls. Failures are logged; throws the
  // first failure of the record's own methods, and no other.
  void RunAtSetup(const KELib::KEString& record);

  // As Run, in a cycle whose wait was good. Failures are logged and noted as one failure of the
  // cycle; of their exceptions only RequestFailedException is thrown, which ends the process.
  void RunInCycle();

  // When the loop's next wait has to end, so that a method which failed is called again;
  // SyncTime::max() for never.
  SyncTime WaitEnd();

  // The session has lost its rights: logs `text` and forgets the permissions.
  void LosePermissions(const char* text);

  // Empties the caches of roles, privileges and identities, under their mutexes. Never throws.
  void ForgetPermissions();

 private:
  struct MethodCall;
  std::vector<MethodCall> CallsToMake(const KELib::KEString* always);
  std::vector<MethodCall> RunMethods(const KELib::KEString* always);
  bool RunMethod(MethodCall& call);
  void NoteMethodOutcome(MethodCall& call);
  void NoteFailedMethods();
  void ApplyMethodAnswer(MethodCall& call, KELib::KEString& response);

  Watches& watches;
  ServerCalls& server;
  SyncState& state;
  KE::Instance::KETypeCache& types;
  const std::atomic<bool>& stopRequested;
  KELib::KEMutex methodRun;
};

}  // namespace KE::Service

#endif
