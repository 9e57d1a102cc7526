// SPDX-License-Identifier: MIT
//
// Collects the body of one reply in an HttpResponse.
//
// The content's room is a power of two, or is taken at once when the server announces a length. It
// is bounded, because a server could otherwise fill the agent's memory. Length and room are kept
// here, since the response's own layout is what programs were compiled with; from one receiver to
// the next they survive in a note behind the room.
//
// Thread safety: none. The response outlives it.
#ifndef KECPP_HTTP_HTTPRECEIVER_H
#define KECPP_HTTP_HTTPRECEIVER_H

#include "foundation/KEString.h"
#include "http/HttpResponse.h"

namespace KELib {
namespace Http {

class HttpReceiver {
 public:
  // By default a content may have 1 GiB, or 512 MB on 32-bit builds.
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

  // Notes length and room behind the room, if that is a power of two and the size of the block can
  // be found out: a receiver that is made for the same response then needs no scan and no copy.
  void Remember() const;

  // In bytes, without a scan.
  unsigned int Length() const { return length; }

 private:
  void CheckLimit(unsigned long long size) const;
  void Reallocate(unsigned int room);
  bool Recall();

  const void* const response;
  KEString& content;
  unsigned int length = 0;
  unsigned int capacity = 0;  // characters that fit into the content's block
  const unsigned int limit;
};

}  // namespace Http
}  // namespace KELib

#endif
