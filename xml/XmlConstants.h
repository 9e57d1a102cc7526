// SPDX-License-Identifier: MIT
//
// The vocabulary of XML texts.
#ifndef KECPP_XML_XMLCONSTANTS_H
#define KECPP_XML_XMLCONSTANTS_H

#include "foundation/KEExport.h"

namespace KELib::Xml {

extern KECPP_API const char* const START_TOKEN;
extern KECPP_API const char* const END_TOKEN;
extern KECPP_API const char* const NULL_END_TOKEN;
extern KECPP_API const char OPEN_ELEM;
extern KECPP_API const char CLOSE_ELEM;
extern KECPP_API const char* const CDATA_START;
extern KECPP_API const char* const CDATA_START_ELEM;
extern KECPP_API const char* const CDATA_END;
extern KECPP_API const char* const CDATA_END_ELEM;
extern KECPP_API const char* const ESCAPE_CHAR_AMP;
extern KECPP_API const char* const ESCAPE_CHAR_CLOSE_ELEM;  // "&lt;", the entity of "<"
extern KECPP_API const char* const ESCAPE_CHAR_OPEN_ELEM;   // "&gt;", the entity of ">"
extern KECPP_API const char* const XML_nsAttrName;
extern KECPP_API const char* const XML_xsiType;
extern KECPP_API const char* const XML_xsiNil;
extern KECPP_API const char* const XML_xsiNull;
extern KECPP_API const char* const XML_xsiPrefix;
extern KECPP_API const char* const XML_xsdPrefix;
extern KECPP_API const char* const ERR_BAD_ELEM;
extern KECPP_API const char* const ERR_BAD_CDATA;

// Schema types: the suffix, and the name with either prefix.
extern KECPP_API const char* const XML_stringTypeSuffix;
extern KECPP_API const char* const XML_XsdStringType;
extern KECPP_API const char* const XML_XsiStringType;
extern KECPP_API const char* const XML_boolTypeSuffix;
extern KECPP_API const char* const XML_XsdBoolType;
extern KECPP_API const char* const XML_XsiBoolType;
extern KECPP_API const char* const XML_byteTypeSuffix;
extern KECPP_API const char* const XML_XsdByteType;
extern KECPP_API const char* const XML_XsiByteType;
extern KECPP_API const char* const XML_shortTypeSuffix;
extern KECPP_API const char* const XML_XsdShortType;
extern KECPP_API const char* const XML_XsiShortType;
extern KECPP_API const char* const XML_intTypeSuffix;
extern KECPP_API const char* const XML_XsdIntType;
extern KECPP_API const char* const XML_XsiIntType;
extern KECPP_API const char* const XML_longTypeSuffix;
extern KECPP_API const char* const XML_XsdLongType;
extern KECPP_API const char* const XML_XsiLongType;
extern KECPP_API const char* const XML_floatTypeSuffix;
extern KECPP_API const char* const XML_XsdFloatType;
extern KECPP_API const char* const XML_XsiFloatType;
extern KECPP_API const char* const XML_doubleTypeSuffix;
extern KECPP_API const char* const XML_XsdDoubleType;
extern KECPP_API const char* const XML_XsiDoubleType;
extern KECPP_API const char* const XML_dateTimeTypeSuffix;
extern KECPP_API const char* const XML_XsdDateTimeType;
extern KECPP_API const char* const XML_XsiDateTimeType;

}  // namespace KELib::Xml

#endif
