// SPDX-License-Identifier: MIT
#include "tools/agent/Guards.h"

#include <strings.h>

#include <algorithm>
#include <charconv>

#include "tools/agent/HostName.h"
#include "tools/agent/api/Problem.h"
#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

constexpr int GOOD = 0;
constexpr int BAD_REQUEST = 400;
constexpr int UNAUTHORIZED = 401;
constexpr int FORBIDDEN = 403;
constexpr int NOT_FOUND = 404;
constexpr int METHOD_NOT_ALLOWED = 405;
constexpr int LENGTH_REQUIRED = 411;
constexpr int TOO_LARGE = 413;
constexpr int UNSUPPORTED_MEDIA = 415;
constexpr int NOT_IMPLEMENTED = 501;

// The host goes into the paths of the answer. Only clients of HTTP/1.0 may leave it out. A browser
// always sends the host of the page's address: that shows when a page comes from another host whose
// name was made to resolve to this machine.
int CheckHost(const httplib::Request& request, const Access& access) {
  const std::size_t hosts = request.get_header_value_count("Host");
  if (hosts == 0 && request.version == "HTTP/1.0") return GOOD;
  const auto host = ReadHost(request.get_header_value("Host"));
  if (hosts != 1 || !host) return BAD_REQUEST;
  const bool isOurs = IsLoopback(*host) || SameName(*host, access.address);
  return isOurs || access.users || !access.isLocal ? GOOD : FORBIDDEN;
}

int CheckLength(const httplib::Request& request, std::size_t limit) {
  const std::string text = request.get_header_value("Content-Length");
  std::size_t length = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, length);
  if (result.ec == std::errc::result_out_of_range) return TOO_LARGE;
  if (result.ec != std::errc() || result.ptr != end) return BAD_REQUEST;
  return length > limit ? TOO_LARGE : GOOD;
}

// A proxy may take a name with a blank in it for another name, or for a part of the line before.
bool HasBlankName(const httplib::Request& request) {
  return std::any_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
    return header.first.find_first_of(" \t") != std::string::npos;
  });
}

// With several lengths, or a coding that is not decoded here, a proxy may see another end of the
// body.
int CheckFraming(const httplib::Request& request) {
  const std::size_t codings = request.get_header_value_count("Transfer-Encoding");
  const std::size_t lengths = request.get_header_value_count("Content-Length");
  if (codings + lengths > 1 || HasBlankName(request)) return BAD_REQUEST;
  if (codings == 0) return GOOD;
  const std::string coding = request.get_header_value("Transfer-Encoding");
  return strcasecmp(coding.c_str(), "chunked") == 0 ? GOOD : NOT_IMPLEMENTED;
}

// A page of any origin may make a browser send a body of another type, or of none.
bool HasXml(const httplib::Request& request) {
  std::string type = request.get_header_value("Content-Type");
  type.erase(std::min(type.find_first_of("; \t"), type.size()));
  return request.get_header_value_count("Content-Type") == 1 &&
         (SameName(type, "application/xml") || SameName(type, "text/xml"));
}

// Only the bodies of POST are read. Any other body would be taken for the next request.
int CheckBody(const httplib::Request& request, std::size_t limit) {
  if (const int status = CheckFraming(request)) return status;
  const bool isPost = request.method == "POST";
  if (request.has_header("Content-Encoding") || (isPost && !HasXml(request))) {
    return UNSUPPORTED_MEDIA;
  }
  if (request.has_header("Transfer-Encoding")) return isPost ? GOOD : BAD_REQUEST;
  if (!request.has_header("Content-Length")) return isPost ? LENGTH_REQUIRED : GOOD;
  return CheckLength(request, isPost ? limit : 0);
}

// Checked before the body is read: otherwise the server would wait for a body that no route takes.
int CheckRoute(const httplib::Request& request, const std::string& methods) {
  if (methods.empty()) return NOT_FOUND;
  const bool isServed =
      (", " + methods + ",").find(", " + request.method + ",") != std::string::npos;
  return isServed ? GOOD : METHOD_NOT_ALLOWED;
}

// Credentials come before the routes: without them a client does not learn which paths exist.
int CheckRequest(const httplib::Request& request, const Access& access, const std::string& methods,
                 const Limits& limits) {
  if (const int status = CheckHost(request, access)) return status;
  const std::string credentials = request.get_header_value("Authorization");
  if (access.users && !access.users->Accepts(credentials, request.remote_addr)) return UNAUTHORIZED;
  if (const int status = CheckRoute(request, methods)) return status;
  return CheckBody(request, limits.bodyBytes);
}

void Explain(int status, const std::string& path, const std::string& methods,
             httplib::Response& response) {
  if (status == UNAUTHORIZED) {
    response.set_header("WWW-Authenticate", "Basic realm=\"kecpp-agent\", charset=\"UTF-8\"");
  } else if (status == METHOD_NOT_ALLOWED) {
    response.set_header("Allow", methods);
  }
  if (api::IsOfApi(path)) {
    api::ExplainStatus(response);
  } else if (status == FORBIDDEN) {
    response.set_content("without users this agent is reached by the name localhost only\n",
                         "text/plain");
  }
}

}  // namespace

void AddGuards(AgentServer& server, const Access& access, const Limits& limits) {
  server.set_pre_routing_handler(
      [&server, access, limits](const httplib::Request& request, httplib::Response& response) {
        const std::string methods = server.Methods(request.path);
        const int status = CheckRequest(request, access, methods, limits);
        using Response = httplib::Server::HandlerResponse;
        if (status == GOOD) {
          return server.AnswerBelow(request, response) ? Response::Handled : Response::Unhandled;
        }
        response.status = status;
        Explain(status, request.path, methods, response);
        return Response::Handled;
      });
}

}  // namespace tools::agent
