// SPDX-License-Identifier: MIT
//
// The vocabulary of the HTTP transport: parts of URLs, request headers, error texts.
#ifndef KECPP_HTTP_HTTPCONSTANTS_H
#define KECPP_HTTP_HTTPCONSTANTS_H

#include "foundation/KEExport.h"

namespace KELib {
namespace Http {

extern KECPP_API const char* const HTTP_PROTO;
extern KECPP_API const char* const HTTPS_PROTO;
extern KECPP_API const char* const HTTP_PORT;
extern KECPP_API const char* const HTTPS_PORT;
extern KECPP_API const char* const HTTP_PROTO_SEP;
extern KECPP_API const char* const DEFAULT_PATH;
extern KECPP_API const char* const LOCALHOST;
extern KECPP_API const char* const DEFAULT_SSL_CERT_TYPE;

// What is wrong with a connection's address.
extern KECPP_API const char* const ERR_URL;
extern KECPP_API const char* const ERR_PROTO;
extern KECPP_API const char* const ERR_HOSTNAME;
extern KECPP_API const char* const ERR_PORT;

// Header keys: the name with its separator, so that a line is key and value put together. The
// server knows this client by "UserAgent" without a hyphen.
extern KECPP_API const char* const HEADER_USER_AGENT;
extern KECPP_API const char* const HEADER_COOKIE;
extern KECPP_API const char* const HEADER_CONTENT_TYPE;
extern KECPP_API const char* const HEADER_CACHE_CONTROL;
extern KECPP_API const char* const HEADER_VALUE_TEXTXML;
extern KECPP_API const char* const HEADER_VALUE_NO_CACHE;
extern KECPP_API const char* const HEADER_VALUE_NONE;

// Beginnings of set-up errors, which a four-digit code and a newline follow.
extern KECPP_API const char* const ERR_UNKNOWN;
extern KECPP_API const char* const ERR_HTTP_SETUP;
extern KECPP_API const char* const ERR_HTTP_CONNECT;
extern KECPP_API const char* const ERR_SSL_INIT;
extern KECPP_API const char* const ERR_NO_SSL_INFO;  // complete, without a code
extern KECPP_API const char* const ERR_HTTP_POST_REQUEST;

}  // namespace Http
}  // namespace KELib

#endif
