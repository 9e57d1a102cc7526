// SPDX-License-Identifier: MIT
#include "service/entry/ConnectReason.h"

#include <algorithm>
#include <cstring>

#include "http/HttpConstants.h"

namespace KE::Service {

namespace {

using KELib::Http::CallTrace;
using Kind = KEConnectFailureKind;
using Ending = CallTrace::Ending;

constexpr std::size_t kLongestText = 500;

std::string InBrackets(const char* text) {
  return *text == '\0' ? "" : std::string(" (") + text + ")";
}

ConnectReason ReasonOfFault(ConnectStep step, const CallTrace& trace, const char* what) {
  if (step != ConnectStep::login) return {Kind::fault, "refused by the daemon" + InBrackets(what)};
  std::string text = "login refused" + InBrackets(what);
  if (!trace.before.Empty()) text += std::string("; no local ticket: ") + trace.before.Cstr();
  return {Kind::loginRefused, text};
}

ConnectReason ReasonOfAnswer(ConnectStep step, const CallTrace& trace, const char* what) {
  constexpr long kFirstGood = 200, kLastGood = 299;
  if (trace.isFault) return ReasonOfFault(step, trace, what);
  if (trace.status < kFirstGood || trace.status > kLastGood) {
    return {Kind::httpStatus, "HTTP status " + std::to_string(trace.status)};
  }
  return {Kind::notUnderstood, "answer not understood" + InBrackets(what)};
}

}  // namespace

ConnectReason ReasonOf(ConnectStep step, const CallTrace& trace, const char* what) {
  const std::string detail = InBrackets(trace.text.Cstr());
  switch (trace.ending) {
    case Ending::answered:
      return ReasonOfAnswer(step, trace, what);
    case Ending::refused:
      return {Kind::refused, "connection refused"};
    case Ending::unreachable:
      return {Kind::unreachable, "cannot be reached" + detail};
    case Ending::nameNotFound:
      return {Kind::nameNotFound, "host name not found" + detail};
    case Ending::timedOut:
      return {Kind::timedOut, "no answer in time" + detail};
    case Ending::tls:
      return {Kind::tls, "TLS failed" + detail};
    case Ending::lost:
      return {Kind::connectionLost, "connection lost" + detail};
    case Ending::notSent:
      break;
  }
  if (step == ConnectStep::login) return {Kind::other, what};
  const bool lacksFiles = std::strcmp(what, KELib::Http::ERR_NO_SSL_INFO) == 0;
  return {lacksFiles ? Kind::tls : Kind::badSettings,
          trace.text.Empty() ? what : trace.text.Cstr()};
}

// The last "@" counts wherever it is: one in a password that is not encoded would show the rest.
std::string ShownUrl(const char* url) {
  std::string shown(url);
  const std::size_t separator = shown.find("://");
  const std::size_t host = separator == std::string::npos ? 0 : separator + 3;
  const std::size_t at = shown.rfind('@');
  if (at != std::string::npos && at >= host) shown.erase(host, at + 1 - host);
  shown.erase(std::min(shown.find_first_of("?#"), shown.size()));
  return shown;
}

std::string OneLine(std::string text) {
  if (text.size() > kLongestText) {
    std::size_t end = kLongestText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text.erase(end);
  }
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = ' ';
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace KE::Service
