// SPDX-License-Identifier: MIT
#include "http/CallTrace.h"

#include <curl/curl.h>

#include <cerrno>

namespace KELib {
namespace Http {

namespace {

thread_local CallTrace* innermost = nullptr;

CallTrace::Ending EndingOfConnect(int systemError) {
  if (systemError == ECONNREFUSED) return CallTrace::Ending::refused;
  if (systemError == ETIMEDOUT) return CallTrace::Ending::timedOut;
  return CallTrace::Ending::unreachable;
}

CallTrace::Ending EndingOf(int result, int systemError) {
  switch (result) {
    case CURLE_OK:
      return CallTrace::Ending::answered;
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
    case CURLE_NOT_BUILT_IN:
      return CallTrace::Ending::notSent;
    case CURLE_COULDNT_CONNECT:
      return EndingOfConnect(systemError);
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return CallTrace::Ending::nameNotFound;
    case CURLE_OPERATION_TIMEDOUT:
      return CallTrace::Ending::timedOut;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_USE_SSL_FAILED:
      return CallTrace::Ending::tls;
    default:
      return CallTrace::Ending::lost;
  }
}

}  // namespace

CallTrace::CallTrace() : outer(innermost) {
  if (outer != nullptr) url = outer->url;
  innermost = this;
}

CallTrace::~CallTrace() {
  innermost = outer;
}

CallTrace* CallTrace::Current() {
  return innermost;
}

void CallTrace::NoteTransfer(int result, int systemError, const KEString& why) {
  ending = EndingOf(result, systemError);
  isFault = false;
  text = why;
}

}  // namespace Http
}  // namespace KELib
