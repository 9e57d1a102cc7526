// SPDX-License-Identifier: MIT
#include "soap/SoapConstants.h"

namespace KELib::Soap {

const char* const SOAP_START =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<soapenv:Envelope xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"\n"
    " xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\"\n"
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"\n"
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
    "<soapenv:Body>\n";
const char* const SOAP_END = "\n</soapenv:Body>\n</soapenv:Envelope>";

const char* const SOAP_BODY_TAG = "soapenv:Body";
const char* const SOAP_BODY_START = "<soapenv:Body>\n";
const char* const SOAP_BODY_END = "\n</soapenv:Body>";
const unsigned int SOAP_BODY_TAG_LEN = 12;
const unsigned int SOAP_BODY_START_LEN = 15;
const unsigned int SOAP_BODY_END_LEN = 16;
const char* const SOAPENV = "soapenv";

const char* const HEADER_SOAPACTION = "SOAPAction: ";
const char* const HEADER_VALUE_USERAGENT_MPXA = "mpxa/0.1";

const char* const SOAP_REQUEST_SUFFIX = "Request";
const char* const SOAP_RESPONSE_SUFFIX = "Response";

const char* const FAULT_TAG = "soapenv:Fault";
const char* const FAULT_CODE_TAG = "faultcode";
const char* const FAULT_STRING_TAG = "faultstring";
const char* const FAULT_ACTOR_TAG = "faultactor";
const char* const FAULT_DETAIL_TAG = "detail";
const char* const FAULT_TAG_SUFFIX = "Fault";

const char* const ERR_NO_SOAPBODY = "No Soap Body found in Response";
const char* const ERR_NO_CONTENT = "Response Content is empty";
const char* const ERR_NO_RESPONSE = "No Response Received.";
const char* const ERR_REQUEST = "HTTP Request Error. Code: ";
const char* const ERR_REQUEST_STR = " Message: ";
const char* const ERR_SERVER_FAULT_NO_CONTENT = "Server Fault had no content.";

}  // namespace KELib::Soap
