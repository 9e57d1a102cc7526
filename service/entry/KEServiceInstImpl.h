// SPDX-License-Identifier: MIT
//
// The one implementation of KEServiceInst.
#ifndef KECPP_SERVICE_ENTRY_KESERVICEINSTIMPL_H
#define KECPP_SERVICE_ENTRY_KESERVICEINSTIMPL_H

#include <memory>

#include "config/KEConfig.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "service/call/KEMethod.h"
#include "service/call/KESoapClient.h"
#include "service/entry/KEServiceInst.h"
#include "service/entry/KESession.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

class KECPP_API KEServiceInstImpl : public KEServiceInst {
 public:
  KEServiceInstImpl();
  ~KEServiceInstImpl() override;  // ends the sync threads first; sends no logout
  KEServiceInstImpl(const KEServiceInstImpl&) = delete;
  KEServiceInstImpl& operator=(const KEServiceInstImpl&) = delete;

  bool Init(KELib::KEConfig* config) override;
  void Stop() override;
  KELib::KEConfig* GetConfig() override;
  KESession* CreateSession() override;
  KESession* GetCurrentSession() override;
  KESession* GetSession() override;
  bool IsInitialized() override;
  KE::Stub::ManagedObjectReference* GetReference(const char* name) override;
  KEMethod* GetMethod() override;

  // Builds the client and the method invoker and reads the service content. False when one fails.
  bool SetupClient();

  // Invokes "RetrieveServiceContent" unless its answer is held. False when there is none.
  bool SetupService();

  KESession* CreateSessionNoLock();      // the caller holds the instance's mutex
  KESession* GetCurrentSessionNoLock();  // likewise

  // Ends the sync threads of all sessions. False when one cannot be ended: then neither the
  // instance nor a session of it may be destroyed.
  bool EndSyncs();

 private:
  bool EndSyncsNoLock();

  std::unique_ptr<KELib::KEConfig> config;  // constant after Init
  KELib::KEString serviceContent;           // guarded by `mutex` while it is read
  std::unique_ptr<KESoapClient> client;     // constant after Init
  std::unique_ptr<KEMethod> method;         // constant after Init
  KELib::KEVector<KESession*> sessions;     // guarded by `mutex`
  unsigned int next = 0;                    // guarded by `mutex`
  std::unique_ptr<KELib::KEMutex> mutex;
};

}  // namespace KE::Service

#endif
