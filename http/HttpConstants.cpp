// SPDX-License-Identifier: MIT
#include "http/HttpConstants.h"

namespace KELib {
namespace Http {

const char* const HTTP_PROTO = "http";
const char* const HTTPS_PROTO = "https";
const char* const HTTP_PORT = "80";
const char* const HTTPS_PORT = "443";
const char* const HTTP_PROTO_SEP = "://";
const char* const DEFAULT_PATH = "";
const char* const LOCALHOST = "localhost";
const char* const DEFAULT_SSL_CERT_TYPE = "PEM";

const char* const ERR_URL = "Url is invalid and empty";
const char* const ERR_PROTO = "Invalid protocol specified";
const char* const ERR_HOSTNAME = "No HostName";
const char* const ERR_PORT = "Port is not a number";

const char* const HEADER_USER_AGENT = "UserAgent: ";
const char* const HEADER_COOKIE = "Cookie: ";
const char* const HEADER_CONTENT_TYPE = "Content-Type: ";
const char* const HEADER_CACHE_CONTROL = "Cache-Control: ";
const char* const HEADER_VALUE_TEXTXML = "text/xml; charset=utf-8";
const char* const HEADER_VALUE_NO_CACHE = "no-cache";
const char* const HEADER_VALUE_NONE = "";

const char* const ERR_UNKNOWN = "Unknown Error";
const char* const ERR_HTTP_SETUP = "Unable to setup HTTP. ";
const char* const ERR_HTTP_CONNECT = "Unable to initialize HTTP connection. ";
const char* const ERR_SSL_INIT = "Unable to initialize SSL. ";
const char* const ERR_NO_SSL_INFO = "No SSL information available for secure connection.";
const char* const ERR_HTTP_POST_REQUEST = "Error sending HTTP request.";

}  // namespace Http
}  // namespace KELib
