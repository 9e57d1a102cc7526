// SPDX-License-Identifier: MIT
#include "foundation/BlockSize.h"

#include <dlfcn.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace KELib {

namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KECPP_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KECPP_SANITIZED
#endif

#ifndef KECPP_SANITIZED
// The executable or shared library that a function is in.
template <typename Function>
Dl_info HomeOf(Function* function) {
  Dl_info home{};
  if (dladdr(reinterpret_cast<void*>(function), &home) == 0) home = {};
  return home;
}

// Whether it is in a shared library whose file name contains `name`.
bool IsIn(const Dl_info& home, const char* name) {
  if (home.dli_fname == nullptr) return false;
  const char* const slash = std::strrchr(home.dli_fname, '/');
  return std::strstr(slash != nullptr ? slash + 1 : home.dli_fname, name) != nullptr;
}
#endif

// The allocator may be asked for its own blocks only. The standard library's operator new hands out
// malloc's blocks; a shared library with operator new, malloc and the question its own; the runtime
// of a sanitizer answers for all. What a program defines itself may put anything in front.
bool CanAsk() {
#ifdef KECPP_SANITIZED
  return true;
#else
  using Allocate = void*(std::size_t);
  const Dl_info asked = HomeOf(&malloc_usable_size);
  if (asked.dli_fbase == nullptr || HomeOf(&std::malloc).dli_fbase != asked.dli_fbase) return false;
  Allocate* const allocates[] = {&::operator new, &::operator new[] };
  for (Allocate* const allocate : allocates) {
    const Dl_info home = HomeOf(allocate);
    const bool allocators = home.dli_fbase == asked.dli_fbase && IsIn(home, ".so");
    if (!allocators && !IsIn(home, "libstdc++.so")) return false;
  }
  return true;
#endif
}

}  // namespace

std::size_t BlockSize(const char* block) {
  static const bool canAsk = CanAsk();
  return canAsk ? malloc_usable_size(const_cast<char*>(block)) : 0;
}

// The C library rounds small sizes up to a multiple of 16 bytes, perhaps with a rest that is too
// small to be a block, and large ones to whole pages.
bool MayEndAt(const char* block, std::size_t size, std::size_t length) {
  if (size <= length || block[length] != '\0') return false;
  if (length == 0) return true;
  const std::size_t slack = size < (64U << 10) ? 64 : 8192;
  const std::size_t from = size > slack ? size - slack : 0;
  if (from >= length) return block[length - 1] != '\0';
  return std::memchr(block + from, '\0', length - from) == nullptr;
}

}  // namespace KELib
