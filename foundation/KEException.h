// SPDX-License-Identifier: MIT
//
// Every error of the library: one tree of exception classes rooted at Throwable. The class is the
// kind of error, the message its only payload.
//
// Thread safety: none; an exception belongs to the thread that handles it.
// Ownership: a message that was given as a literal is borrowed; otherwise the exception owns a
// copy.
#ifndef KECPP_FOUNDATION_KEEXCEPTION_H
#define KECPP_FOUNDATION_KEEXCEPTION_H

#include "foundation/KEExport.h"

namespace KELib {

class KECPP_API Throwable {
 public:
  // No message.
  Throwable() = default;

  // Borrows `text`, which must outlive the object: for literals and constants only. Allocates
  // nothing. A local array binds here as well: give its length to have it copied.
  Throwable(const char* text) : message(text) {}  // NOLINT: implicit on purpose, `throw E("...")`

  // Copies; see Init.
  Throwable(char* text, unsigned int length) { Init(text, length); }

  Throwable(const Throwable& other) { *this = other; }

  // A borrowed message stays borrowed, an owned one is copied.
  Throwable& operator=(const Throwable& other);

  virtual ~Throwable();

  // Takes a copy of the first `length` characters (0: all) of `text`, which may be the object's own
  // message; a shorter text is padded with NULs. Null means no message. An empty text is not
  // counted as owned. Throws std::bad_alloc; the object is unchanged then.
  void Init(const char* text, unsigned int length);

  // The message, or "Unknown Exception". Valid as long as the object.
  const char* What() const { return message != nullptr ? message : "Unknown Exception"; }

 protected:
  // Borrows `text`, letting an owned message go.
  void Borrow(const char* text);

 private:
  const char* message = nullptr;
  unsigned int ownedLength = 0;  // 0: the message is borrowed
};

// Any other failure.
class KECPP_API Exception : public Throwable {
 public:
  using Throwable::Throwable;
  ~Exception() override;
};

// An operating-system call or an internal precondition failed.
class KECPP_API SystemException : public Exception {
 public:
  using Exception::Exception;
  ~SystemException() override;
};

// Text that is no date and time.
class KECPP_API DateTimeFormatException : public Exception {
 public:
  using Exception::Exception;
  ~DateTimeFormatException() override;
};

// An interface operation that the implementation does not provide.
class KECPP_API NotImplementedException : public Exception {
 public:
  using Exception::Exception;
  ~NotImplementedException() override;
};

// Text that is no number.
class KECPP_API NumberFormatException : public Exception {
 public:
  using Exception::Exception;
  ~NumberFormatException() override;
};

// A number outside the range of the wanted type.
class KECPP_API NumberRangeException : public Exception {
 public:
  using Exception::Exception;
  ~NumberRangeException() override;
};

// A number could not be written as text; the message names the type.
class KECPP_API FormatStringException : public Exception {
 public:
  using Exception::Exception;
  ~FormatStringException() override;
};

// A bad argument.
class KECPP_API InvalidArgumentException : public Exception {
 public:
  using Exception::Exception;
  ~InvalidArgumentException() override;
};

// A request that the server did not answer in time.
class KECPP_API RequestTimedOutException : public Exception {
 public:
  using Exception::Exception;
  ~RequestTimedOutException() override;
};

// The server is gone. Thrown by a caller's own method invoker only; the data sync ends the process.
class KECPP_API RequestFailedException : public Exception {
 public:
  using Exception::Exception;
  ~RequestFailedException() override;
};

// An index beyond the end of a string or vector.
class KECPP_API IndexOutOfBoundsException : public Exception {
 public:
  using Exception::Exception;
  ~IndexOutOfBoundsException() override;
};

// Use of an iterator that its container has invalidated.
class KECPP_API InvalidIteratorException : public Exception {
 public:
  using Exception::Exception;
  ~InvalidIteratorException() override;
};

// The server refused an operation for lack of rights.
class KECPP_API NoPermissionException : public Exception {
 public:
  using Exception::Exception;
  ~NoPermissionException() override;
};

// No login, or it was lost. A kind of missing permission: catch it first to distinguish the two.
class KECPP_API NotAuthenticatedException : public NoPermissionException {
 public:
  using NoPermissionException::NoPermissionException;
  ~NotAuthenticatedException() override;
};

}  // namespace KELib

namespace KE {

// A server request that was cancelled.
class KECPP_API RequestCanceledException : public KELib::Exception {
 public:
  using Exception::Exception;
  ~RequestCanceledException() override;
};

// The operation is invalid in the object's state.
class KECPP_API InvalidStateException : public KELib::Exception {
 public:
  using Exception::Exception;
  ~InvalidStateException() override;
};

// The operation is invalid in the machine's power state.
class KECPP_API InvalidPowerStateException : public KELib::Exception {
 public:
  using Exception::Exception;
  ~InvalidPowerStateException() override;
};

}  // namespace KE

#endif
