// SPDX-License-Identifier: MIT
#include "soap/SoapResponse.h"

namespace KELib::Soap {

SoapResponse::SoapResponse(KEString& replyNs, KEString& replyName, KEString& replyContent) {
  ns.Transfer(replyNs);
  name.Transfer(replyName);
  content.Transfer(replyContent);
}

void SoapResponse::SetNamespace(KEString& text) {
  ns.Transfer(text);
}

void SoapResponse::SetName(KEString& text) {
  name.Transfer(text);
}

void SoapResponse::SetContent(KEString& text) {
  content.Transfer(text);
}

}  // namespace KELib::Soap
