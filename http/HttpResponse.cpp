// SPDX-License-Identifier: MIT
#include "http/HttpResponse.h"

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

// The caller may have taken the content over or put another text there.
void HttpResponse::NoticeForeignContent() {
  if (content.Cstr() == block) return;
  block = content.Cstr();
  contentLength = capacity = content.Length();
}

unsigned int HttpResponse::GetContentLength() {
  NoticeForeignContent();
  return contentLength;
}

void HttpResponse::SetSizeLimit(unsigned int bytes) {
  constexpr unsigned int kLongestText = 0x7fffffffU;
  sizeLimit = std::min(bytes, kLongestText);
}

void HttpResponse::CheckLimit(unsigned long long length) const {
  if (length <= sizeLimit) return;
  char text[64];
  const int written = std::snprintf(text, sizeof text, "Reply exceeds %u bytes.", sizeLimit);
  throw HttpException(text, static_cast<unsigned int>(written));
}

void HttpResponse::Reallocate(unsigned int room) {
  char* larger = new char[static_cast<std::size_t>(room) + 1];
  std::memcpy(larger, content.Cstr(), contentLength);
  larger[contentLength] = '\0';
  // Attach leaves a text that begins with NUL to the caller.
  const char first = larger[0];
  larger[0] = ' ';
  content.Attach(larger);
  larger[0] = first;
  block = larger;
  capacity = room;
}

void HttpResponse::AddContent(const char* data, unsigned int length) {
  if (length == 0) return;
  NoticeForeignContent();
  const unsigned long long needed = static_cast<unsigned long long>(contentLength) + length;
  CheckLimit(needed);
  if (needed > capacity) {
    const unsigned long long doubled = std::max(2ULL * capacity, 1ULL * kSmallestRoom);
    const unsigned long long wanted = std::min<unsigned long long>(doubled, sizeLimit);
    Reallocate(static_cast<unsigned int>(std::max(needed, wanted)));
  }
  char* end = content.Str() + contentLength;
  std::memcpy(end, data, length);
  end[length] = '\0';
  contentLength += length;
}

void HttpResponse::ExpectContent(unsigned long long length) {
  NoticeForeignContent();
  if (length > sizeLimit) CheckLimit(length);  // a sum with it might wrap
  const unsigned long long needed = contentLength + length;
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
