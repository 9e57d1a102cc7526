// SPDX-License-Identifier: MIT
#include "foundation/KEConstants.h"

namespace KELib {

const char CHR_NULL = '\0';
const char NEWLINE = '\n';
const char CRG_RETURN = '\r';
const char EQUALS = '=';
const char FWD_SLASH = '/';
const char DBL_QUOTE = '"';
const char WHITESPACE = ' ';
const char SINGLE_COLON = ':';
const char BACK_SLASH = '\\';

const char DEFAULT_CHAR = 0;
const signed char DEFAULT_SCHAR = 0;
const unsigned char DEFAULT_UCHAR = 0;
const short DEFAULT_SHORT = -1;
const unsigned short DEFAULT_USHORT = 0;
const int DEFAULT_INT = -1;
const unsigned int DEFAULT_UINT = 0;
const long long DEFAULT_LONG = 1;
const unsigned long long DEFAULT_ULONG = 0;
const float DEFAULT_FLOAT = 0.0F;
const double DEFAULT_DOUBLE = 0.0;
const bool DEFAULT_BOOL = false;
const long long DEFAULT_INT64 = -1;
const unsigned long long DEFAULT_UINT64 = 0;

const char* const STR_BOOLEAN_TRUE = "true";
const char* const STR_BOOLEAN_FALSE = "false";
const char* const STR_BOOLEAN_TRUE_ONE = "1";
const char* const STR_BOOLEAN_FALSE_ZERO = "0";

const unsigned int BUFFER_GROW_SIZE = 128;

}  // namespace KELib
