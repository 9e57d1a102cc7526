// SPDX-License-Identifier: MIT
#include "http/HttpReceiver.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "foundation/BlockSize.h"
#include "http/HttpException.h"

namespace KELib {
namespace Http {

namespace {

constexpr unsigned int kSmallestRoom = 4096;
constexpr unsigned int kLargestAnnouncedRoom = sizeof(void*) > 4 ? 512U << 20 : 256U << 20;

// Written behind a room and the NUL of a full one: whose content it is, and how long.
struct Note {
  const void* response = nullptr;
  std::uint32_t length = 0;
  std::uint32_t mark = 0;
};

std::uint32_t MarkOf(const char* block, unsigned int length) {
  return (length ^ static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block))) *
         2654435761U;
}

// The room that grows with the length: a power of two.
unsigned int RoomFor(unsigned long long length) {
  unsigned int room = kSmallestRoom;
  while (room < length) room *= 2;
  return room;
}

// The largest such room that a block has, with its note; 0 when there is none or nobody knows.
unsigned int NotedRoom(const char* block) {
  const std::size_t size = BlockSize(block), others = 1 + sizeof(Note);
  if (size < kSmallestRoom + others) return 0;
  unsigned int room = kSmallestRoom;
  while (room < 1U << 30 && std::size_t{2} * room + others <= size) room *= 2;
  return room;
}

}  // namespace

HttpReceiver::HttpReceiver(HttpResponse& receiving, unsigned int largest)
    : response(&receiving), content(receiving.GetContent()), limit(std::min(largest, 0x7fffffffU)) {
  if (!Recall()) length = capacity = content.Length();
}

void HttpReceiver::Remember() const {
  if (content.Empty() || NotedRoom(content.Cstr()) != capacity) return;
  char* const block = content.Str();
  const Note note{response, length, MarkOf(block, length)};
  std::memcpy(block + capacity + 1, &note, sizeof note);
}

// The note may be one that was left in memory where another text is now.
bool HttpReceiver::Recall() {
  if (content.Empty()) return false;
  const char* const block = content.Cstr();
  const unsigned int room = NotedRoom(block);
  if (room == 0) return false;
  Note note;
  std::memcpy(&note, block + room + 1, sizeof note);
  if (note.response != response || note.mark != MarkOf(block, note.length)) return false;
  if (note.length > room || !MayEndAt(block, BlockSize(block), note.length)) return false;
  length = note.length;
  capacity = room;
  return true;
}

void HttpReceiver::CheckLimit(unsigned long long size) const {
  if (size <= limit) return;
  char text[64];
  const int written = std::snprintf(text, sizeof text, "Reply exceeds %u bytes.", limit);
  throw HttpException(text, static_cast<unsigned int>(written));
}

void HttpReceiver::Reallocate(unsigned int room) {
  char* larger = new char[room + 1 + sizeof(Note)];
  // No older note is left where Recall looks for one.
  if (const unsigned int noted = NotedRoom(larger); noted > 0) {
    std::memset(larger + noted + 1, 0, sizeof(Note));
  }
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
    Reallocate(std::min(RoomFor(needed), limit));
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
