// SPDX-License-Identifier: MIT
#include "foundation/KEException.h"

#include <cstring>

namespace KELib {

Throwable& Throwable::operator=(const Throwable& other) {
  if (this == &other) return *this;
  if (other.ownedLength != 0) {
    Init(other.message, other.ownedLength);
  } else {
    Borrow(other.message);
  }
  return *this;
}

Throwable::~Throwable() {
  if (ownedLength != 0) delete[] message;
}

void Throwable::Borrow(const char* text) {
  if (ownedLength != 0) delete[] message;
  message = text;
  ownedLength = 0;
}

void Throwable::Init(const char* text, unsigned int length) {
  if (text == nullptr) {
    Borrow(nullptr);
    return;
  }
  if (length == 0) length = static_cast<unsigned int>(std::strlen(text));
  if (length == 0) {
    Borrow("");
    return;
  }
  char* copy = new char[static_cast<std::size_t>(length) + 1];
  const std::size_t used = strnlen(text, length);
  std::memcpy(copy, text, used);
  std::memset(copy + used, 0, length + std::size_t{1} - used);
  if (ownedLength != 0) delete[] message;  // only now: `text` may be part of it
  message = copy;
  ownedLength = length;
}

// Out of line, so that each class's type information exists once, in the library.
Exception::~Exception() = default;
SystemException::~SystemException() = default;
DateTimeFormatException::~DateTimeFormatException() = default;
NotImplementedException::~NotImplementedException() = default;
NumberFormatException::~NumberFormatException() = default;
NumberRangeException::~NumberRangeException() = default;
FormatStringException::~FormatStringException() = default;
InvalidArgumentException::~InvalidArgumentException() = default;
RequestTimedOutException::~RequestTimedOutException() = default;
RequestFailedException::~RequestFailedException() = default;
IndexOutOfBoundsException::~IndexOutOfBoundsException() = default;
InvalidIteratorException::~InvalidIteratorException() = default;
NoPermissionException::~NoPermissionException() = default;
NotAuthenticatedException::~NotAuthenticatedException() = default;

}  // namespace KELib

namespace KE {

RequestCanceledException::~RequestCanceledException() = default;
InvalidStateException::~InvalidStateException() = default;
InvalidPowerStateException::~InvalidPowerStateException() = default;

}  // namespace KE
