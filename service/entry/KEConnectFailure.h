// SPDX-License-Identifier: MIT
//
// Why connecting or logging in failed, in words for a program's user.
//
// Thread safety: a plain copy; it changes no more.
#ifndef KECPP_SERVICE_ENTRY_KECONNECTFAILURE_H
#define KECPP_SERVICE_ENTRY_KECONNECTFAILURE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KE::Service {

// Later versions may add kinds at the end: treat one that you do not know as `other`.
enum class KEConnectFailureKind {
  none,                    // the last attempt succeeded, or there was none
  refused,                 // nobody listens there
  unreachable,             // there is no way to the address
  nameNotFound,            // the host's name, or the proxy's, has no address
  timedOut,                // no answer within the configured time-out
  tls,                     // the handshake failed, or certificate or key are missing or unusable
  connectionLost,          // the connection ended before the answer
  httpStatus,              // the answer is none of the daemon: an HTTP status other than success
  notUnderstood,           // an answer that is no SOAP reply, or lacks what is needed
  fault,                   // the daemon refuses its first call
  loginRefused,            // the daemon refuses user and password
  noUserName,              // the configuration does not say as whom to log in; nothing was sent
  malformedConfiguration,  // the document is not well-formed; the text names the line
  badSettings,             // no connection can be made with these settings
  interrupted,             // by KEServiceInstManager::InterruptConnecting
  other
};

struct KECPP_API KEConnectFailure {
  KEConnectFailureKind kind = KEConnectFailureKind::none;

  // One line: the URL, a colon and the reason, such as
  // "http://127.0.0.1:1/sdk: connection refused". At most 500 bytes, without control characters.
  // User name, password and query of the URL are left out, and so are those of the configuration.
  // Empty for `none` and where memory ran out.
  KELib::KEString text;
};

}  // namespace KE::Service

#endif
