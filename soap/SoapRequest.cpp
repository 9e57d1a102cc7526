// SPDX-License-Identifier: MIT
#include "soap/SoapRequest.h"

#include "xml/KEXmlBuffer.h"

namespace KELib::Soap {

SoapRequest::SoapRequest(const char* targetNs, const char* methodName, Xml::KEXmlBuffer& body)
    : ns(targetNs), method(methodName) {
  content.Transfer(body.Bufr());
  body.Clear();
}

void SoapRequest::SetContent(KEString& text) {
  content.Transfer(text);
}

}  // namespace KELib::Soap
