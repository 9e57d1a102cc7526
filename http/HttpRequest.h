// SPDX-License-Identifier: MIT
//
// A body to post, with its own time-out if wanted.
//
// Thread safety: none.
#ifndef KECPP_HTTP_HTTPREQUEST_H
#define KECPP_HTTP_HTTPREQUEST_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class KECPP_API HttpRequest {
 public:
  HttpRequest() = default;

  // Copy their arguments.
  explicit HttpRequest(const KEString& content);
  HttpRequest(const KEString& content, const KEString& url);

  // Takes the text over; the argument is left empty. O(length).
  void SetContent(KEString& text);
  KEString& GetContent() { return content; }

  // In bytes, as of the constructor or the last SetContent().
  unsigned int GetContentLength() const { return contentLength; }

  // For the caller's own use: requests go to the connection's URL. Takes the text over; the
  // argument is left empty.
  void SetUrl(KEString& text) { url.Transfer(text); }
  KEString& GetUrl() { return url; }

  // Of this request alone, in seconds; 0 and less: the connection's time-out applies.
  void SetTimeout(long long seconds) { timeout = seconds; }
  long long GetTimeout() const { return timeout; }

  // Always 0: bodies are not streamed.
  unsigned int GetChunk(unsigned int size, void* buffer);

 private:
  KEString content;
  unsigned int contentLength = 0;
  KEString url;
  long long timeout = -1;
};

}  // namespace Http
}  // namespace KELib

#endif
