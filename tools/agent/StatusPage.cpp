// SPDX-License-Identifier: MIT
#include "tools/agent/StatusPage.h"

#include <openssl/evp.h>

#include <memory>
#include <utility>

#include "tools/agent/StatusPageText.h"

namespace tools::agent {
namespace {

// The base64 text of the SHA-256 of what is between two tags of the page.
std::string ContentHash(const std::string& page, const std::string& open,
                        const std::string& close) {
  const std::size_t begin = page.find(open) + open.size();
  const std::string content = page.substr(begin, page.find(close, begin) - begin);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_Digest(content.data(), content.size(), digest, &length, EVP_sha256(), nullptr);
  unsigned char text[EVP_MAX_MD_SIZE * 2];
  EVP_EncodeBlock(text, digest, static_cast<int>(length));
  return reinterpret_cast<char*>(text);
}

// Only the page's own script and style run, even if other ones get into it. Its icon is an empty
// data URL.
std::string ContentSecurityPolicy(const std::string& page) {
  return "default-src 'none'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
         "frame-ancestors 'none'; img-src data:; script-src 'sha256-" +
         ContentHash(page, "<script>", "</script>") + "'; style-src 'sha256-" +
         ContentHash(page, "<style>", "</style>") + "'";
}

void AddPage(AgentServer& server) {
  const std::string page = STATUS_PAGE;
  const std::string policy = ContentSecurityPolicy(page);
  server.Get("/", [page, policy](const httplib::Request&, httplib::Response& response) {
    response.set_header("Content-Security-Policy", policy);
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Cache-Control", "no-cache");
    response.set_content(page, "text/html; charset=utf-8");
  });
}

httplib::ContentProviderWithoutLength EventSource(const StatusFeed& feed,
                                                  std::shared_ptr<void> place) {
  const auto view = std::make_shared<StatusFeed::View>(feed.Open());
  return [&feed, view, place = std::move(place)](size_t, httplib::DataSink& sink) {
    if (!sink.is_writable()) return false;  // sends what there is, too, before the wait
    const std::string events = feed.Next(*view);
    if (events.empty()) {
      sink.done();
      return true;
    }
    return sink.write(events.data(), events.size());
  };
}

void AddEvents(AgentServer& server, const StatusFeed& feed, const StreamPlaces& places) {
  server.Get("/events", [&feed, &places](const httplib::Request&, httplib::Response& response) {
    const std::shared_ptr<void> place = places.Take();
    if (!place) {
      response.status = 503;
      response.set_header("Retry-After", "30");
      return;
    }
    response.set_header("Cache-Control", "no-store");
    response.set_chunked_content_provider("text/event-stream", EventSource(feed, place));
  });
}

}  // namespace

void AddStatusPage(AgentServer& server, const StatusFeed& feed, const StreamPlaces& places) {
  AddPage(server);
  AddEvents(server, feed, places);
}

}  // namespace tools::agent
