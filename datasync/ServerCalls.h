// SPDX-License-Identifier: MIT
//
// The calls that the data sync sends to the server: to its property collector, and the property
// methods.
//
// The library's own calls wait up to two seconds for a free connection, or until a stop is
// requested.
//
// Thread safety: every operation from any thread. None takes a lock.
// Ownership: borrows what it is made with.
#ifndef KECPP_DATASYNC_SERVERCALLS_H
#define KECPP_DATASYNC_SERVERCALLS_H

#include <atomic>
#include <memory>

#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlBuffer;
}

namespace KE::Service {

class KEMethod;
class SyncState;

class ServerCalls {
 public:
  ServerCalls(KEMethod* method, KE::Stub::ManagedObjectReference* propertyCollector,
              SyncState& state, const std::atomic<bool>& stopRequested);
  ServerCalls(const ServerCalls&) = delete;
  ServerCalls& operator=(const ServerCalls&) = delete;

  // Writes the body of "CreateFilter". Throws SystemException for a list that breaks the grammar.
  void WriteCreateFilter(KE::Stub::ManagedObjectReference* root,
                         KELib::KEVector<KELib::KEString>& list, KELib::Xml::KEXmlBuffer& body);

  // Sends that body; returns the new filter's reference. Throws what the call throws, and
  // SystemException when the answer names no filter.
  std::unique_ptr<KE::Stub::ManagedObjectReference> CreateFilter(KELib::Xml::KEXmlBuffer& body);

  // "DestroyPropertyFilter". A failure is logged.
  void DestroyFilter(KE::Stub::ManagedObjectReference& filter);

  // "WaitForUpdates". `answerLimit`: how many milliseconds the wait may stay unanswered; 0: as long
  // as the connection allows. `silent` is set to whether nothing of an answer has come. False when
  // a stop was requested before the call was sent.
  bool WaitForUpdates(const KELib::KEString& version, int answerLimit, bool& silent,
                      KELib::KEString& response);

  // "CancelWaitForUpdates". A failure is logged if `tellFailure`; true when the server answered.
  // Fails at once when no connection is free.
  bool CancelWait(bool tellFailure);

  // As CancelWait, for a wait that timed out: waits for a free connection.
  bool CancelTimedOutWait();

  // As CancelWait, for a stop: a server that does not answer is given up after half a second. A
  // stop that repeats the cancel logs one failure only, until ForgetStop.
  void CancelWaitToStop();
  void ForgetStop() { cancelFailureTold = false; }

  // A property method: `name` on `target`, without arguments.
  void InvokeMethod(const KELib::KEString& name, const KE::Stub::ManagedObjectReference& target,
                    KELib::KEString& response);

  // Ends all transfers at once and refuses new ones, or lets them pass again.
  void InterruptTransfers(bool interrupt);

 private:
  KEMethod* const method;
  KE::Stub::ManagedObjectReference* const propertyCollector;
  SyncState& state;
  const std::atomic<bool>& stopRequested;
  std::atomic<bool> cancelFailureTold{false};
};

}  // namespace KE::Service

#endif
