// SPDX-License-Identifier: MIT
//
// The calls that the data sync sends to the server: to its property collector, and the property
// methods.
//
// Unless said otherwise a call waits for a free handle as all of the library's own calls do, or
// until a stop is requested. Transfers() ends all of them.
//
// Thread safety: every operation from any thread. None takes a lock.
// Ownership: borrows what it is made with.
#ifndef KECPP_DATASYNC_SERVERCALLS_H
#define KECPP_DATASYNC_SERVERCALLS_H

#include <atomic>
#include <memory>

#include "foundation/KEString.h"
#include "http/Interrupter.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlBuffer;
class KEXmlReader;
}  // namespace KELib::Xml

namespace KE::Service {

class KEMethod;
class PropertyList;
class SyncState;

class ServerCalls {
 public:
  ServerCalls(KEMethod* method, KE::Stub::ManagedObjectReference* propertyCollector,
              SyncState& state, const std::atomic<bool>& stopRequested);
  ServerCalls(const ServerCalls&) = delete;
  ServerCalls& operator=(const ServerCalls&) = delete;

  // Writes the body of "CreateFilter". Throws SystemException for a list that breaks the grammar.
  void WriteCreateFilter(const KE::Stub::ManagedObjectReference& root, const PropertyList& list,
                         KELib::Xml::KEXmlBuffer& body);

  // Sends that body; returns the new filter's reference. Throws what the call throws, and
  // SystemException when the answer names no filter.
  std::unique_ptr<KE::Stub::ManagedObjectReference> CreateFilter(KELib::Xml::KEXmlBuffer& body);

  // "DestroyPropertyFilter". A failure is logged.
  void DestroyFilter(KE::Stub::ManagedObjectReference& filter);

  // "WaitForUpdates". `answerLimit`: how many milliseconds the wait may stay unanswered; 0: as long
  // as the connection allows. `silent` is set to whether nothing of an answer has come; `answer`
  // reads the answer from its start. False when a stop was requested before the call was sent.
  bool WaitForUpdates(const KELib::KEString& version, int answerLimit, bool& silent,
                      KELib::Xml::KEXmlReader& answer);

  // "CancelWaitForUpdates". A failure is logged; true when the server answered. Fails at once when
  // no handle is free.
  bool CancelWait();

  // As CancelWait, for a wait that timed out: waits for a free handle.
  bool CancelTimedOutWait();

  // As CancelWait, for a stop: a server that does not answer is given up after half a second. A
  // stop that repeats the cancel logs one failure only, until ForgetStop, which also lets calls
  // pass again that the stop had ended.
  void CancelWaitToStop();
  void ForgetStop();

  // A property method: `name` on `target`, without arguments.
  void InvokeMethod(const KELib::KEString& name, const KE::Stub::ManagedObjectReference& target,
                    KELib::KEString& response);

  // What ends these calls from another thread.
  KELib::Http::Interrupter& Transfers() { return interrupter; }

 private:
  bool SendCancel(bool tellFailure);

  KEMethod* const method;
  KE::Stub::ManagedObjectReference* const propertyCollector;
  SyncState& state;
  const std::atomic<bool>& stopRequested;
  KELib::Http::Interrupter interrupter;
  std::atomic<bool> cancelFailureTold{false};
};

}  // namespace KE::Service

#endif
