// SPDX-License-Identifier: MIT
#include "torture/FailingCalls.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "support/ReplacedSymbol.h"

namespace torture {
namespace {

std::atomic<unsigned long> counts[CALLS];
std::atomic<unsigned long> firstRefused[CALLS];
std::atomic<unsigned long> burstLength{1};
std::atomic<long> blocks{0}, handles{0}, shares{0}, threads{0};

std::mutex refusalMutex;
std::optional<Refusal> firstRefusal;  // guarded by it

thread_local bool inLibrary = false;
thread_local int lastOption = 0;
thread_local bool insideLibcurl = false;  // it makes handles of its own there

// True after having recorded it.
bool Refuse(const Refusal& refusal) {
  if (!inLibrary) return false;
  const int index = static_cast<int>(refusal.call);
  const unsigned long number = ++counts[index];
  const unsigned long first = firstRefused[index];
  if (first == 0 || number < first || number - first >= burstLength) return false;
  const std::lock_guard<std::mutex> guard(refusalMutex);
  if (!firstRefusal) firstRefusal = refusal;
  return true;
}

template <typename Function>
Function* Original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* Allocate(std::size_t size, std::align_val_t alignment = {}) {
  if (Refuse({Call::allocate})) return nullptr;
  const auto step = static_cast<std::size_t>(alignment);
  if (size == 0) size = 1;
  void* block =
      step == 0 ? std::malloc(size) : std::aligned_alloc(step, (size + step - 1) / step * step);
  if (block != nullptr) ++blocks;
  return block;
}

void* AllocateOrThrow(std::size_t size, std::align_val_t alignment = {}) {
  if (void* block = Allocate(size, alignment)) return block;
  throw std::bad_alloc();
}

void Free(void* block) {
  if (block == nullptr) return;
  --blocks;
  std::free(block);
}

const char* KindOf(const char* path) {
  return std::strstr(path, "ticket") != nullptr ? "a ticket" : "";
}

const char* KindOf(FILE* stream) {
  char link[64], path[4096] = "";
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fileno(stream));
  return readlink(link, path, sizeof path - 1) > 0 ? KindOf(path) : "";
}

// The text of libcurl's trace is no part of the result.
FILE* Nowhere() {
  static FILE* const nowhere = std::fopen("/dev/null", "w");
  return nowhere;
}

struct ThreadStart {
  void* (*run)(void*);
  void* argument;
};

void* RunCounted(void* argument) {
  const ThreadStart start = *static_cast<ThreadStart*>(argument);
  std::free(argument);
  void* result;
  {
    const LibraryScope inside;
    result = start.run(start.argument);
  }
  NoteThreadEnd();
  --threads;
  return result;
}

}  // namespace

void Arm(Call call, unsigned long first, unsigned long burst) {
  Disarm();
  for (auto& count : counts) count = 0;
  const std::lock_guard<std::mutex> guard(refusalMutex);
  firstRefusal.reset();
  burstLength = burst;
  firstRefused[static_cast<int>(call)] = first;
}

void Disarm() {
  for (auto& first : firstRefused) first = 0;
}

unsigned long CountOf(Call call) {
  return counts[static_cast<int>(call)];
}

std::optional<Refusal> FirstRefusal() {
  const std::lock_guard<std::mutex> guard(refusalMutex);
  return firstRefusal;
}

LibraryScope::LibraryScope(bool inside) : outer(std::exchange(inLibrary, inside)) {}

LibraryScope::~LibraryScope() {
  inLibrary = outer;
}

Living CountLiving() {
  return {blocks, handles, shares, threads};
}

// --- the calls -----------------------------------------------------------------------------------

REPLACED_SYMBOL(CURLcode, SetOption, "curl_easy_setopt", (CURL * easy, int option, ...)) {
  static const auto original = Original<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt");
  va_list arguments;
  va_start(arguments, option);
  void* const value = va_arg(arguments, void*);  // as wide as a long; no wider option is in use
  va_end(arguments);
  if (insideLibcurl) return original(easy, static_cast<CURLoption>(option), value);
  const int previous = std::exchange(lastOption, option);
  if (Refuse({Call::setOption, "", option, previous, reinterpret_cast<long>(value)})) {
    return CURLE_OUT_OF_MEMORY;
  }
  if (option == CURLOPT_VERBOSE && value != nullptr) original(easy, CURLOPT_STDERR, Nowhere());
  return original(easy, static_cast<CURLoption>(option), value);
}

REPLACED_SYMBOL(CURL*, EasyInit, "curl_easy_init", ()) {
  static const auto original = Original<CURL*()>("curl_easy_init");
  if (insideLibcurl) return original();
  if (Refuse({Call::easyInit})) return nullptr;
  CURL* const easy = original();
  handles += easy != nullptr ? 1 : 0;
  return easy;
}

REPLACED_SYMBOL(void, EasyCleanup, "curl_easy_cleanup", (CURL * easy)) {
  handles -= easy != nullptr ? 1 : 0;
  Original<void(CURL*)>("curl_easy_cleanup")(easy);
}

REPLACED_SYMBOL(CURLM*, MultiInit, "curl_multi_init", ()) {
  if (Refuse({Call::easyInit, "a multi handle"})) return nullptr;
  insideLibcurl = true;
  CURLM* const multi = Original<CURLM*()>("curl_multi_init")();
  insideLibcurl = false;
  return multi;
}

