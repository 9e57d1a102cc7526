// SPDX-License-Identifier: MIT
//
// What a server said in a SOAP fault: code, text and the element that names the kind of fault.
//
// Thread safety: none.
// Ownership: every text is an array of the record's own, NUL-terminated and never null; copies are
//   independent of their source.
#ifndef KECPP_SOAP_SOAPFAULTINFO_H
#define KECPP_SOAP_SOAPFAULTINFO_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Soap {

// The detail of a fault: the XML inside of it, and the kind of fault that it names.
class KECPP_API SoapFaultDetail {
 public:
  // Each takes the text over; the argument is left empty.
  explicit SoapFaultDetail(KEString& xml);
  void SetFaultTypeName(KEString& name);
  void SetDetailXmlString(KEString& xml);

  SoapFaultDetail(const SoapFaultDetail& other);
  SoapFaultDetail& operator=(const SoapFaultDetail& other);
  virtual ~SoapFaultDetail();

  const char* GetFaultTypeName() const { return faultTypeName; }
  const char* GetDetailXmlString() const { return detailXml; }

  char* faultTypeName;  // the tag of the first element inside the detail, without "Fault"
  char* detailXml;      // the XML inside the detail
};

// A whole fault.
class KECPP_API SoapFaultInfo {
 public:
  // Takes both texts over (the arguments are left empty) and owns `faultDetail`, which may be null.
  SoapFaultInfo(KEString& code, KEString& string, SoapFaultDetail* faultDetail);

  SoapFaultInfo(const SoapFaultInfo& other);
  SoapFaultInfo& operator=(const SoapFaultInfo& other);
  virtual ~SoapFaultInfo();

  // Take the text over; the argument is left empty.
  void SetFaultCode(KEString& code);
  void SetFaultString(KEString& string);
  // Owns `faultDetail` and deletes the previous one.
  void SetSoapFaultDetail(SoapFaultDetail* faultDetail);

  const char* GetFaultCode() const { return faultCode; }
  const char* GetFaultString() const { return faultString; }
  SoapFaultDetail* GetSoapFaultDetail() const { return detail.get(); }

  char* faultCode;
  char* faultString;
  std::unique_ptr<SoapFaultDetail> detail;
};

}  // namespace KELib::Soap

#endif
