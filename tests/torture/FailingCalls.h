// SPDX-License-Identifier: MIT
//
// Makes one chosen call fail: this executable's own versions of the calls that a system may refuse.
//
// Calls count only inside a LibraryScope and on threads that were started inside one, so that the
// test program itself never meets a refusal. A refused call does nothing but report its failure, in
// the way in which the real one would.
//
// Thread safety: any thread, but Arm and Disarm belong to the thread that runs the scenario.
#ifndef KECPP_TESTS_TORTURE_FAILINGCALLS_H
#define KECPP_TESTS_TORTURE_FAILINGCALLS_H

#include <optional>

namespace torture {

enum class Call { allocate, setOption, easyInit, share, open, read, startThread, timeOfDay };
constexpr const char* NAMES[] = {
    "operator new", "curl_easy_setopt", "curl_easy_init", "curl_share", "fopen",
    "fread",        "pthread_create",   "gettimeofday"};
constexpr int CALLS = sizeof NAMES / sizeof NAMES[0];
constexpr const char* NameOf(Call call) {
  return NAMES[static_cast<int>(call)];
}

// What was refused: enough to tell which error must follow.
struct Refusal {
  Call call;
  const char* what = "";   // share: "a new one" or "one that is"; open, read: "a ticket" or nothing
  int option = 0;          // setOption: the option, and the one that was set before it
  int previousOption = 0;  // by the same thread
  long value = 0;
};

// Counts from now on; the `first`th call of that kind and the `burst` - 1 after it are refused.
// 0 refuses none.
void Arm(Call call, unsigned long first, unsigned long burst);
void Disarm();
unsigned long CountOf(Call call);       // since Arm
std::optional<Refusal> FirstRefusal();  // since Arm

// The calling thread runs the library. Scopes nest; a foreign one interrupts.
class LibraryScope {
 public:
  explicit LibraryScope(bool inside = true);
  ~LibraryScope();
  LibraryScope(const LibraryScope&) = delete;
  LibraryScope& operator=(const LibraryScope&) = delete;

 private:
  const bool outer;
};

// What exists now, of the whole process: blocks of operator new; of the library: easy handles,
// shares that could be destroyed, threads.
struct Living {
  long blocks, handles, shares, threads;
};
Living CountLiving();

// --- locks: this executable's own versions of the calls that lock --------------------------------

// Mutexes and read-write locks that the calling thread holds.
int HeldLocks();

// To be called at the end of a thread: what it holds then stays locked for ever.
void NoteThreadEnd();

// Since the start of the process: held at the end of a thread, or locked when destroyed.
unsigned long LostLocks();

}  // namespace torture

#endif
