// SPDX-License-Identifier: MIT
#include "tools/common/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace tools {
namespace {

bool IsOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

}  // namespace

TerminalSize SizeOfTerminal(int descriptor) {
  winsize size = {};
  if (ioctl(descriptor, TIOCGWINSZ, &size) != 0) return {};
  return {size.ws_row, size.ws_col};
}

bool TakesCommands(int descriptor) {
  const char* name = std::getenv("TERM");
  return isatty(descriptor) && name != nullptr && *name != '\0' && std::strcmp(name, "dumb") != 0;
}

bool HasStandardStreams(const char* program) {
  const bool hasOutput = IsOpen(STDOUT_FILENO);
  // The lowest free number is the next one given.
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (!IsOpen(descriptor) && open("/dev/null", O_RDWR) != descriptor) return false;
  }
  if (!hasOutput) std::cerr << program << ": standard output is closed\n";
  return hasOutput;
}

int FinishOutput(const char* program, int status) {
  if (status != EXIT_SUCCESS || std::cout.flush()) return status;
  std::cerr << program << ": cannot write to standard output\n";
  return EXIT_FAILURE;
}

}  // namespace tools
