// SPDX-License-Identifier: MIT
//
// The steps between a SOAP call and an HTTP exchange: wrap the request, check the transport's
// result, cut the reply out of its envelope, recognise a fault.
//
// Thread safety: any thread, if no other uses the arguments. Cost: linear in the message; a reply
// is cut
//   out inside its own buffer, never copied.
#ifndef KECPP_SOAP_SOAPMESSAGE_H
#define KECPP_SOAP_SOAPMESSAGE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Http {
class HttpRequest;
class HttpResponse;
}  // namespace KELib::Http

namespace KELib::Soap {

class SoapFaultInfo;
class SoapRequest;
class SoapResponse;

// Makes envelope head, method element and envelope end the HTTP request's body.
KECPP_API void EncloseMessageContent(SoapRequest& request, Http::HttpRequest& httpRequest);

// Fills `response` from the first element of the envelope's body; nothing but white space in it
// counts as no content. Takes the text over, also when it throws.
// Throws SoapException for an empty reply, one without "soapenv:Body", a body without an element
// and malformed XML.
KECPP_API void ExtractMessageContent(KEString& content, SoapResponse& response);

// Throws SoapException for a failed transfer and for an empty reply.
KECPP_API void ThrowExceptionOnRequestError(Http::HttpResponse& httpResponse);

// Erases from the first occurrence of `suffix`, wherever it is, to the end of the text.
KECPP_API void StripSuffix(const char* suffix, KEString& text);
KECPP_API void StripResponseSuffix(KEString& text);
KECPP_API void StripFaultSuffix(KEString& text);

// True when the response's name contains "soapenv:Fault".
KECPP_API bool IsResponseFault(SoapResponse& response);

// Reads a fault's code, text and detail, in any order; what is missing stays empty. `info` receives
// a new record that the caller owns, also when SoapException is thrown for malformed XML. A fault
// without content throws SoapException and leaves `info` alone. The response stays as it is.
KECPP_API void ExtractFaultInfo(SoapResponse& response, SoapFaultInfo*& info);

// Throws SoapException when the response is a fault: the message is the fault's type name, empty
// without a detail, and the fault information is set.
KECPP_API void ThrowExceptionIfFault(SoapResponse& response);

}  // namespace KELib::Soap

#endif
