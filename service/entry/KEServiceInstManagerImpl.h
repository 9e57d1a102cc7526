// SPDX-License-Identifier: MIT
//
// The one implementation of KEServiceInstManager.
#ifndef KECPP_SERVICE_ENTRY_KESERVICEINSTMANAGERIMPL_H
#define KECPP_SERVICE_ENTRY_KESERVICEINSTMANAGERIMPL_H

#include <memory>

#include "foundation/KEHashmap.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"
#include "foundation/KEThreadAnnotations.h"
#include "service/entry/KEServiceInst.h"
#include "service/entry/KEServiceInstManager.h"

namespace KE::Service {

class KECPP_API KEServiceInstManagerImpl : public KEServiceInstManager {
 public:
  // The manager, made on first use: default logger, transport, manager, in this order. Not locked.
  static KEServiceInstManager* GetInstance();

  // Frees every instance, the transport, the logger, the manager, in this order. Not locked.
  static void FreeInstance();

  KEServiceInstManagerImpl();
  ~KEServiceInstManagerImpl() override;
  KEServiceInstManagerImpl(const KEServiceInstManagerImpl&) = delete;
  KEServiceInstManagerImpl& operator=(const KEServiceInstManagerImpl&) = delete;

  KEServiceInst* GetServiceInstance(KELib::KEString& configPath,
                                    const char* defaultConfig) override;
  KEServiceInst* GetServiceInstance(const char* configPath, const char* defaultConfig) override;
  void FreeServiceInstance(KEServiceInst* inst) override;
  void FreeAllServiceInstance() override;
  void GetLastFailure(KEConnectFailure& failure) override;
  void InterruptConnecting() override;

  // The caller holds the manager's mutex.
  void FreeAllServiceInstanceNoLock() KECPP_REQUIRES(mutex);

 private:
  void File(KEServiceInst* inst) KECPP_REQUIRES(mutex);
  bool Unlink(KEServiceInst* inst) KECPP_REQUIRES(mutex);
  void Destroy(KEServiceInst* inst);
  bool StopForGood(KEServiceInst& inst);

  static KEServiceInstManagerImpl* _inst;

  KELib::KEHashmap<KELib::KEString, KEServiceInst*> instances KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KELib::KEMutex> mutex;
};

}  // namespace KE::Service

#endif
