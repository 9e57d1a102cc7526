// SPDX-License-Identifier: MIT
//
// The first element of a reply's body: namespace, name and inner XML.
//
// Thread safety: none. Ownership: the three texts are owned.
#ifndef KECPP_SOAP_SOAPRESPONSE_H
#define KECPP_SOAP_SOAPRESPONSE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Soap {

class KECPP_API SoapResponse {
 public:
  SoapResponse() = default;

  // Each takes its texts over; the arguments are left empty.
  SoapResponse(KEString& replyNs, KEString& replyName, KEString& replyContent);
  void SetNamespace(KEString& text);
  void SetName(KEString& text);
  void SetContent(KEString& text);

  KEString& GetNamespace() { return ns; }
  KEString& GetName() { return name; }
  KEString& GetContent() { return content; }

  KEString ns;       // the value of the reply element's first attribute
  KEString name;     // its tag without "Response"; a fault's tag unchanged
  KEString content;  // its inner XML
};

}  // namespace KELib::Soap

#endif
