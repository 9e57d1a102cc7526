// SPDX-License-Identifier: MIT
//
// One SOAP call: the method element and the names it was made of.
//
// Thread safety: none.
// Ownership: namespace and method name are borrowed and outlive the request; the content is owned.
#ifndef KECPP_SOAP_SOAPREQUEST_H
#define KECPP_SOAP_SOAPREQUEST_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Xml {
class KEXmlBuffer;
}

namespace KELib::Soap {

class KECPP_API SoapRequest {
 public:
  // Takes the buffer's text, the method element, over and clears the buffer.
  SoapRequest(const char* targetNs, const char* methodName, Xml::KEXmlBuffer& body);

  // Takes the text over; the argument is left empty.
  void SetContent(KEString& text);

  const char* GetNamespace() const { return ns; }
  const char* GetMethod() const { return method; }
  KEString& GetContent() { return content; }

  const char* ns;
  const char* method;
  KEString content;
};

}  // namespace KELib::Soap

#endif
