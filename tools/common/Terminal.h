// SPDX-License-Identifier: MIT
//
// What a stream of the process leads to: a terminal and its size, a file, nothing.
#ifndef KECPP_TOOLS_COMMON_TERMINAL_H
#define KECPP_TOOLS_COMMON_TERMINAL_H

#include <cstddef>

namespace tools {

struct TerminalSize {
  std::size_t rows = 0;  // both 0 when it is no terminal or does not know
  std::size_t columns = 0;
};

TerminalSize SizeOfTerminal(int descriptor);

// True for a terminal that can clear lines: not for "dumb" ones and those without a name.
bool TakesCommands(int descriptor);

// Call this first: a file that is opened later must not get the number of standard output. False,
// reported on standard error, when standard output is closed.
bool HasStandardStreams(const char* program);

// The exit status of a program that has printed everything and would end with `status`. When that
// is success and standard output did not take everything: failure, reported on standard error.
int FinishOutput(const char* program, int status);

}  // namespace tools

#endif
