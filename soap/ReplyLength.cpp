// SPDX-License-Identifier: MIT
#include "soap/ReplyLength.h"

#include "foundation/BlockSize.h"

namespace KELib::Soap {

namespace {

thread_local ReplyLength* innermost = nullptr;

}  // namespace

ReplyLength::ReplyLength() : outer(innermost) {
  innermost = this;
}

ReplyLength::~ReplyLength() {
  innermost = outer;
}

void ReplyLength::Note(const KEString& reply, unsigned int length) {
  if (innermost == nullptr) return;
  innermost->noted = reply.Cstr();
  innermost->length = length;
}

void ReplyLength::Forget() {
  if (innermost != nullptr) innermost->noted = nullptr;
}

// The block of a reply that was freed may be that of another text, and shorter.
unsigned int ReplyLength::Of(const KEString& text) const {
  const char* const block = text.Cstr();
  const bool isNoted = block == noted && MayEndAt(block, BlockSize(block), length);
  return isNoted ? length : text.Length();
}

}  // namespace KELib::Soap
