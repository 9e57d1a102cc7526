// SPDX-License-Identifier: MIT
#include "http/HttpReceiver.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "http/HttpException.h"

namespace KELib {
namespace Http {

namespace {

constexpr unsigned int kSmallestRoom = 4096;
constexpr unsigned int kLargestAnnouncedRoom = sizeof(void*) > 4 ? 512U << 20 : 256U << 20;

}  // namespace

HttpReceiver::HttpReceiver(HttpResponse& response, unsigned int largest)
    : content(response.GetContent()),
      length(content.Length()),
      capacity(length),
      limit(std::min(largest, 0x7fffffffU)) {}

void HttpReceiver::CheckLimit(unsigned long long size) const {
  if (size <= limit) return;
  char text[64];
  const int written = std::snprintf(text, sizeof text, "Reply exceeds %u bytes.", limit);
  throw HttpException(text, static_cast<unsigned int>(written));
}

void HttpReceiver::Reallocate(unsigned int room) {
  char* larger = new char[static_cast<std::size_t>(room) + 1];
  std::memcpy(larger, content.Cstr(), length);
  larger[length] = '\0';
  // Attach leaves a text that begins with NUL to the caller.
  const char first = larger[0];
  larger[0] = ' ';
  content.Attach(larger);
  larger[0] = first;
  capacity = room;
}

void HttpReceiver::Add(const char* data, unsigned int size) {
  if (size == 0) return;
  const unsigned long long needed = static_cast<unsigned long long>(length) + size;
  CheckLimit(needed);
  if (needed > capacity) {
    const unsigned long long doubled = std::max(2ULL * capacity, 1ULL * kSmallestRoom);
    const unsigned long long wanted = std::min<unsigned long long>(doubled, limit);
    Reallocate(static_cast<unsigned int>(std::max(needed, wanted)));
  }
  char* end = content.Str() + length;
  std::memcpy(end, data, size);
  end[size] = '\0';
  length += size;
}

void HttpReceiver::Expect(unsigned long long size) {
  if (size > limit) CheckLimit(size);  // a sum with it might wrap
  const unsigned long long needed = length + size;
  CheckLimit(needed);
  const auto room =
      static_cast<unsigned int>(std::min<unsigned long long>(needed, kLargestAnnouncedRoom));
  if (room <= capacity) return;
  try {
    Reallocate(room);
  } catch (const std::bad_alloc&) {
    // The announcement may be wrong. What really comes decides.
  }
}

}  // namespace Http
}  // namespace KELib
