// SPDX-License-Identifier: MIT
//
// Collects the body of one reply in an HttpResponse.
//
// The content's room grows geometrically, or is taken at once when the server announces a length.
// It is bounded, because a server could otherwise fill the agent's memory. What it takes to do so
// stands here, since the response's own layout is what programs were compiled with.
//
// Thread safety: none of its own. The response outlives it.
#ifndef KECPP_HTTP_HTTPRECEIVER_H
#define KECPP_HTTP_HTTPRECEIVER_H

#include "foundation/KEString.h"
#include "http/HttpResponse.h"

namespace KELib {
namespace Http {

class HttpReceiver {
 public:
  // Unless told otherwise, a content may have 1 GiB, or 512 MB on 32-bit builds.
  static constexpr unsigned int DEFAULT_LIMIT = sizeof(void*) > 4 ? 1024U << 20 : 512U << 20;

  // Appends to what the response holds already. `limit`: the largest content, in bytes, below 2^31.
  explicit HttpReceiver(HttpResponse& response, unsigned int limit = DEFAULT_LIMIT);

  // Appends exactly `size` bytes. Amortised O(size). Throws HttpException beyond the limit and
  // std::bad_alloc; the content is unchanged then.
  void Add(const char* data, unsigned int size);

  // Takes room for a body of `size` bytes at once, up to 512 MB (32-bit: 256 MB), since an
  // announcement may be wrong; longer bodies grow from there. Without enough memory nothing
  // happens. Throws HttpException when the body would exceed the limit.
  void Expect(unsigned long long size);

  // In bytes, without a scan.
  unsigned int Length() const { return length; }

 private:
  void CheckLimit(unsigned long long size) const;
  void Reallocate(unsigned int room);

  KEString& content;
  unsigned int length;
  unsigned int capacity;  // characters that fit into the content's block
  const unsigned int limit;
};

}  // namespace Http
}  // namespace KELib

#endif
