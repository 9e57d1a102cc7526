// SPDX-License-Identifier: MIT
//
// The implementation of KEMethod over a SOAP client.
#ifndef KECPP_SERVICE_CALL_KEMETHODIMPL_H
#define KECPP_SERVICE_CALL_KEMETHODIMPL_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "service/call/KEMethod.h"

namespace KE::Service {

class KECPP_API KEMethodImpl : public KEMethod {
 public:
  KEMethodImpl();
  ~KEMethodImpl() override;

  void Init(KESoapClient* soapClient) override;
  void Invoke(const char* ns, const char* method, KELib::Xml::KEXmlBuffer& body,
              KELib::KEString& result) override;
  void Invoke(const char* ns, const char* method, const char* thisType, const char* thisValue,
              KELib::KEString& result) override;
  void Invoke(const char* ns, const char* method, const char* thisType, const char* thisValue,
              const char* argName, const char* argValue, KELib::KEString& result) override;

 private:
  void Send(const char* ns, const char* method, KELib::Xml::KEXmlBuffer& body,
            KELib::KEString& result);

  KESoapClient* client = nullptr;  // constant after Init
};

}  // namespace KE::Service

#endif
