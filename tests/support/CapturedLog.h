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

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
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
    const std::vector<Line> all = Lines();
    return std::count_if(all.begin(), all.end(), [&](const Line& line) {
      return line.text.find(text) != std::string::npos;
    });
  }
  static bool Contains(const std::string& text) { return Count(text) > 0; }

  // Captures one line; OnLogLine calls it.
  static void Add(int priority, const char* format, va_list arguments) {
    char* text = nullptr;
    if (::vasprintf(&text, format, arguments) < 0) return;
    std::lock_guard<std::mutex> guard(Get().mutex);
    Get().lines.push_back({priority, text});
    std::free(text);
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
