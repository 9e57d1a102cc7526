// SPDX-License-Identifier: MIT
//
// How many locks each thread holds: this executable's own versions of the calls that lock.
#ifndef KECPP_TESTS_TORTURE_HELDLOCKS_H
#define KECPP_TESTS_TORTURE_HELDLOCKS_H

namespace torture {

// Mutexes and read-write locks that the calling thread holds.
int HeldLocks();

// To be called at the end of a thread: what it holds then stays locked for ever.
void NoteThreadEnd();

// Since the start of the process.
unsigned long LocksHeldAtThreadEnd();
unsigned long MutexesDestroyedLocked();

}  // namespace torture

#endif
