// SPDX-License-Identifier: MIT
#include "service/entry/LoginConstants.h"

namespace KE::Service {

const char* const CfgKeyLoginInfo = "LoginInfo";
const char* const CfgKeyLocalTicket = "localTicket";
const char* const userNameTag = "userName";
const char* const CfgKeyUser = "user";
const char* const CfgKeyPassword = "password";
const char* const passwdFilePath = "passwordFilePath";

const char* const MethodAcquireLocalTicket = "AcquireLocalTicket";
const char* const MethodLogin = "Login";
const char* const MethodLogout = "Logout";

const char* const ProductLineIdTag = "productLineId";
const char* const ApiVersionTag = "apiVersion";

}  // namespace KE::Service
