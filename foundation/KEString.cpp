// SPDX-License-Identifier: MIT
#include "foundation/KEString.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "foundation/StringUtil.h"

namespace KELib {

const unsigned int KEString::NPos = 4294967295U;
const char KEString::sharedEmpty = '\0';

namespace {

using OwnedText = std::unique_ptr<char[]>;

}  // namespace

// Four characters a step: their products do not wait for each other.
unsigned int HashText(const char* text, unsigned int length) {
  const auto at = [text](unsigned int i) {
    return static_cast<unsigned int>(static_cast<signed char>(text[i]));
  };
  unsigned int hash = 0, i = 0;
  for (; length - i >= 4; i += 4) {
    hash = hash * 923521U + (at(i) * 29791U + at(i + 1) * 961U) + (at(i + 2) * 31U + at(i + 3));
  }
  for (; i < length; ++i) hash = hash * 31U + at(i);
  return hash;
}

char* KEString::NewText(std::size_t length) {
  if (length > static_cast<std::size_t>(INT32_MAX)) throw std::bad_alloc();
  char* text = new char[length + 1];
  text[length] = '\0';
  return text;
}

// Copies before it frees: the text may be the string's own.
void KEString::Init(const char* text, unsigned int length) {
  const std::size_t used = text != nullptr ? std::strlen(text) : 0;
  const std::size_t room = std::max<std::size_t>(used, length);
  if (room == 0) {
    Adopt(SharedEmpty());
    return;
  }
  char* copy = NewText(room);
  if (used > 0) std::memcpy(copy, text, used);
  if (room > used) std::memset(copy + used, 0, room - used);
  Adopt(copy);
}

void KEString::AssignExact(const char* text, unsigned int length) {
  if (length == 0) {
    Adopt(SharedEmpty());
    return;
  }
  char* copy = NewText(length);
  std::memcpy(copy, text, length);
  Adopt(copy);
}

KEString& KEString::operator=(const KEString& other) {
  if (this != &other) Init(other.buffer, 0);
  return *this;
}

KEString& KEString::operator=(KEString&& other) noexcept {
  Transfer(other);
  return *this;
}

KEString& KEString::operator=(const char* text) {
  Init(text, 0);
  return *this;
}

// --- appending -----------------------------------------------------------------------------------

void KEString::Append(const char* text, unsigned int) {
  if (text == nullptr || text[0] == '\0') return;
  const std::size_t own = std::strlen(buffer), added = std::strlen(text);
  char* joined = NewText(own + added);
  std::memcpy(joined, buffer, own);
  std::memcpy(joined + own, text, added);
  Adopt(joined);
}

void KEString::Append(const KEString& text) {
  Append(text.buffer);
}

void KEString::Append(char c) {
  const char text[] = {c, '\0'};
  Append(text);
}

void KEString::Append(bool value) {
  Append(OwnedText(StringUtil::BoolToString(value)).get());
}

void KEString::Append(short value) {
  Append(OwnedText(StringUtil::ShortToString(value)).get());
}

void KEString::Append(int value) {
  Append(OwnedText(StringUtil::IntToString(value)).get());
}

void KEString::Append(unsigned int value) {
  Append(OwnedText(StringUtil::UIntToString(value)).get());
}

void KEString::Append(long long value) {
  Append(OwnedText(StringUtil::LongToString(value)).get());
}

void KEString::Append(unsigned long long value) {
  Append(OwnedText(StringUtil::ULongToString(value)).get());
}

void KEString::Append(float value) {
  Append(OwnedText(StringUtil::FloatToString(value)).get());
}

void KEString::Append(double value) {
  Append(OwnedText(StringUtil::DoubleToString(value)).get());
}

KEString& KEString::operator+=(const char* text) {
  Append(text);
  return *this;
}

KEString& KEString::operator+=(const KEString& text) {
  Append(text);
  return *this;
}

unsigned int KEString::UnsafeAppend(const char* text, unsigned int length) {
  if (text == nullptr || IsShared()) return 0;
  const std::size_t added = length == 0 ? std::strlen(text) : strnlen(text, length);
  char* end = buffer + std::strlen(buffer);
  std::memmove(end, text, added);
  end[added] = '\0';
  return static_cast<unsigned int>(added);
}

unsigned int KEString::UnsafeAppend(const KEString& text) {
  return UnsafeAppend(text.buffer, 0);
}

unsigned int KEString::UnsafeAppend(char c) {
  const char text[] = {c, '\0'};
  return UnsafeAppend(text, 0);
}

unsigned int KEString::UnsafeAppend(bool value) {
  return UnsafeAppend(OwnedText(StringUtil::BoolToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(short value) {
  return UnsafeAppend(OwnedText(StringUtil::ShortToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(int value) {
  return UnsafeAppend(OwnedText(StringUtil::IntToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(unsigned int value) {
  return UnsafeAppend(OwnedText(StringUtil::UIntToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(long long value) {
  return UnsafeAppend(OwnedText(StringUtil::LongToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(unsigned long long value) {
  return UnsafeAppend(OwnedText(StringUtil::ULongToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(float value) {
  return UnsafeAppend(OwnedText(StringUtil::FloatToString(value)).get(), 0);
}

unsigned int KEString::UnsafeAppend(double value) {
  return UnsafeAppend(OwnedText(StringUtil::DoubleToString(value)).get(), 0);
}

unsigned int KEString::Resize(unsigned int extra) {
  const std::size_t own = std::strlen(buffer);
  const unsigned long long wanted = static_cast<unsigned long long>(own) + extra;
  if (wanted > static_cast<unsigned long long>(INT32_MAX)) throw std::bad_alloc();
  char* roomier = NewText(static_cast<std::size_t>(wanted));
  std::memcpy(roomier, buffer, own);
  std::memset(roomier + own, 0, extra);
  Adopt(roomier);
  return static_cast<unsigned int>(wanted);
}

// --- parts and owners ----------------------------------------------------------------------------

KEString KEString::Substring(unsigned int start, unsigned int end) const {
  const unsigned int length = Length();
  if (end == 0 || end > length) end = length;
  if (start > length) start = length;
  if (end < start) throw std::bad_alloc();
  return KEString(buffer + start, end - start);
}

void KEString::Erase(unsigned int from, unsigned int to) {
  const unsigned int length = Length();
  if (to > length) to = length;
  if (from >= to) return;
  std::memmove(buffer + from, buffer + to, length - to);
  // A KEStringBuffer sees by the zeros that its text became shorter.
  std::memset(buffer + from + (length - to), 0, to - from);
}

void KEString::Attach(char* text) {
  if (text == buffer) return;
  Adopt(text == nullptr || text[0] == '\0' ? SharedEmpty() : text);
}

void KEString::Detach(char*& out) {
  out = buffer;
  buffer = SharedEmpty();
}

void KEString::ToLower() {
  for (char* c = buffer; *c != '\0'; ++c) *c = StringUtil::ToLower(*c);
}

void KEString::ToUpper() {
  for (char* c = buffer; *c != '\0'; ++c) *c = StringUtil::ToUpper(*c);
}

// --- questions -----------------------------------------------------------------------------------

unsigned int KEString::Length() const {
  return static_cast<unsigned int>(std::strlen(buffer));
}

int KEString::Compare(const char* other) const {
  if (other == nullptr) return Empty() ? 0 : 1;
  return std::strcmp(buffer, other);
}

int KEString::CompareI(const char* other) const {
  if (other == nullptr) return Empty() ? 0 : 1;
  return strcasecmp(buffer, other);
}

char KEString::At(unsigned int position) const {
  const unsigned int length = Length();
  if (position <= length) return buffer[position];
  return length > 0 ? buffer[length - 1] : '\0';
}

unsigned int KEString::Find(char c, unsigned int from) const {
  if (from != 0 && static_cast<unsigned long long>(from) + 1 > Length()) return NPos;
  const char* found = std::strchr(buffer + from, c);
  return found != nullptr ? static_cast<unsigned int>(found - buffer) : NPos;
}

unsigned int KEString::Find(const char* text, unsigned int from) const {
  if (text == nullptr) return NPos;
  if (static_cast<unsigned long long>(from) + std::strlen(text) > Length()) return NPos;
  const char* found = std::strstr(buffer + from, text);
  return found != nullptr ? static_cast<unsigned int>(found - buffer) : NPos;
}

unsigned int KEString::Find(const KEString& text, unsigned int from) const {
  return Find(text.buffer, from);
}

}  // namespace KELib
