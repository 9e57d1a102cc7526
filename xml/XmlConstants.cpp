// SPDX-License-Identifier: MIT
#include "xml/XmlConstants.h"

namespace KELib::Xml {

const char* const START_TOKEN = "<";
const char* const END_TOKEN = "</";
const char* const NULL_END_TOKEN = "/>";
const char OPEN_ELEM = '<';
const char CLOSE_ELEM = '>';
const char* const CDATA_START = "![CDATA[";
const char* const CDATA_START_ELEM = "<![CDATA[";
const char* const CDATA_END = "]]";
const char* const CDATA_END_ELEM = "]]>";
const char* const ESCAPE_CHAR_AMP = "&amp;";
const char* const ESCAPE_CHAR_CLOSE_ELEM = "&lt;";
const char* const ESCAPE_CHAR_OPEN_ELEM = "&gt;";
const char* const XML_nsAttrName = "xmlns";
const char* const XML_xsiType = "xsi:type";
const char* const XML_xsiNil = "xsi:nil";
const char* const XML_xsiNull = "xsi:null";
const char* const XML_xsiPrefix = "xsi:";
const char* const XML_xsdPrefix = "xsd:";
const char* const ERR_BAD_ELEM = "Malformed XML. Missing element end.";
const char* const ERR_BAD_CDATA = "Malformed CDATA content. No ending.";

const char* const XML_stringTypeSuffix = "string";
const char* const XML_XsdStringType = "xsd:string";
const char* const XML_XsiStringType = "xsi:string";
const char* const XML_boolTypeSuffix = "boolean";
const char* const XML_XsdBoolType = "xsd:boolean";
const char* const XML_XsiBoolType = "xsi:boolean";
const char* const XML_byteTypeSuffix = "byte";
const char* const XML_XsdByteType = "xsd:byte";
const char* const XML_XsiByteType = "xsi:byte";
const char* const XML_shortTypeSuffix = "short";
const char* const XML_XsdShortType = "xsd:short";
const char* const XML_XsiShortType = "xsi:short";
const char* const XML_intTypeSuffix = "int";
const char* const XML_XsdIntType = "xsd:int";
const char* const XML_XsiIntType = "xsi:int";
const char* const XML_longTypeSuffix = "long";
const char* const XML_XsdLongType = "xsd:long";
const char* const XML_XsiLongType = "xsi:long";
const char* const XML_floatTypeSuffix = "float";
const char* const XML_XsdFloatType = "xsd:float";
const char* const XML_XsiFloatType = "xsi:float";
const char* const XML_doubleTypeSuffix = "double";
const char* const XML_XsdDoubleType = "xsd:double";
const char* const XML_XsiDoubleType = "xsi:double";
const char* const XML_dateTimeTypeSuffix = "dateTime";
const char* const XML_XsdDateTimeType = "xsd:dateTime";
const char* const XML_XsiDateTimeType = "xsi:dateTime";

}  // namespace KELib::Xml
