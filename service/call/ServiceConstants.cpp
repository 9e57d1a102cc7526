// SPDX-License-Identifier: MIT
#include "service/call/ServiceConstants.h"

namespace KE::Service {

const char* const targetNamespace = "urn:pxa25";
const char* const ThisMorefTag = "_this";
const char* const MorefTypeAttr = "type";
const char* const NotAuthMsg = "Session privileges were revoked.";

const char* const methodName = "RetrieveServiceContent";
const char* const svcInst = "ServiceInstance";

const char* const KEY_CERTFILE = "certFile";
const char* const KEY_PASSPHRASE = "passPhrase";
const char* const KEY_KEYFILE = "keyFile";
const char* const KEY_CACERTFILE = "CACertFile";
const char* const KEY_URL = "url";
const char* const KEY_PROTO = "proto";
const char* const KEY_HOST = "host";
const char* const KEY_PORT = "port";
const char* const KEY_PATH = "path";
const char* const KEY_PROXYHOST = "proxyHost";
const char* const KEY_PROXYPORT = "proxyPort";
const char* const KEY_TIMEOUT = "timeout";
const char* const KEY_VERBOSE_HTTP_LOG = "verboseHttpLogging";

}  // namespace KE::Service
