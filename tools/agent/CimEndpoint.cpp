// SPDX-License-Identifier: MIT
#include "tools/agent/CimEndpoint.h"

#include "tools/agent/Errors.h"
#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

constexpr const char* CONTENT_TYPE = "application/xml; charset=\"utf-8\"";
constexpr const char* RETRY_AFTER_SECONDS = "5";
constexpr int BAD_REQUEST = 400;
constexpr int UNAVAILABLE = 503;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string PercentDecoded(const std::string& text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
    decoded += low >= 0 ? static_cast<char>(high * 16 + low) : text[i];
    if (low >= 0) i += 2;
  }
  return decoded;
}

// A header that is there must say what the message says: a firewall may have judged by it.
void CheckHeader(const httplib::Request& http, const char* name, const std::string& expected) {
  const auto [first, end] = http.headers.equal_range(name);
  for (auto header = first; header != end; ++header) {
    if (SameName(PercentDecoded(header->second), expected)) continue;
    throw MessageError(BAD_REQUEST, "header-mismatch");
  }
}

void CheckHeaders(const httplib::Request& http, const Request& request) {
  CheckHeader(http, "CIMMethod", request.method);
  if (!request.isExtrinsic) CheckHeader(http, "CIMObject", request.nameSpace);
}

void CheckKind(const httplib::Request& http) {
  const std::string operation = http.get_header_value("CIMOperation");
  if (operation.empty() || SameName(operation, "MethodCall")) return;
  throw MessageError(BAD_REQUEST, "unsupported-operation");
}

// The name by which the client reaches this server, so that the paths in the answer lead back here.
std::string HostOf(const httplib::Request& http) {
  const std::string host = http.get_header_value("Host");
  return host.empty() ? "localhost" : host;
}

// The reply goes when it was sent.
void SetContent(Reply reply, httplib::Response& response) {
  const auto kept = std::make_shared<Reply>(std::move(reply));
  response.set_content_provider(
      kept->text.size(), CONTENT_TYPE,
      [kept](std::size_t from, std::size_t size, httplib::DataSink& sink) {
        return sink.write(kept->text.data() + from, size);
      });
}

void Answer(const Operations& operations, const httplib::Request& http,
            httplib::Response& response) {
  response.set_header("CIMOperation", "MethodResponse");
  try {
    CheckKind(http);
    const Request request = ParseRequest(http.body);
    CheckHeaders(http, request);
    operations.Await(request);
    SetContent(operations.Answer(request, HostOf(http)), response);
  } catch (const MessageError& error) {
    response.status = error.httpStatus;
    response.set_header("CIMError", error.what());
  } catch (const NotReady& error) {
    response.status = UNAVAILABLE;
    response.set_header("Retry-After", RETRY_AFTER_SECONDS);
    response.set_content(std::string(error.what()) + "\n", "text/plain");
  }
}

}  // namespace

void AddCimEndpoint(AgentServer& server, const Operations& operations) {
  for (const char* path : {"/cimom", "/"}) {
    server.Post(path, [&operations](const httplib::Request& http, httplib::Response& response) {
      Answer(operations, http, response);
    });
  }
}

}  // namespace tools::agent
