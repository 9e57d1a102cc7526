// SPDX-License-Identifier: MIT
//
// The one implementation of KEServiceInst.
#ifndef KECPP_SERVICE_ENTRY_KESERVICEINSTIMPL_H
#define KECPP_SERVICE_ENTRY_KESERVICEINSTIMPL_H

#include <memory>

#include "config/KEConfig.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"
#include "foundation/KEThreadAnnotations.h"
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
  // Part of Init.
  bool SetupClient();

  // Invokes "RetrieveServiceContent" unless its answer is held. False when there is none. Takes the
  // instance's mutex unless the calling thread holds it.
  bool SetupService();

  // The caller holds the instance's mutex.
  KESession* CreateSessionNoLock() KECPP_REQUIRES(mutex);
  KESession* GetCurrentSessionNoLock() KECPP_REQUIRES(mutex);

  // Ends the sync threads of all sessions. False when one cannot be ended: then neither the
  // instance nor a session of it may be destroyed.
  bool EndSyncs();

 private:
  bool MakeClient();
  bool EndSyncsNoLock() KECPP_REQUIRES(mutex);

  std::unique_ptr<KELib::KEConfig> config;  // constant after Init
  KELib::KEString serviceContent KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KESoapClient> client;  // constant after Init
  std::unique_ptr<KEMethod> method;      // constant after Init
  KELib::KEVector<KESession*> sessions KECPP_GUARDED_BY(mutex);
  unsigned int next KECPP_GUARDED_BY(mutex) = 0;
  std::unique_ptr<KELib::KEMutex> mutex;
};

}  // namespace KE::Service

#endif
