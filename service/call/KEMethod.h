// SPDX-License-Identifier: MIT
//
// The one way to call a method of the management server.
//
// Thread safety: Init first; then Invoke from any thread. No lock is held during a call.
// Ownership: the client is borrowed and outlives the method object.
//
// Texts are XML text and are written unchanged: escape what may hold "&", "<" or ">".
#ifndef KECPP_SERVICE_CALL_KEMETHOD_H
#define KECPP_SERVICE_CALL_KEMETHOD_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Xml {
class KEXmlBuffer;
}

namespace KE::Service {

class KESoapClient;

class KECPP_API KEMethod {
 public:
  virtual ~KEMethod();

  // The operations of this class itself throw NotImplementedException.

  // Stores the client; only the first call has an effect.
  virtual void Init(KESoapClient* client);

  // Sends the method element in `body`, which is empty afterwards, and gives the inner XML of the
  // reply to `result`. A failed call leaves `result` as it was. Throws
  // - SystemException: a fault of the server (the message is its type name, such as "InvalidState"
  //   or "RequestCanceled"), a failed transfer, a reply that is none, or no client;
  // - RequestTimedOutException and RequestFailedException as they come;
  // - NoPermissionException once the process's privileges were revoked: nothing is sent then;
  // - Exception for whatever else fails, after a line in the log.
  virtual void Invoke(const char* ns, const char* method, KELib::Xml::KEXmlBuffer& body,
                      KELib::KEString& result);

  // Calls a method that takes nothing but the object that it acts on.
  virtual void Invoke(const char* ns, const char* method, const char* thisType,
                      const char* thisValue, KELib::KEString& result);

  // The same with one named argument.
  virtual void Invoke(const char* ns, const char* method, const char* thisType,
                      const char* thisValue, const char* argName, const char* argValue,
                      KELib::KEString& result);
};

// A method object on `client`, owned by the caller.
KECPP_API KEMethod* CreateMethod(KESoapClient* client);

}  // namespace KE::Service

#endif
