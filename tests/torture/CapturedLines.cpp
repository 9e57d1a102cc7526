// SPDX-License-Identifier: MIT
#include "torture/CapturedLines.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "torture/FailingCalls.h"

namespace torture {
namespace {

std::mutex mutex;
std::string lines;

void Capture(const char* format, va_list arguments) {
  const LibraryScope outside(false);  // a system log allocates nothing with operator new
  char line[8192];
  std::vsnprintf(line, sizeof line, format, arguments);
  const std::lock_guard<std::mutex> guard(mutex);
  lines.append(line).append("\n");
}

}  // namespace

std::string TakeLog() {
  const std::lock_guard<std::mutex> guard(mutex);
  return std::exchange(lines, {});
}

}  // namespace torture

extern "C" {
void TortureLog(int priority, const char* format, ...) asm("syslog")
    __attribute__((used, visibility("default")));
void TortureLogChecked(int priority, int flag, const char* format, ...) asm("__syslog_chk")
    __attribute__((used, visibility("default")));

void TortureLog(int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  torture::Capture(format, arguments);
  va_end(arguments);
}

void TortureLogChecked(int, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  torture::Capture(format, arguments);
  va_end(arguments);
}
}
