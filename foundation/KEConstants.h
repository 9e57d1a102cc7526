// SPDX-License-Identifier: MIT
//
// Characters and the values that fields hold before the server has sent one.
#ifndef KECPP_FOUNDATION_KECONSTANTS_H
#define KECPP_FOUNDATION_KECONSTANTS_H

#include "foundation/KEExport.h"

namespace KELib {

extern KECPP_API const char CHR_NULL;
extern KECPP_API const char NEWLINE;
extern KECPP_API const char CRG_RETURN;
extern KECPP_API const char EQUALS;
extern KECPP_API const char FWD_SLASH;
extern KECPP_API const char DBL_QUOTE;
extern KECPP_API const char WHITESPACE;
extern KECPP_API const char SINGLE_COLON;
extern KECPP_API const char BACK_SLASH;

extern KECPP_API const char DEFAULT_CHAR;
extern KECPP_API const signed char DEFAULT_SCHAR;
extern KECPP_API const unsigned char DEFAULT_UCHAR;
extern KECPP_API const short DEFAULT_SHORT;  // -1
extern KECPP_API const unsigned short DEFAULT_USHORT;
extern KECPP_API const int DEFAULT_INT;  // -1
extern KECPP_API const unsigned int DEFAULT_UINT;
extern KECPP_API const long long DEFAULT_LONG;  // 1, unlike the other signed defaults
extern KECPP_API const unsigned long long DEFAULT_ULONG;
extern KECPP_API const float DEFAULT_FLOAT;
extern KECPP_API const double DEFAULT_DOUBLE;
extern KECPP_API const bool DEFAULT_BOOL;
extern KECPP_API const long long DEFAULT_INT64;  // -1
extern KECPP_API const unsigned long long DEFAULT_UINT64;

extern KECPP_API const char* const STR_BOOLEAN_TRUE;
extern KECPP_API const char* const STR_BOOLEAN_FALSE;
extern KECPP_API const char* const STR_BOOLEAN_TRUE_ONE;
extern KECPP_API const char* const STR_BOOLEAN_FALSE_ZERO;

extern KECPP_API const unsigned int BUFFER_GROW_SIZE;  // characters that a text buffer grows by

}  // namespace KELib

#endif
