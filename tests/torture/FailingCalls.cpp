// SPDX-License-Identifier: MIT
#include "torture/FailingCalls.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/time.h>
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

#include "torture/HeldLocks.h"

namespace torture {
namespace {

std::atomic<unsigned long> counts[CALLS];
std::atomic<unsigned long> firstRefused[CALLS];
std::atomic<unsigned long> burstLength{1};
std::atomic<long> blocks{0}, handles{0}, shares{0}, threads{0};
std::atomic<unsigned long> sharesInUse{0};

std::mutex refusalMutex;
bool anyRefused = false;
Refusal firstRefusal{};

thread_local bool inLibrary = false;
thread_local int lastOption = 0;
thread_local bool inTransfer = false;  // the transfer library makes handles of its own there

bool MustRefuse(Call call) {
  if (!inLibrary) return false;
  const int index = static_cast<int>(call);
  const unsigned long number = ++counts[index];
  const unsigned long first = firstRefused[index];
  return first != 0 && number >= first && number - first < burstLength;
}

void Record(const Refusal& refusal) {
  const std::lock_guard<std::mutex> guard(refusalMutex);
  if (!anyRefused) firstRefusal = refusal;
  anyRefused = true;
}

// True after having recorded it.
bool Refuse(Call call) {
  if (!MustRefuse(call)) return false;
  Record({call});
  return true;
}

template <typename Function>
Function* Original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* Allocate(std::size_t size, std::size_t alignment = 0) {
  if (Refuse(Call::allocate)) return nullptr;
  if (size == 0) size = 1;
  void* block = alignment == 0
                    ? std::malloc(size)
                    : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (block != nullptr) ++blocks;
  return block;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment = 0) {
  if (void* block = Allocate(size, alignment)) return block;
  throw std::bad_alloc();
}

void Free(void* block) {
  if (block == nullptr) return;
  --blocks;
  std::free(block);
}

bool IsTicket(const char* path) {
  return std::strstr(path, "ticket") != nullptr;
}

bool IsTicket(FILE* stream) {
  char link[64], path[4096] = "";
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fileno(stream));
  return readlink(link, path, sizeof path - 1) > 0 && IsTicket(path);
}

// The text of the transfer library's trace is no part of the result.
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

FILE* Open(const char* name, const char* path, const char* mode) {
  if (MustRefuse(Call::open)) {
    Refusal refusal{Call::open};
    refusal.isTicket = IsTicket(path);
    Record(refusal);
    errno = EMFILE;
    return nullptr;
  }
  return Original<FILE*(const char*, const char*)>(name)(path, mode);
}

int TimeOfDay(const char* name, void* time, void* zone) {
  if (Refuse(Call::timeOfDay)) {
    errno = EINVAL;
    return -1;
  }
  return Original<int(void*, void*)>(name)(time, zone);
}

}  // namespace

const char* NameOf(Call call) {
  static const char* const names[CALLS] = {
      "operator new", "curl_easy_setopt", "curl_easy_init", "curl_share", "fopen",
      "fread",        "pthread_create",   "gettimeofday"};
  return names[static_cast<int>(call)];
}

void Arm(Call call, unsigned long first, unsigned long burst) {
  Disarm();
  for (auto& count : counts) count = 0;
  const std::lock_guard<std::mutex> guard(refusalMutex);
  anyRefused = false;
  burstLength = burst;
  firstRefused[static_cast<int>(call)] = first;
}

void Disarm() {
  for (auto& first : firstRefused) first = 0;
}

unsigned long CountOf(Call call) {
  return counts[static_cast<int>(call)];
}

bool Refused(Refusal& first) {
  const std::lock_guard<std::mutex> guard(refusalMutex);
  if (anyRefused) first = firstRefusal;
  return anyRefused;
}

LibraryScope::LibraryScope(bool inside) : outer(inLibrary) {
  inLibrary = inside;
}

LibraryScope::~LibraryScope() {
  inLibrary = outer;
}

Living CountLiving() {
  return {blocks, handles, shares, threads};
}

unsigned long SharesInUseAtEnd() {
  return sharesInUse;
}

}  // namespace torture

// --- the calls -----------------------------------------------------------------------------------
// Each is named by its symbol: headers redirect some names, and declare others with attributes that
// a definition must not repeat.

using torture::Call;

void* operator new(std::size_t size) {
  return torture::AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return torture::AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return torture::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return torture::Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return torture::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return torture::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
  torture::Free(block);
}
void operator delete[](void* block) noexcept {
  torture::Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  torture::Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  torture::Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  torture::Free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
  torture::Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  torture::Free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
  torture::Free(block);
}

#define TORTURE_SYMBOL(name) asm(name) __attribute__((used, visibility("default")))

