// SPDX-License-Identifier: MIT
//
// The words of calling the server: names of requests and keys of the connection's configuration.
#ifndef KECPP_SERVICE_CALL_SERVICECONSTANTS_H
#define KECPP_SERVICE_CALL_SERVICECONSTANTS_H

#include "foundation/KEExport.h"

namespace KE::Service {

extern KECPP_API const char* const targetNamespace;  // "urn:pxa25", of every method element
extern KECPP_API const char* const ThisMorefTag;     // "_this", the object a method acts on
extern KECPP_API const char* const MorefTypeAttr;    // "type", its type
extern KECPP_API const char* const NotAuthMsg;       // what a refused call reports

// The first call of every connection, and type and value of the object that it addresses.
extern KECPP_API const char* const methodName;  // "RetrieveServiceContent"
extern KECPP_API const char* const svcInst;     // "ServiceInstance"

// Keys of the configuration document, in the order in which they are read.
extern KECPP_API const char* const KEY_CERTFILE;
extern KECPP_API const char* const KEY_PASSPHRASE;
extern KECPP_API const char* const KEY_KEYFILE;
extern KECPP_API const char* const KEY_CACERTFILE;
extern KECPP_API const char* const KEY_URL;  // when not empty, the next four are ignored
extern KECPP_API const char* const KEY_PROTO;
extern KECPP_API const char* const KEY_HOST;
extern KECPP_API const char* const KEY_PORT;
extern KECPP_API const char* const KEY_PATH;
extern KECPP_API const char* const KEY_PROXYHOST;
extern KECPP_API const char* const KEY_PROXYPORT;
extern KECPP_API const char* const KEY_TIMEOUT;  // seconds
extern KECPP_API const char* const KEY_VERBOSE_HTTP_LOG;

}  // namespace KE::Service

#endif
