// SPDX-License-Identifier: MIT
//
// How large a block from array new is: a second opinion on what was noted about it.
#ifndef KECPP_FOUNDATION_BLOCKSIZE_H
#define KECPP_FOUNDATION_BLOCKSIZE_H

#include <cstddef>

namespace KELib {

// The bytes that may be read and written from `block` on, at least as many as were asked for. 0
// where nobody knows: in programs with their own operator new, or whose malloc cannot say. Any
// thread may ask. O(1).
std::size_t BlockSize(const char* block);

// Whether the text in a block of `size` bytes may have `length` characters: a NUL ends it there,
// and there is none between that place and the one where a text must end for which a block of this
// size was taken. What is behind the end of such a text is left from earlier users of the memory.
// O(1): at most 8 KiB are looked at, 64 bytes in blocks below 64 KiB.
bool MayEndAt(const char* block, std::size_t size, std::size_t length);

}  // namespace KELib

#endif