REPLACED_SYMBOL(CURLMcode, AddHandle, "curl_multi_add_handle", (CURLM * multi, CURL* easy)) {
  insideLibcurl = true;
  const auto result = Original<CURLMcode(CURLM*, CURL*)>("curl_multi_add_handle")(multi, easy);
  insideLibcurl = false;
  return result;
}

REPLACED_SYMBOL(CURLMcode, Perform, "curl_multi_perform", (CURLM * multi, int* running)) {
  insideLibcurl = true;
  const auto result = Original<CURLMcode(CURLM*, int*)>("curl_multi_perform")(multi, running);
  insideLibcurl = false;
  return result;
}

REPLACED_SYMBOL(CURLSH*, ShareInit, "curl_share_init", ()) {
  if (Refuse({Call::share, "a new one"})) return nullptr;
  insideLibcurl = true;
  CURLSH* const share = Original<CURLSH*()>("curl_share_init")();
  insideLibcurl = false;
  shares += share != nullptr ? 1 : 0;
  return share;
}

REPLACED_SYMBOL(CURLSHcode, SetShareOption, "curl_share_setopt",
                (CURLSH * share, int option, ...)) {
  va_list arguments;
  va_start(arguments, option);
  void* const value = va_arg(arguments, void*);
  va_end(arguments);
  if (Refuse({Call::share, "one that is"})) return CURLSHE_NOMEM;
  const auto original = Original<CURLSHcode(CURLSH*, CURLSHoption, ...)>("curl_share_setopt");
  return original(share, static_cast<CURLSHoption>(option), value);
}

// One that a handle still uses is not destroyed, and goes on to count.
REPLACED_SYMBOL(CURLSHcode, ShareCleanup, "curl_share_cleanup", (CURLSH * share)) {
  const CURLSHcode result = Original<CURLSHcode(CURLSH*)>("curl_share_cleanup")(share);
  shares -= result == CURLSHE_OK ? 1 : 0;
  return result;
}

// The error is a real one: reading a descriptor that is open for writing only.
REPLACED_SYMBOL(size_t, Read, "fread", (void* to, size_t size, size_t count, FILE* stream)) {
  if (inLibrary && Refuse({Call::read, KindOf(stream)})) {
    const int writeOnly = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(writeOnly, fileno(stream));
    close(writeOnly);
  }
  return Original<size_t(void*, size_t, size_t, FILE*)>("fread")(to, size, count, stream);
}

#define TORTURE_OPEN(function, name)                                             \
  REPLACED_SYMBOL(FILE*, function, name, (const char* path, const char* mode)) { \
    if (!Refuse({Call::open, KindOf(path)})) {                                   \
      return Original<FILE*(const char*, const char*)>(name)(path, mode);        \
    }                                                                            \
    errno = EMFILE;                                                              \
    return nullptr;                                                              \
  }
TORTURE_OPEN(Open, "fopen")
TORTURE_OPEN(Open64, "fopen64")

#define TORTURE_TIME(function, name)                                                      \
  REPLACED_SYMBOL(int, function, name, (void* time, void* zone)) {                        \
    if (!Refuse({Call::timeOfDay})) return Original<int(void*, void*)>(name)(time, zone); \
    errno = EINVAL;                                                                       \
    return -1;                                                                            \
  }
TORTURE_TIME(TimeOfDay, "gettimeofday")
TORTURE_TIME(TimeOfDay64, "__gettimeofday64")

REPLACED_SYMBOL(int, Create, "pthread_create",
                (pthread_t * thread, const pthread_attr_t* attributes, void* (*run)(void*),
                 void* argument)) {
  using Function = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto original = Original<Function>("pthread_create");
  if (Refuse({Call::startThread})) return EAGAIN;
  if (!inLibrary) return original(thread, attributes, run, argument);
  auto* const start = static_cast<ThreadStart*>(std::malloc(sizeof(ThreadStart)));
  *start = {run, argument};
  ++threads;
  const int result = original(thread, attributes, RunCounted, start);
  if (result != 0) {
    --threads;
    std::free(start);
  }
  return result;
}

}  // namespace torture

// NOLINTBEGIN(bugprone-macro-parentheses): operators and lists of parameters
#define TORTURE_NEW(form, how, parameters, values) \
  void* operator form parameters {                 \
    return torture::how values;                    \
  }
TORTURE_NEW(new, AllocateOrThrow, (std::size_t size), (size))
TORTURE_NEW(new[], AllocateOrThrow, (std::size_t size), (size))
TORTURE_NEW(new, Allocate, (std::size_t size, const std::nothrow_t&) noexcept, (size))
TORTURE_NEW(new[], Allocate, (std::size_t size, const std::nothrow_t&) noexcept, (size))
TORTURE_NEW(new, AllocateOrThrow, (std::size_t size, std::align_val_t step), (size, step))
TORTURE_NEW(new[], AllocateOrThrow, (std::size_t size, std::align_val_t step), (size, step))

#define TORTURE_DELETE(form, parameters)   \
  void operator form parameters noexcept { \
    torture::Free(block);                  \
  }
// NOLINTEND(bugprone-macro-parentheses)
TORTURE_DELETE(delete, (void* block))
TORTURE_DELETE(delete[], (void* block))
TORTURE_DELETE(delete, (void* block, std::size_t))
TORTURE_DELETE(delete[], (void* block, std::size_t))
TORTURE_DELETE(delete, (void* block, std::align_val_t))
TORTURE_DELETE(delete[], (void* block, std::align_val_t))
TORTURE_DELETE(delete, (void* block, std::size_t, std::align_val_t))
TORTURE_DELETE(delete[], (void* block, std::size_t, std::align_val_t))
