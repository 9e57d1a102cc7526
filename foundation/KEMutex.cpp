// SPDX-License-Identifier: MIT
#include "foundation/KEMutex.h"

#include <sched.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "foundation/QuickLock.h"

namespace KELib {

namespace {

// In nanoseconds. Between two looks at a mutex that is held a waiting thread leaves its holder, who
// mostly takes it again at once, the time for some turns: every change of hands costs more than a
// turn, because the data has to come from the other processor's cache.
constexpr long long PAUSE = 1000;
constexpr long long PATIENCE = 20000;     // after this the others let a waiting thread through
constexpr long long SPIN_LIMIT = 50000;   // and after this it sleeps
constexpr long long LET_LOOK = 2000;      // how long they leave the mutex to a thread that looks,
constexpr long long LET_WAKE = 100000;    // and to one that has to be woken,
constexpr long long WAKE_EVERY = 500000;  // which they do this often: with many threads asleep
                                          // each turn would cost a change of threads otherwise

// The threads that wait, by the address of what they wait for: a mutex has no room for them. Those
// that share a place may be given way in vain now and then.
struct alignas(64) Place {
  std::atomic<unsigned int> impatient{0};  // of those that look
  std::atomic<unsigned int> sleeping{0};
  std::atomic<long long> nextWake{0};  // when one of these is let through at the earliest
  std::atomic<bool> waking{false};     // this happens now: nobody else takes what is free
};
constexpr std::size_t PLACES = 64;
Place places[PLACES];

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

// One of a number of threads, for a scope.
class Counted {
 public:
  explicit Counted(std::atomic<unsigned int>& threads) : number(threads) {
    ++number;
    ++QuickLock::crowd;
  }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() {
    --QuickLock::crowd;
    --number;
  }

 private:
  std::atomic<unsigned int>& number;
};

// A thread that looks keeps a processor, and one must be left for the holder.
class Looker {
 public:
  Looker() : mayLook(lookers++ < Most()) {}
  Looker(const Looker&) = delete;
  Looker& operator=(const Looker&) = delete;
  ~Looker() { --lookers; }

  bool MayLook() const { return mayLook; }

 private:
  static long Most() {
    static const long others = sysconf(_SC_NPROCESSORS_ONLN) - 1;
    return others;
  }

  static inline std::atomic<long> lookers{0};

  const bool mayLook;
};

// Whether it is time to let a sleeping thread through: one caller learns so.
bool IsToWake(Place& place) {
  if (place.sleeping.load(std::memory_order_relaxed) == 0) return false;
  long long due = place.nextWake.load(std::memory_order_relaxed);
  const long long now = NanosecondsNow();
  return now >= due && place.nextWake.compare_exchange_strong(due, now + WAKE_EVERY);
}

}  // namespace

std::atomic<unsigned int> QuickLock::crowd{0};

KEMutex::KEMutex() {
  pthread_mutex_init(&mutex, nullptr);
}

KEMutex::~KEMutex() {
  pthread_mutex_destroy(&mutex);
}

void KEMutex::Lock() {
  if (__libc_single_threaded) {
    pthread_mutex_lock(&mutex);  // costs less there than to try
  } else if (!QuickLock::TryTake(*this)) {
    LockInTurn();
  }
  SetOwner();
}

void KEMutex::LockInTurn() {
  GiveWay();
  if (pthread_mutex_trylock(&mutex) != 0) AwaitAndTake();
}

void KEMutex::AwaitAndTake() {
  Place& place = PlaceOf(this);
  const long long begin = NanosecondsNow();
  {
    const Looker looker;
    if (looker.MayLook()) {
      if (TakeUntil(begin + PATIENCE)) return;
      const Counted impatient(place.impatient);
      if (TakeUntil(begin + SPIN_LIMIT)) return;
    }
  }
  if (place.sleeping == 0) place.nextWake = begin + WAKE_EVERY;
  const Counted sleeping(place.sleeping);
  pthread_mutex_lock(&mutex);
}

bool KEMutex::TakeUntil(long long end) {
  const Place& place = PlaceOf(this);
  for (long long now = NanosecondsNow(); now < end;) {
    const long long next = now + PAUSE;
    while (now < next) now = PauseShortly();
    const bool isFree = owner.load(std::memory_order_relaxed) == 0;
    const bool isMine = !place.waking.load(std::memory_order_relaxed);
    if (isFree && isMine && pthread_mutex_trylock(&mutex) == 0) return true;
  }
  return false;
}

// Ends when one of them has it, at the latest after a time that does not hurt the caller.
void KEMutex::GiveWay() {
  Place& place = PlaceOf(this);
  const bool isToWake = IsToWake(place);
  const auto& waiting = isToWake ? place.sleeping : place.impatient;
  const unsigned int before = waiting.load(std::memory_order_relaxed);
  if (before == 0) return;
  if (isToWake) place.waking = true;
  const long long end = NanosecondsNow() + (isToWake ? LET_WAKE : LET_LOOK);
  while (owner.load(std::memory_order_relaxed) == 0 &&
         waiting.load(std::memory_order_relaxed) >= before && PauseShortly() < end) {
    if (isToWake) sched_yield();
  }
  if (isToWake) place.waking = false;
}

}  // namespace KELib
