// SPDX-License-Identifier: MIT
//
// Takes the place of the system log in a test executable, so that tests can read what was logged
// and write nothing into the log of the machine.
//
// Including this header in any source of the executable is enough: it defines the system log's
// entry points. Lines are captured formatted, with their priority, from every thread. Lines pile up
// until Clear(), so a fixture that looks at them clears them first.
#ifndef KECPP_TESTS_SUPPORT_CAPTUREDLOG_H
#define KECPP_TESTS_SUPPORT_CAPTUREDLOG_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "support/SystemLog.h"

class CapturedLog {
 public:
  struct Line {
    int priority;  // LOG_ERR and so on
    std::string text;
  };

  // A copy of what was logged since the last Clear(), in order.
  static std::vector<Line> Lines() {
    std::lock_guard<std::mutex> guard(Get().mutex);
    return Get().lines;
  }

  static void Clear() {
    std::lock_guard<std::mutex> guard(Get().mutex);
    Get().lines.clear();
  }

  // How many lines contain `text`, and whether one does.
  static std::size_t Count(const std::string& text) {
    std::size_t found = 0;
    for (const Line& line : Lines()) {
      found += line.text.find(text) != std::string::npos;
    }
    return found;
  }
  static bool Contains(const std::string& text) { return Count(text) > 0; }

  // Captures one line; OnLogLine calls it.
  static void Add(int priority, const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<std::size_t>(length) + 1 : 1, '\0');
    std::vsnprintf(&text[0], text.size(), format, arguments);
    text.pop_back();
    std::lock_guard<std::mutex> guard(Get().mutex);
    Get().lines.push_back({priority, text});
  }

 private:
  struct State {
    std::mutex mutex;
    std::vector<Line> lines;
  };
  // Never destroyed: a thread may log while the process ends.
  static State& Get() {
    static State* const state = new State;
    return *state;
  }
};

inline void OnLogLine(int priority, const char* format, va_list arguments) {
  CapturedLog::Add(priority, format, arguments);
}

#endif
