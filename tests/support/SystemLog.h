// SPDX-License-Identifier: MIT
//
// Takes the place of the system log in the executable or preloaded library that includes this
// header: every line goes to OnLogLine, which the includer defines, instead of the machine's log.
// Any thread may log.
#ifndef KECPP_TESTS_SUPPORT_SYSTEMLOG_H
#define KECPP_TESTS_SUPPORT_SYSTEMLOG_H

#include <cstdarg>

#include "support/ReplacedSymbol.h"

// `format` and its arguments make the line, as for vsyslog.
void OnLogLine(int priority, const char* format, va_list arguments);

REPLACED_SYMBOL(inline void, ReplacedSyslog, "syslog", (int priority, const char* format, ...)) {
  va_list arguments;
  va_start(arguments, format);
  OnLogLine(priority, format, arguments);
  va_end(arguments);
}

REPLACED_SYMBOL(inline void, ReplacedSyslogChecked, "__syslog_chk",
                (int priority, int /*flag*/, const char* format, ...)) {
  va_list arguments;
  va_start(arguments, format);
  OnLogLine(priority, format, arguments);
  va_end(arguments);
}

REPLACED_SYMBOL(inline void, ReplacedVsyslog, "vsyslog",
                (int priority, const char* format, va_list arguments)) {
  OnLogLine(priority, format, arguments);
}

#endif
