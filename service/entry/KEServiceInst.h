// SPDX-License-Identifier: MIT
//
// A service instance is one connection to the management daemon: configuration, SOAP client, method
// invoker, the service content and the sessions.
//
// Thread safety: every operation takes the instance's mutex, except GetConfig, GetMethod and
//   IsInitialized, whose answers are constant after Init. While an instance is freed, replaced or
//   stopped no other thread uses it, its sessions, data syncs or caches, except threads that are
//   blocked inside SetupDataSync, WaitForTask or WaitForChange: these are let go.
// Ownership: the manager owns its instances; an instance owns its sessions.
#ifndef KECPP_SERVICE_ENTRY_KESERVICEINST_H
#define KECPP_SERVICE_ENTRY_KESERVICEINST_H

#include "foundation/KEExport.h"

namespace KELib {
class KEConfig;
}
namespace KE::Stub {
class ManagedObjectReference;
}

namespace KE::Service {

class KEMethod;
class KESession;

// Element names of the service content that GetReference takes.
extern KECPP_API const char* const PxaRootFolder;
extern KECPP_API const char* const PxaPropColl;
extern KECPP_API const char* const PxaSessionMgr;

class KECPP_API KEServiceInst {
 public:
  virtual ~KEServiceInst();

  // Connects: builds the client, reads the service content, creates the first session. `config`
  // belongs to the instance from then on. True when a session exists afterwards, logged in or not;
  // a second call changes nothing and returns true.
  virtual bool Init(KELib::KEConfig* config) = 0;

  // Logs out and deletes every session. Blocks until their sync threads have left.
  virtual void Stop() = 0;

  virtual KELib::KEConfig* GetConfig() = 0;

  // Creates a further session; null when the instance is not initialised. One session with one data
  // sync is what the connection pool of two handles carries without waiting: a data sync keeps one
  // handle in its pending wait.
  virtual KESession* CreateSession() = 0;

  // The session that GetSession would hand out next; null when there is none.
  virtual KESession* GetCurrentSession() = 0;

  // The sessions in turn, round robin; null when there is none.
  virtual KESession* GetSession() = 0;

  // True while the service content is held.
  virtual bool IsInitialized() = 0;

  // A new reference, owned by the caller, read from the element `name` of the service content (the
  // constants above, "authorizationManager", or any other that the daemon names); null gives the
  // reference of the service instance itself. Throws XmlException when there is no such element.
  virtual KE::Stub::ManagedObjectReference* GetReference(const char* name) = 0;

  // The way to call the server's methods. Calls run at the same time as the sync thread's; when the
  // pool's two handles are taken they fail at once with "Unable to connect. Busy.".
  virtual KEMethod* GetMethod() = 0;
};

}  // namespace KE::Service

#endif
