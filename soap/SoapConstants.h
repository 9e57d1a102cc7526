// SPDX-License-Identifier: MIT
//
// The fixed texts of the SOAP layer: envelope, headers, fault elements and error messages.
#ifndef KECPP_SOAP_SOAPCONSTANTS_H
#define KECPP_SOAP_SOAPCONSTANTS_H

#include "foundation/KEExport.h"

namespace KELib::Soap {

// What comes before and after the method element of every request. No header element is sent.
extern KECPP_API const char* const SOAP_START;
extern KECPP_API const char* const SOAP_END;

// The body's element. Replies are recognised by this literal tag, prefix included.
extern KECPP_API const char* const SOAP_BODY_TAG;
extern KECPP_API const char* const SOAP_BODY_START;
extern KECPP_API const char* const SOAP_BODY_END;
extern KECPP_API const unsigned int SOAP_BODY_TAG_LEN;
extern KECPP_API const unsigned int SOAP_BODY_START_LEN;
extern KECPP_API const unsigned int SOAP_BODY_END_LEN;
extern KECPP_API const char* const SOAPENV;

// The action header is always sent without a value: the method is named in the body only.
extern KECPP_API const char* const HEADER_SOAPACTION;
extern KECPP_API const char* const HEADER_VALUE_USERAGENT_MPXA;

// Endings that are cut off the names of reply elements.
extern KECPP_API const char* const SOAP_REQUEST_SUFFIX;
extern KECPP_API const char* const SOAP_RESPONSE_SUFFIX;

// Elements of a fault. The actor is part of the vocabulary, it is not read.
extern KECPP_API const char* const FAULT_TAG;
extern KECPP_API const char* const FAULT_CODE_TAG;
extern KECPP_API const char* const FAULT_STRING_TAG;
extern KECPP_API const char* const FAULT_ACTOR_TAG;
extern KECPP_API const char* const FAULT_DETAIL_TAG;
extern KECPP_API const char* const FAULT_TAG_SUFFIX;

// Messages of SoapException.
extern KECPP_API const char* const ERR_NO_SOAPBODY;
extern KECPP_API const char* const ERR_NO_CONTENT;
extern KECPP_API const char* const ERR_NO_RESPONSE;
extern KECPP_API const char* const ERR_REQUEST;      // followed by the transport's result code
extern KECPP_API const char* const ERR_REQUEST_STR;  // followed by the transport's error text
extern KECPP_API const char* const ERR_SERVER_FAULT_NO_CONTENT;

}  // namespace KELib::Soap

#endif
