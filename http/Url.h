// SPDX-License-Identifier: MIT
//
// URLs and their parts.
#ifndef KECPP_HTTP_URL_H
#define KECPP_HTTP_URL_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class ConnectionInfo;

// Makes `url` from the parts. Empty ones become "https", "localhost" and "443", a port that is no
// number "443" as well, whatever the protocol; a path gets its leading "/". `url` may be one of the
// parts.
KECPP_API void BuildUrl(const KEString& proto, const KEString& host, const KEString& port,
                        const KEString& path, KEString& url);

// Takes `url` apart; protocol, host and path are folded to lower case. Never fails:
// - without "://" `proto` stays as it was; "http" and "https" give the port "80" and "443", other
//   protocols leave `port` as it was;
// - without a "/" after the authority `path` stays as it was;
// - a ":" in the authority separates the port, which becomes empty unless it is a number.
KECPP_API void ParseUrl(const KEString& url, KEString& proto, KEString& host, KEString& port,
                        KEString& path);

// Throws HttpException for the first of url, protocol, host name and port that is empty.
KECPP_API void ThrowExceptionIfInvalidUrl(ConnectionInfo* info);

}  // namespace Http
}  // namespace KELib

#endif
