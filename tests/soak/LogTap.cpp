// SPDX-License-Identifier: MIT
//
// Preloaded into a program: what it would write to the system log becomes lines of the file that
// KECPP_LOG_TAP names.
#include <fcntl.h>
#include <unistd.h>

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
void Add(int priority, const char* format, va_list arguments) {
  char text[1024];
  if (std::vsnprintf(text, sizeof text, format, arguments) < 0) return;
  std::string line = "<" + std::to_string(priority) + "> ";
  for (const char* p = text; *p; ++p) line += *p == '\n' ? ' ' : *p;
  line += '\n';
  [[maybe_unused]] const ssize_t written = write(output, line.data(), line.size());
}

}  // namespace

// Named apart from the functions, since a fortified <syslog.h> has inline bodies for these names.
#define LOG_TAP_SYMBOL(name) asm(name) __attribute__((used, visibility("default")))

extern "C" {
void TappedSyslog(int priority, const char* format, ...) LOG_TAP_SYMBOL("syslog");
void TappedSyslogChk(int priority, int flag, const char* format, ...)
    LOG_TAP_SYMBOL("__syslog_chk");

void TappedSyslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Add(priority, format, arguments);
  va_end(arguments);
}

void TappedSyslogChk(int priority, int /*flag*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Add(priority, format, arguments);
  va_end(arguments);
}
}
