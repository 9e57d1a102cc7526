// SPDX-License-Identifier: MIT
//
// Hands the length of a reply to the one who asked for it, past operations that hand on a text
// alone: measuring 150 MB again takes a tenth of the time in which they are applied.
//
// Scopes nest; the innermost one of a thread takes the notes.
//
// Thread safety: a scope concerns the thread that made it and no other. It lives on the stack.
#ifndef KECPP_SOAP_REPLYLENGTH_H
#define KECPP_SOAP_REPLYLENGTH_H

#include "foundation/KEString.h"

namespace KELib::Soap {

class ReplyLength {
 public:
  ReplyLength();
  ReplyLength(const ReplyLength&) = delete;
  ReplyLength& operator=(const ReplyLength&) = delete;
  ~ReplyLength();

  // A reply was cut out, which has that length.
  static void Note(const KEString& reply, unsigned int length);

  // The reply went through other hands, which may have cut it.
  static void Forget();

  // The length of `text`: as noted when it is the reply of which that was said, else measured.
  unsigned int Of(const KEString& text) const;

 private:
  const char* noted = nullptr;
  unsigned int length = 0;
  ReplyLength* const outer;
};

}  // namespace KELib::Soap

#endif
