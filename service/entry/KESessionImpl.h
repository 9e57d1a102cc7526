// SPDX-License-Identifier: MIT
//
// The one implementation of KESession: logs in with a local ticket or with user and password.
//
// Texts: user name and password of the configuration are XML text and are written back
//   unchanged; what the ticket's password file holds and what Login is given is raw and gets
//   escaped.
#ifndef KECPP_SERVICE_ENTRY_KESESSIONIMPL_H
#define KECPP_SERVICE_ENTRY_KESESSIONIMPL_H

#include <memory>

#include "datasync/KEDataSync.h"
#include "foundation/KEMutex.h"
#include "foundation/KEString.h"
#include "foundation/KEThreadAnnotations.h"
#include "service/entry/KESession.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlBuffer;
}

namespace KE::Service {

class KECPP_API KESessionImpl : public KESession {
 public:
  KESessionImpl();
  ~KESessionImpl() override;
  KESessionImpl(const KESessionImpl&) = delete;
  KESessionImpl& operator=(const KESessionImpl&) = delete;

  void Init(KELib::KEConfig* config, KEMethod* method, KELib::KEString& serviceContent) override;
  void Cleanup() override;
  const void* GetId() override;
  void Login(KELib::KEString& user, KELib::KEString& password) override;
  void Logout() override;
  KEDataSync* GetDataSync() override;

  // Reads the references and the API's version. Throws XmlException when a reference is missing;
  // `serviceContent` is as before in every case.
  void SetupSession(KELib::KEString& serviceContent);

  // Obtains a local ticket for `user`. Replaces the user by the ticket's and the password by the
  // content of the ticket's password file. True when the password came from that file; otherwise it
  // is unchanged and the reason is in the log. A ticket that is refused or malformed changes
  // neither.
  bool SetupLocalLogin(KELib::KEString& user, KELib::KEString& password);

  // As Login; the caller holds the session's mutex.
  void LoginNoLock(KELib::KEString& user, KELib::KEString& password) KECPP_REQUIRES(mutex);

  bool IsInitialized();
  bool IsLoggedIn();

  // Ends the data sync's thread. False when it could not be ended: the session must not be deleted.
  bool EndSync();

 private:
  void LoginAsConfigured(KELib::KEConfig& config) KECPP_REQUIRES(mutex);
  void AcquireTicket(const KELib::KEString& user, KELib::KEString& ticketUser,
                     KELib::KEString& path);
  void SendLogin(const KELib::KEString& userXml, const KELib::KEString& passwordXml)
      KECPP_REQUIRES(mutex);
  bool MayLogin() KECPP_REQUIRES(mutex);
  void StartBody(const char* name, KELib::Xml::KEXmlBuffer& body);

  // What is not marked is constant after Init, which holds `mutex`.
  bool initialized KECPP_GUARDED_BY(mutex) = false;
  bool loggedIn KECPP_GUARDED_BY(mutex) = false;
  KEMethod* method = nullptr;
  const void* id KECPP_GUARDED_BY(mutex) = nullptr;
  bool newApi = false;
  KELib::KEString userSession KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KE::Stub::ManagedObjectReference> rootFolder;
  std::unique_ptr<KE::Stub::ManagedObjectReference> propertyCollector;
  std::unique_ptr<KE::Stub::ManagedObjectReference> sessionManager;
  // Destroyed before the references that it works with.
  std::unique_ptr<KEDataSync> dataSync KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KELib::KEMutex> mutex;
};

}  // namespace KE::Service

#endif
