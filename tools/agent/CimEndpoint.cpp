// SPDX-License-Identifier: MIT
#include "tools/agent/CimEndpoint.h"

#include <cstdio>
#include <memory>
#include <utility>

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

std::size_t ClientOf(const httplib::Request& http) {
  return std::hash<std::string>{}(http.get_header_value("Authorization"));
}

// The frame of a chunk: the end of the one before, and the size of this one.
std::string ChunkBegin(bool isFirst, std::size_t size) {
  char text[32];
  std::snprintf(text, sizeof text, "%s%zx\r\n", isFirst ? "" : "\r\n", size);
  return text;
}

// Sends a reply piece by piece.
class PieceByPiece {
 public:
  PieceByPiece(std::shared_ptr<Reply> sent, bool asChunks, RequestCounters& requestCounters)
      : reply(std::move(sent)), isChunked(asChunks), counters(requestCounters) {}

  // The next piece. False when it cannot be made or the client does not take it: the connection
  // then ends in the middle of the answer, and the client sees that.
  bool Send(httplib::DataSink& sink) {
    try {
      const std::string_view piece = reply->Piece();
      if (!Write(sink, ChunkBegin(isFirst, piece.size())) ||
          !sink.write(piece.data(), piece.size())) {
        return false;
      }
      isFirst = false;
      counters.CountBytes(piece.size());
      if (!sink.is_writable()) return false;
      if (reply->Next()) return true;
      if (!Write(sink, ChunkBegin(isFirst, 0) + "\r\n")) return false;
      sink.done();
      return true;
    } catch (const std::exception&) {
      return false;
    }
  }

 private:
  bool Write(httplib::DataSink& sink, const std::string& frame) const {
    return !isChunked || sink.write(frame.data(), frame.size());
  }

  const std::shared_ptr<Reply> reply;
  const bool isChunked;
  RequestCounters& counters;
  bool isFirst = true;
};

// The reply goes when it was sent. Clients of HTTP/1.0 know no chunks: the end of the connection is
// the end of their answer. The chunks are made here, since the HTTP library copies each of them
// twice.
void SetContent(const std::shared_ptr<Reply>& reply, const httplib::Request& http,
                httplib::Response& response, RequestCounters& counters) {
  if (reply->IsLast()) {
    counters.CountBytes(reply->Piece().size());
    response.set_content(reply->TakePiece(), CONTENT_TYPE);
    response.content_provider_resource_releaser_ = [reply](bool) {};
    return;
  }
  const bool isChunked = http.version != "HTTP/1.0";
  const auto pieces = std::make_shared<PieceByPiece>(reply, isChunked, counters);
  response.set_content_provider(
      CONTENT_TYPE, [pieces](std::size_t, httplib::DataSink& sink) { return pieces->Send(sink); });
  if (isChunked) {
    response.set_header("Transfer-Encoding", "chunked");
  } else if (http.get_header_value("Connection") != "close") {  // else the library says it
    response.set_header("Connection", "close");
  }
}

// Counts a request when it goes.
struct Counted {
  RequestCounters& counters;
  const char* operation = "none";
  const char* outcome = "failed";
  const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();

  explicit Counted(RequestCounters& requestCounters) : counters(requestCounters) {}
  ~Counted() { counters.Count(operation, outcome, std::chrono::steady_clock::now() - begin); }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
};

void Answer(const Operations& operations, const httplib::Request& http, httplib::Response& response,
            RequestCounters& counters) {
  Counted counted(counters);
  response.set_header("CIMOperation", "MethodResponse");
  try {
    CheckKind(http);
    const Request request = ParseRequest(http.body);
    CheckHeaders(http, request);
    counted.operation = Operations::NameOf(request);
    operations.Await(request);
    const std::shared_ptr<Reply> reply = operations.Answer(request, HostOf(http), ClientOf(http));
    counted.outcome = reply->Outcome();
    SetContent(reply, http, response, counters);
  } catch (const MessageError& error) {
    counted.outcome = "refused";
    response.status = error.httpStatus;
    response.set_header("CIMError", error.what());
  } catch (const NotReady& error) {
    counted.outcome = "not_ready";
    response.status = UNAVAILABLE;
    response.set_header("Retry-After", RETRY_AFTER_SECONDS);
    response.set_content(std::string(error.what()) + "\n", "text/plain");
  }
}

}  // namespace

void AddCimEndpoint(AgentServer& server, const Operations& operations, RequestCounters& counters) {
  for (const char* path : {"/cimom", "/"}) {
    server.Post(path, [&](const httplib::Request& http, httplib::Response& response) {
      Answer(operations, http, response, counters);
    });
  }
}

}  // namespace tools::agent
