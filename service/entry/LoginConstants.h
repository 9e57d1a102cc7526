// SPDX-License-Identifier: MIT
//
// The words of logging in: configuration keys, methods and elements.
#ifndef KECPP_SERVICE_ENTRY_LOGINCONSTANTS_H
#define KECPP_SERVICE_ENTRY_LOGINCONSTANTS_H

#include "foundation/KEExport.h"

namespace KE::Service {

extern KECPP_API const char* const CfgKeyLoginInfo;    // "LoginInfo", the section
extern KECPP_API const char* const CfgKeyLocalTicket;  // "localTicket"
extern KECPP_API const char* const userNameTag;        // "userName", key and element
extern KECPP_API const char* const CfgKeyUser;         // "user"; not read, "userName" is
extern KECPP_API const char* const CfgKeyPassword;     // "password", key and element
extern KECPP_API const char* const passwdFilePath;     // "passwordFilePath", element of a ticket

extern KECPP_API const char* const MethodAcquireLocalTicket;
extern KECPP_API const char* const MethodLogin;
extern KECPP_API const char* const MethodLogout;

extern KECPP_API const char* const ProductLineIdTag;  // "productLineId"
extern KECPP_API const char* const ApiVersionTag;     // "apiVersion"

}  // namespace KE::Service

#endif
