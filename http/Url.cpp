// SPDX-License-Identifier: MIT
#include "http/Url.h"

#include <cstring>

#include "foundation/KEStringBuffer.h"
#include "foundation/StringUtil.h"
#include "http/ConnectionInfo.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"

namespace KELib {
namespace Http {

namespace {

const char* OrDefault(const KEString& part, const char* fallback) {
  return part.Empty() ? fallback : part.Cstr();
}

void AssignLower(const char* begin, const char* end, KEString& out) {
  out.AssignExact(begin, static_cast<unsigned int>(end - begin));
  out.ToLower();
}

void AssignDefaultPort(const KEString& proto, KEString& port) {
  if (proto.Equals(HTTP_PROTO)) {
    port = HTTP_PORT;
  } else if (proto.Equals(HTTPS_PROTO)) {
    port = HTTPS_PORT;
  }
}

// "host" or "host:port", lower case.
void ParseAuthority(const KEString& authority, KEString& host, KEString& port) {
  const char* begin = authority.Cstr();
  const char* colon = std::strchr(begin, ':');
  if (colon == nullptr) {
    host = authority;
    return;
  }
  host.AssignExact(begin, static_cast<unsigned int>(colon - begin));
  port = colon + 1;
  if (!StringUtil::IsNumber(port)) port.Clear();
}

}  // namespace

// Without a port a plain connection gets "443" too: agents are deployed with such documents.
void BuildUrl(const KEString& proto, const KEString& host, const KEString& port,
              const KEString& path, KEString& url) {
  KEStringBuffer text;
  text += OrDefault(proto, HTTPS_PROTO);
  text += HTTP_PROTO_SEP;
  text += OrDefault(host, LOCALHOST);
  text += ":";
  text += StringUtil::IsNumber(port) ? port.Cstr() : HTTPS_PORT;
  const char* suffix = OrDefault(path, DEFAULT_PATH);
  if (*suffix != '\0' && *suffix != '/') text += "/";
  text += suffix;
  url = text.Cstr();
}

void ParseUrl(const KEString& url, KEString& proto, KEString& host, KEString& port,
              KEString& path) {
  const KEString source(url);  // the argument may be one of the parts
  const char* authority = source.Cstr();
  const char* separator = std::strstr(authority, HTTP_PROTO_SEP);
  if (separator != nullptr) {
    AssignLower(authority, separator, proto);
    AssignDefaultPort(proto, port);
    authority = separator + std::strlen(HTTP_PROTO_SEP);
  }
  const char* end = authority + std::strlen(authority);
  const char* slash = std::strchr(authority, '/');
  if (slash != nullptr) {
    AssignLower(slash, end, path);
    end = slash;
  }
  KEString lowered;
  AssignLower(authority, end, lowered);
  ParseAuthority(lowered, host, port);
}

void ThrowExceptionIfInvalidUrl(ConnectionInfo* info) {
  if (info->GetUrl().Empty()) throw HttpException(ERR_URL);
  if (info->GetProto().Empty()) throw HttpException(ERR_PROTO);
  if (info->GetHostName().Empty()) throw HttpException(ERR_HOSTNAME);
  if (info->GetPort().Empty()) throw HttpException(ERR_PORT);
}

}  // namespace Http
}  // namespace KELib
