// SPDX-License-Identifier: MIT
//
// A SOAP call failed: in the transport, by a reply that is none, or by a fault of the server.
//
// Thread safety: none; an exception belongs to the thread that handles it.
// Ownership: an exception owns its fault information; a copy has a copy of it.
#ifndef KECPP_SOAP_SOAPEXCEPTION_H
#define KECPP_SOAP_SOAPEXCEPTION_H

#include <memory>

#include "foundation/KEException.h"
#include "foundation/KEExport.h"
#include "soap/SoapFaultInfo.h"

namespace KELib::Soap {

class KECPP_API SoapException : public Exception {
 public:
  using Exception::Exception;
  SoapException(const SoapException& other);
  SoapException& operator=(const SoapException& other);
  ~SoapException() override;

  // Owns `info`, deletes the previous one and takes the fault's text as message. Null changes
  // nothing.
  void SetFaultInfo(SoapFaultInfo* info);

  // Null unless the failure is a fault of the server. Valid as long as the exception.
  SoapFaultInfo* GetFaultInfo() const { return faultInfo.get(); }

  std::unique_ptr<SoapFaultInfo> faultInfo;
};

}  // namespace KELib::Soap

#endif
