// SPDX-License-Identifier: MIT
#include "http/HttpRequest.h"

namespace KELib {
namespace Http {

HttpRequest::HttpRequest(const KEString& text) : HttpRequest(text, KEString()) {}

HttpRequest::HttpRequest(const KEString& text, const KEString& address)
    : content(text), contentLength(text.Length()), url(address) {}

void HttpRequest::SetContent(KEString& text) {
  content.Transfer(text);
  contentLength = content.Length();
}

unsigned int HttpRequest::GetChunk(unsigned int, void*) {
  return 0;
}

}  // namespace Http
}  // namespace KELib