extern "C" {
CURLcode TortureSetOption(CURL* easy, int option, ...) TORTURE_SYMBOL("curl_easy_setopt");
CURL* TortureEasyInit() TORTURE_SYMBOL("curl_easy_init");
void TortureEasyCleanup(CURL* easy) TORTURE_SYMBOL("curl_easy_cleanup");
CURLcode TorturePerform(CURL* easy) TORTURE_SYMBOL("curl_easy_perform");
CURLSH* TortureShareInit() TORTURE_SYMBOL("curl_share_init");
CURLSHcode TortureShareOption(CURLSH* share, int option, ...) TORTURE_SYMBOL("curl_share_setopt");
CURLSHcode TortureShareCleanup(CURLSH* share) TORTURE_SYMBOL("curl_share_cleanup");
FILE* TortureOpen(const char* path, const char* mode) TORTURE_SYMBOL("fopen");
FILE* TortureOpen64(const char* path, const char* mode) TORTURE_SYMBOL("fopen64");
size_t TortureRead(void* to, size_t size, size_t count, FILE* stream) TORTURE_SYMBOL("fread");
int TortureTimeOfDay(void* time, void* zone) TORTURE_SYMBOL("gettimeofday");
int TortureTimeOfDay64(void* time, void* zone) TORTURE_SYMBOL("__gettimeofday64");
int TortureCreate(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                  void* argument) TORTURE_SYMBOL("pthread_create");

CURLcode TortureSetOption(CURL* easy, int option, ...) {
  static const auto original =
      torture::Original<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt");
  va_list arguments;
  va_start(arguments, option);
  void* const value = va_arg(arguments, void*);  // as wide as a long; no wider option is in use
  va_end(arguments);
  if (torture::inTransfer) return original(easy, static_cast<CURLoption>(option), value);
  const int previous = std::exchange(torture::lastOption, option);
  if (torture::MustRefuse(Call::setOption)) {
    torture::Refusal refusal{Call::setOption, option, previous, reinterpret_cast<long>(value)};
    torture::Record(refusal);
    return CURLE_OUT_OF_MEMORY;
  }
  if (option == CURLOPT_VERBOSE && value != nullptr) {
    original(easy, CURLOPT_STDERR, torture::Nowhere());
  }
  return original(easy, static_cast<CURLoption>(option), value);
}

CURL* TortureEasyInit() {
  static const auto original = torture::Original<CURL*()>("curl_easy_init");
  if (torture::inTransfer) return original();
  if (torture::Refuse(Call::easyInit)) return nullptr;
  CURL* const easy = original();
  torture::handles += easy != nullptr ? 1 : 0;
  return easy;
}

void TortureEasyCleanup(CURL* easy) {
  torture::handles -= easy != nullptr ? 1 : 0;
  torture::Original<void(CURL*)>("curl_easy_cleanup")(easy);
}

CURLcode TorturePerform(CURL* easy) {
  torture::inTransfer = true;
  const CURLcode result = torture::Original<CURLcode(CURL*)>("curl_easy_perform")(easy);
  torture::inTransfer = false;
  return result;
}

CURLSH* TortureShareInit() {
  if (torture::Refuse(Call::share)) return nullptr;
  CURLSH* const share = torture::Original<CURLSH*()>("curl_share_init")();
  torture::shares += share != nullptr ? 1 : 0;
  return share;
}

CURLSHcode TortureShareOption(CURLSH* share, int option, ...) {
  va_list arguments;
  va_start(arguments, option);
  void* const value = va_arg(arguments, void*);
  va_end(arguments);
  if (torture::MustRefuse(Call::share)) {
    torture::Refusal refusal{Call::share};
    refusal.shareExists = true;
    torture::Record(refusal);
    return CURLSHE_NOMEM;
  }
  return torture::Original<CURLSHcode(CURLSH*, CURLSHoption, ...)>("curl_share_setopt")(
      share, static_cast<CURLSHoption>(option), value);
}

CURLSHcode TortureShareCleanup(CURLSH* share) {
  const CURLSHcode result = torture::Original<CURLSHcode(CURLSH*)>("curl_share_cleanup")(share);
  torture::sharesInUse += result == CURLSHE_OK ? 0 : 1;
  torture::shares -= result == CURLSHE_OK ? 1 : 0;
  return result;
}

FILE* TortureOpen(const char* path, const char* mode) {
  return torture::Open("fopen", path, mode);
}

FILE* TortureOpen64(const char* path, const char* mode) {
  return torture::Open("fopen64", path, mode);
}

// The error is a real one: reading a descriptor that is open for writing only.
size_t TortureRead(void* to, size_t size, size_t count, FILE* stream) {
  if (torture::MustRefuse(Call::read)) {
    torture::Refusal refusal{Call::read};
    refusal.isTicket = torture::IsTicket(stream);
    torture::Record(refusal);
    const int writeOnly = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(writeOnly, fileno(stream));
    close(writeOnly);
  }
  return torture::Original<size_t(void*, size_t, size_t, FILE*)>("fread")(to, size, count, stream);
}

int TortureTimeOfDay(void* time, void* zone) {
  return torture::TimeOfDay("gettimeofday", time, zone);
}

int TortureTimeOfDay64(void* time, void* zone) {
  return torture::TimeOfDay("__gettimeofday64", time, zone);
}

int TortureCreate(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                  void* argument) {
  using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto original = torture::Original<Create>("pthread_create");
  if (torture::Refuse(Call::startThread)) return EAGAIN;
  if (!torture::inLibrary) return original(thread, attributes, run, argument);
  auto* const start = static_cast<torture::ThreadStart*>(std::malloc(sizeof(torture::ThreadStart)));
  *start = {run, argument};
  ++torture::threads;
  const int result = original(thread, attributes, torture::RunCounted, start);
  if (result != 0) {
    --torture::threads;
    std::free(start);
  }
  return result;
}
}

#undef TORTURE_SYMBOL
