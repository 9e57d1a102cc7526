// SPDX-License-Identifier: MIT
//
// An owned text that needs no block on the heap while it is short, as nearly all keys are.
//
// Thread safety: none.
#ifndef KECPP_INSTANCE_SHORTTEXT_H
#define KECPP_INSTANCE_SHORTTEXT_H

#include <cstring>

namespace KE::Instance {

class ShortText {
 public:
  ShortText() = default;
  ShortText(const char* text, std::size_t length) {
    if (length < sizeof bytes) {
      std::memcpy(bytes, text, length);
      return;
    }
    char* const block = new char[length + 1];
    std::memcpy(block, text, length);
    block[length] = '\0';
    std::memcpy(bytes, &block, sizeof block);
    bytes[kMark] = 1;
  }
  ShortText(ShortText&& other) noexcept { Take(other); }
  ShortText& operator=(ShortText&& other) noexcept {
    if (IsLong()) delete[] Block();
    Take(other);
    return *this;
  }
  ~ShortText() {
    if (IsLong()) delete[] Block();
  }

  const char* Text() const { return IsLong() ? Block() : bytes; }

 private:
  static constexpr std::size_t kMark = 19;  // the last NUL of a short text, 1 of a long one

  bool IsLong() const { return bytes[kMark] != '\0'; }
  char* Block() const {
    char* block = nullptr;
    std::memcpy(&block, bytes, sizeof block);
    return block;
  }
  void Take(ShortText& other) noexcept {  // never from itself
    std::memcpy(bytes, other.bytes, sizeof bytes);
    other.bytes[0] = other.bytes[kMark] = '\0';
  }

  char bytes[kMark + 1] = {};
};

}  // namespace KE::Instance

#endif
