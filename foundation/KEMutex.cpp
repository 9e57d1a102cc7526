// SPDX-License-Identifier: MIT
#include "foundation/KEMutex.h"

#include <sched.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace KELib {

namespace {

// In nanoseconds. Between two looks at a mutex that is held a waiting thread leaves its holder, who
// mostly takes it again at once, the time for some turns: every change of hands costs more than a
// turn, because the data has to come from the other processor's cache.
constexpr long long PAUSE = 1000;
constexpr long long PATIENCE = 20000;    // after this the others let a waiting thread through
constexpr long long SPIN_LIMIT = 50000;  // and after this it sleeps
constexpr long long LET_LOOK = 2000;     // how long they leave the mutex to a thread that looks,
constexpr long long LET_WAKE = 100000;   // and to one that has to be woken

// The impatient threads, by the address of what they wait for: a mutex has no room for them. Those
// that share a place may give way in vain now and then.
struct alignas(64) Place {
  std::atomic<unsigned int> impatient{0};
  std::atomic<unsigned int> sleeping{0};  // how many of them
};
constexpr std::size_t PLACES = 64;
Place places[PLACES];

// All of them. While there are none, which is nearly always, nobody looks at the places.
std::atomic<unsigned int> crowd{0};

Place& PlaceOf(const void* mutex) {
  const std::uintptr_t line = reinterpret_cast<std::uintptr_t>(mutex) / 16;
  return places[(line ^ line / PLACES) % PLACES];
}

long long NanosecondsNow() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

// One look at the clock and a hint to the processor that this is a loop which waits.
long long PauseShortly() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
  return NanosecondsNow();
}

// With one processor the holder cannot go on while another thread looks.
bool HasOtherProcessors() {
  static const bool several = sysconf(_SC_NPROCESSORS_ONLN) > 1;
  return several;
}

}  // namespace

KEMutex::KEMutex() {
  pthread_mutex_init(&mutex, nullptr);
}

KEMutex::~KEMutex() {
  pthread_mutex_destroy(&mutex);
}

void KEMutex::Lock() {
  if (__libc_single_threaded) {
    pthread_mutex_lock(&mutex);  // costs less there than to try
  } else if (crowd.load(std::memory_order_relaxed) != 0 || pthread_mutex_trylock(&mutex) != 0) {
    LockInTurn();
  }
  SetOwner();
}

void KEMutex::LockInTurn() {
  GiveWay();
  if (pthread_mutex_trylock(&mutex) == 0) return;
  if (HasOtherProcessors()) {
    AwaitAndTake();
  } else {
    pthread_mutex_lock(&mutex);
  }
}

void KEMutex::AwaitAndTake() {
  const long long begin = NanosecondsNow();
  if (TakeUntil(begin + PATIENCE)) return;
  Place& place = PlaceOf(this);
  ++place.impatient;
  ++crowd;
  if (!TakeUntil(begin + SPIN_LIMIT)) {
    ++place.sleeping;
    pthread_mutex_lock(&mutex);
    --place.sleeping;
  }
  --crowd;
  --place.impatient;
}

bool KEMutex::TakeUntil(long long end) {
  for (long long now = NanosecondsNow(); now < end;) {
    const long long next = now + PAUSE;
    while (now < next) now = PauseShortly();
    const bool isFree = owner.load(std::memory_order_relaxed) == 0;
    if (isFree && pthread_mutex_trylock(&mutex) == 0) return true;
  }
  return false;
}

// Ends when one of them has it, at the latest after a time that does not hurt the caller.
void KEMutex::GiveWay() {
  const Place& place = PlaceOf(this);
  const unsigned int before = place.impatient.load(std::memory_order_relaxed);
  if (before == 0) return;
  const bool isToWake = place.sleeping.load(std::memory_order_relaxed) != 0;
  const long long end = NanosecondsNow() + (isToWake ? LET_WAKE : LET_LOOK);
  while (owner.load(std::memory_order_relaxed) == 0 &&
         place.impatient.load(std::memory_order_relaxed) >= before && PauseShortly() < end) {
    if (isToWake) sched_yield();
  }
}

}  // namespace KELib
