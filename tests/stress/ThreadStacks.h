// SPDX-License-Identifier: MIT
//
// Where every thread of this process stands: for the last words of a process that hangs.
#ifndef KECPP_TESTS_STRESS_THREADSTACKS_H
#define KECPP_TESTS_STRESS_THREADSTACKS_H

namespace stress {

// Once, before any thread may hang: takes the signal SIGUSR2 over.
void PrepareThreadStacks();

// Writes the call stack of each thread to standard error, the library's own threads included. A
// thread that does not answer within a second is passed over.
void PrintThreadStacks();

}  // namespace stress

#endif
