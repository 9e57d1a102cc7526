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

namespace torture {

enum class Call { allocate, setOption, easyInit, share, open, read, startThread, timeOfDay };
constexpr int CALLS = 8;
const char* NameOf(Call call);

// What was refused: enough to tell which error must follow.
struct Refusal {
  Call call{};
  int option = 0;          // setOption: the option, and the one that was set before it
  int previousOption = 0;  // by the same thread
  long value = 0;
  bool shareExists = false;  // share: an existing share was being prepared
  bool isTicket = false;     // open, read: the file is a ticket, whose name tells
};

// Counts from now on; the `first`th call of that kind and the `burst` - 1 after it are refused.
// 0 refuses none.
void Arm(Call call, unsigned long first, unsigned long burst);
void Disarm();
unsigned long CountOf(Call call);  // since Arm
bool Refused(Refusal& first);      // since Arm

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
// shares, threads.
struct Living {
  long blocks, handles, shares, threads;
};
Living CountLiving();

// A share was to be destroyed that a handle still used.
unsigned long SharesInUseAtEnd();

}  // namespace torture

#endif
