// SPDX-License-Identifier: MIT
//
// A reply of the server, from the envelope to its content or to an exception.
#include <cstring>
#include <memory>

#include "fuzz/Fuzz.h"
#include "soap/SoapException.h"
#include "soap/SoapFaultInfo.h"
#include "soap/SoapMessage.h"
#include "soap/SoapResponse.h"
#include "xml/XmlException.h"

namespace {

using KELib::KEString;
using namespace KELib::Soap;

void CheckFault(SoapResponse& response, const std::string& text) {
  const std::string before = response.GetContent().Cstr();
  try {
    ThrowExceptionIfFault(response);
    FUZZ_CHECK(!IsResponseFault(response));
  } catch (const SoapException& e) {
    FUZZ_CHECK(IsResponseFault(response));
    const SoapFaultInfo* info = e.GetFaultInfo();
    if (info != nullptr) {
      // Pieces of one element's text are joined, so these two need not stand there as a whole.
      FUZZ_CHECK(std::strlen(info->GetFaultCode()) <= text.size());
      FUZZ_CHECK(std::strlen(info->GetFaultString()) <= text.size());
      if (info->GetSoapFaultDetail() != nullptr) {
        FUZZ_CHECK(fuzz::Contains(text, info->GetSoapFaultDetail()->GetDetailXmlString()));
      }
    }
  }
  FUZZ_CHECK(before == response.GetContent().Cstr());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  KEString content(text.c_str());
  SoapResponse response;
  try {
    ExtractMessageContent(content, response);
  } catch (const SoapException&) {
    return 0;
  }
  FUZZ_CHECK(fuzz::Contains(text, response.GetContent().Cstr()));
  FUZZ_CHECK(fuzz::Contains(text, response.GetName().Cstr()));
  FUZZ_CHECK(fuzz::Contains(text, response.GetNamespace().Cstr()));
  CheckFault(response, text);
  return 0;
}
