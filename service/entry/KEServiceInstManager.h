// SPDX-License-Identifier: MIT
//
// The library's entry: the process-wide manager of service instances.
//
// Thread safety: the manager's operations take its mutex, except the last two.
// GetServiceManagerInstance and
//   FreeServiceManagerInstance take no lock: a program calls them once at start and once at its
//   end.
// Ownership: the manager owns every instance that it handed out.
#ifndef KECPP_SERVICE_ENTRY_KESERVICEINSTMANAGER_H
#define KECPP_SERVICE_ENTRY_KESERVICEINSTMANAGER_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "service/entry/KEConnectFailure.h"

namespace KE::Service {

class KEServiceInst;

class KECPP_API KEServiceInstManager {
 public:
  virtual ~KEServiceInstManager();

  // The instance for a configuration: `configPath` is a file's path, an XML text that begins with
  // "<?xml", or empty; `defaultConfig` (usually DEFAULT_CONFIG_CONTENT) serves where the path is
  // empty or unreadable. The path is not changed. Blocks while it connects and logs in.
  //
  // A second call with the same readable path or the same text returns the same instance. A call
  // that falls back to the default document always connects again and frees the instance that an
  // earlier such call made: pass a readable path to share one.
  //
  // Null when the configuration is empty or the service content cannot be read. The instance may
  // hold a session whose login failed: GetDataSync of that session throws. GetLastFailure says
  // why.
  virtual KEServiceInst* GetServiceInstance(KELib::KEString& configPath,
                                            const char* defaultConfig) = 0;
  virtual KEServiceInst* GetServiceInstance(const char* configPath, const char* defaultConfig) = 0;

  // Stops the instance and destroys it, once. Null and an instance that the manager does not hold
  // (one made otherwise is its maker's to delete) change nothing.
  virtual void FreeServiceInstance(KEServiceInst* inst) = 0;

  // Stops and destroys every instance.
  virtual void FreeAllServiceInstance() = 0;

  // Why the last attempt failed to connect or to log in: GetServiceInstance that returned null or
  // an instance that is not logged in, KEServiceInst::CreateSession, KESession::Login. `none` when
  // the last attempt succeeded. One failure a process: where several threads connect at once, the
  // later attempt's counts. Takes no lock that is held across the network.
  virtual void GetLastFailure(KEConnectFailure& failure) = 0;

  // Cuts every GetServiceInstance that is connecting or logging in at this moment, from another
  // thread: it returns within milliseconds (after the look-up of a host name, if one is under way)
  // null, or an instance that is not logged in. An attempt that begins later is not concerned, so
  // a program that ends repeats the call until its thread is back. Takes no lock that is held
  // across the network.
  virtual void InterruptConnecting() = 0;
};

// The manager, created on first use together with the default logger and the transport.
KECPP_API KEServiceInstManager* GetServiceManagerInstance();

// Frees every instance, the transport, the default logger and the manager. Nothing happens without
// a manager.
KECPP_API void FreeServiceManagerInstance();

}  // namespace KE::Service

#endif
