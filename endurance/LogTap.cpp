// SPDX-License-Identifier: MIT
//
// Preloaded into a program: writes what goes to the system log into the file that KECPP_LOG_TAP
// names, line by line.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int OpenOutput() {
  const char* path = std::getenv("KECPP_LOG_TAP");
  return path ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
}

const int output = OpenOutput();  // at once: the number of open files is watched

// One write a line, so that lines of several threads do not mix.
void Write(int priority, const char* format, va_list arguments) {
  char text[1024];
  if (std::vsnprintf(text, sizeof text, format, arguments) < 0) return;
  std::string line = "<" + std::to_string(priority) + "> " + text;
  std::replace(line.begin(), line.end(), '\n', ' ');
  line += '\n';
  [[maybe_unused]] const ssize_t written = write(output, line.data(), line.size());
}

}  // namespace

// Not declared by <syslog.h>, whose checked variants would be defined a second time.
extern "C" {
__attribute__((visibility("default"))) void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Write(priority, format, arguments);
  va_end(arguments);
}
__attribute__((visibility("default"))) void __syslog_chk(int priority, int, const char* format,
                                                         ...) {
  va_list arguments;
  va_start(arguments, format);
  Write(priority, format, arguments);
  va_end(arguments);
}
}
