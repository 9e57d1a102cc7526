// SPDX-License-Identifier: MIT
//
// Words for a failure of connecting or logging in.
//
// Thread safety: any thread.
#ifndef KECPP_SERVICE_ENTRY_CONNECTREASON_H
#define KECPP_SERVICE_ENTRY_CONNECTREASON_H

#include <string>

#include "http/CallTrace.h"
#include "service/entry/KEConnectFailure.h"

namespace KE::Service {

// The step at which an attempt failed.
enum class ConnectStep { makingClient, firstCall, login };

struct ConnectReason {
  KEConnectFailureKind kind;
  std::string text;
};

// What `trace` and the exception's text `what` say together.
ConnectReason ReasonOf(ConnectStep step, const KELib::Http::CallTrace& trace, const char* what);

// A URL without user name, password and query, which may be secrets.
std::string ShownUrl(const char* url);

// `text` as one line of at most 500 bytes without control characters.
std::string OneLine(std::string text);

}  // namespace KE::Service

#endif
