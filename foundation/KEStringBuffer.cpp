// SPDX-License-Identifier: MIT
#include "foundation/KEStringBuffer.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "foundation/BlockSize.h"
#include "foundation/KEConstants.h"

namespace KELib {

namespace {

constexpr std::uint32_t kLongest = INT32_MAX;

// The characters that the block behind a capacity holds: above 1 KiB a step is a quarter of the
// power of two, so that most growths of the capacity need no new block.
std::uint32_t BlockFor(std::uint32_t capacity) {
  if (capacity <= 1024) return capacity;
  const int power = 31 - __builtin_clz(capacity);
  const std::uint32_t last = (1U << (power - 2)) - 1;
  const std::uint32_t block = (capacity + last) & ~last;
  return std::min(block, kLongest);
}

}  // namespace

KEStringBuffer::KEStringBuffer(unsigned int room) {
  Resize(room);
}

KEStringBuffer::KEStringBuffer(KEString& text, unsigned int room) {
  KEString::Transfer(text);
  length = KEString::Length();
  Resize(room);
}

KEStringBuffer::KEStringBuffer(const KEStringBuffer& other) : KEString() {
  Append(other.buffer, other.Length());
}

KEStringBuffer& KEStringBuffer::operator=(const KEStringBuffer& other) {
  if (this != &other) *this = other.buffer;
  return *this;
}

KEStringBuffer& KEStringBuffer::operator=(const KEString& text) {
  return *this = text.Cstr();
}

KEStringBuffer& KEStringBuffer::operator=(const char* text) {
  KEString::operator=(text);
  MeasureText();
  return *this;
}

// Whether the fields describe the block. It may be another one, or hold another text, after an
// operation of the base class. No byte is read before the block is known to have it.
bool KEStringBuffer::FieldsHold() const {
  if ((length == 0) != (buffer[0] == '\0')) return false;
  if (IsShared()) return capacity == 0;
  const std::size_t size = BlockSize(buffer);
  if (size == 0) return true;
  return size > BlockFor(capacity) && MayEndAt(buffer, size, length);
}

void KEStringBuffer::Heal() {
  if (!FieldsHold()) MeasureText();
}

unsigned int KEStringBuffer::Length() const {
  return FieldsHold() ? length : KEString::Length();
}

unsigned int KEStringBuffer::Capacity() const {
  return FieldsHold() ? capacity : 0;
}

// The block is exactly as long as its text: no capacity, so that the next growth takes a new one.
void KEStringBuffer::MeasureText() {
  length = KEString::Length();
  capacity = 0;
}

unsigned int KEStringBuffer::Resize(unsigned int needed) {
  Heal();
  if (static_cast<std::uint64_t>(length) + needed <= capacity && capacity > 0) return capacity;
  const unsigned int growth = std::max(needed, BUFFER_GROW_SIZE);
  const std::uint64_t sum = static_cast<std::uint64_t>(length) + growth;
  if (sum > kLongest) throw std::bad_alloc();
  const std::uint32_t wanted = static_cast<std::uint32_t>(sum), block = BlockFor(wanted);
  if (capacity == 0 || block > BlockFor(capacity)) {
    char* roomier = NewText(block);
    std::memcpy(roomier, buffer, length);
    if (!IsShared()) delete[] buffer;
    buffer = roomier;
  }
  std::memset(buffer + length, 0, std::size_t{growth} + 1);
  capacity = wanted;
  return capacity;
}

// --- appending -----------------------------------------------------------------------------------

void KEStringBuffer::Append(const char* text, unsigned int limit) {
  if (text == nullptr) return;
  const std::size_t added = limit == 0 ? std::strlen(text) : strnlen(text, limit);
  if (added > kLongest) throw std::bad_alloc();
  if (added == 0) return;
  Heal();
  // A piece of this very text moves when the buffer grows.
  const bool own = text >= buffer && text < buffer + length;
  const std::size_t offset = own ? static_cast<std::size_t>(text - buffer) : 0;
  Resize(static_cast<unsigned int>(added));
  std::memmove(buffer + length, own ? buffer + offset : text, added);
  length += static_cast<unsigned int>(added);
  buffer[length] = '\0';
}

void KEStringBuffer::Append(const KEString& text) {
  Append(text.Cstr(), 0);
}

void KEStringBuffer::Append(char c) {
  if (c == '\0') return;
  Resize(1);
  buffer[length++] = c;
  buffer[length] = '\0';
}

template <typename Value>
void KEStringBuffer::AppendFormatted(unsigned int room, const char* format, Value value) {
  Resize(room);
  const int written = std::snprintf(buffer + length, std::size_t{room} + 1, format, value);
  if (written > 0) length += static_cast<unsigned int>(written);
}

void KEStringBuffer::Append(bool value) {
  Resize(6);
  Append(value ? STR_BOOLEAN_TRUE : STR_BOOLEAN_FALSE, 0);
}

void KEStringBuffer::Append(short value) {
  AppendFormatted(8, "%d", static_cast<int>(value));
}

void KEStringBuffer::Append(int value) {
  AppendFormatted(16, "%d", value);
}

void KEStringBuffer::Append(unsigned int value) {
  AppendFormatted(16, "%u", value);
}

void KEStringBuffer::Append(long long value) {
  AppendFormatted(24, "%lld", value);
}

void KEStringBuffer::Append(unsigned long long value) {
  AppendFormatted(24, "%llu", value);
}

void KEStringBuffer::Append(float value) {
  AppendFormatted(64, "%f", static_cast<double>(value));
}

void KEStringBuffer::Append(double value) {
  AppendFormatted(64, "%g", value);
}

KEStringBuffer& KEStringBuffer::operator+=(const char* text) {
  Append(text, 0);
  return *this;
}

KEStringBuffer& KEStringBuffer::operator+=(const KEString& text) {
  Append(text);
  return *this;
}

unsigned int KEStringBuffer::UnsafeAppend(const char* text, unsigned int limit) {
  const unsigned int before = Length();
  Append(text, limit);
  return Length() - before;
}

// --- owners --------------------------------------------------------------------------------------

void KEStringBuffer::AssignExact(const char* text, unsigned int n) {
  KEString::AssignExact(text, n);
  MeasureText();
}

void KEStringBuffer::Transfer(KEStringBuffer& other) {
  if (this == &other) return;
  const unsigned int takenLength = other.Length(), takenCapacity = other.Capacity();
  KEString::Transfer(other);
  length = takenLength;
  capacity = takenCapacity;
  other.length = other.capacity = 0;
}

void KEStringBuffer::Transfer(KEString& other) {
  if (this == &other) return;
  KEString::Transfer(other);
  MeasureText();
}

void KEStringBuffer::Attach(char* text) {
  if (text == buffer) return;
  KEString::Attach(text);
  MeasureText();
}

void KEStringBuffer::Detach(char*& out) {
  KEString::Detach(out);
  length = capacity = 0;
}

void KEStringBuffer::Erase(unsigned int from, unsigned int to) {
  Heal();
  KEString::Erase(from, to);
  length = KEString::Length();
}

void KEStringBuffer::Clear() {
  KEString::Clear();
  length = capacity = 0;
}

char KEStringBuffer::At(unsigned int position) const {
  return position < Length() ? buffer[position] : '\0';
}

}  // namespace KELib
