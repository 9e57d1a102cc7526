// SPDX-License-Identifier: MIT
#include "http/HttpResponse.h"

#include <new>

#include "http/HttpReceiver.h"

namespace KELib {
namespace Http {

void HttpResponse::AddContent(const char* data, unsigned int length) {
  HttpReceiver receiver(*this);
  receiver.Add(data, length);
  receiver.Remember();
}

unsigned int WriteResponse(void* data, unsigned int size, unsigned int count, void* response) {
  const unsigned long long length = static_cast<unsigned long long>(size) * count;
  if (length == 0) return 0;
  if (length > 0xffffffffULL) throw std::bad_alloc();
  static_cast<HttpResponse*>(response)->AddContent(static_cast<const char*>(data),
                                                   static_cast<unsigned int>(length));
  return static_cast<unsigned int>(length);
}

}  // namespace Http
}  // namespace KELib
