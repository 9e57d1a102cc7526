// SPDX-License-Identifier: MIT
//
// The one way to the system log. A logger filters by level and hands the text on as it is: no time,
// no level word, no line break are added.
//
// The text of a line is the format given to the system log. Text from outside is therefore passed
// as the argument of a "%s" format, never as the text itself. As a second line of defence a
// conversion for which there is no argument is written out literally.
//
// Thread safety: everything here from any thread. Each write holds the logger's own mutex, a leaf:
//   nothing else is locked under it.
#ifndef KECPP_FOUNDATION_LOGGER_H
#define KECPP_FOUNDATION_LOGGER_H

#include <atomic>
#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"

namespace KELib {
namespace Logging {

class KECPP_API Logger {
 public:
  // 0 to 6, the LOG_LEVEL_ constants; a plain number, so that literals do as well.
  typedef int LogLevel;

  // At level verbose, or at the given one.
  Logger();
  explicit Logger(LogLevel initial);
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  ~Logger();

  // Nothing to do; true.
  bool Init();
  void Cleanup();

  // The highest level that is written.
  LogLevel GetLevel() const;
  void SetLevel(LogLevel newLevel);
  // Whether the level is exactly this one.
  bool IsLevel(LogLevel other) const;

  // The level's name; empty for a level outside 0 to 6.
  const char* GetLevelByName() const;
  // Sets the level of that exact name ("none", "panic", "error", "warning", "info", "verbose",
  // "trivia"); any other name, or null, changes nothing.
  void SetLevelByName(const char* name);

  // Writes `text` unless `severity` is above the logger's level or outside 0 to 6, or `text` is
  // null or empty. "%%" and "%m" keep their meaning.
  void Write(LogLevel severity, const char* text);
  // The same with a format whose first "%s" is replaced by `argument`. Null argument: as above.
  void Write(LogLevel severity, const char* format, const char* argument);

 private:
  bool Writes(LogLevel severity, const char* text) const;

  std::unique_ptr<KEMutex> mutex;
  std::atomic<LogLevel> level;  // changed without the mutex
};

extern KECPP_API const Logger::LogLevel LOG_LEVEL_NONE;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_PANIC;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_ERROR;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_WARNING;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_INFO;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_VERBOSE;
extern KECPP_API const Logger::LogLevel LOG_LEVEL_TRIVIA;

// A line feed. The logger does not append it.
extern KECPP_API const char LINE_BREAK;

// The process-wide logger, at level verbose until that is changed. Never null.
KECPP_API Logger* GetDefaultLogger();

// Gives the process-wide logger up: the next use finds one at level verbose again. Its memory stays
// valid, since another thread may be writing through it.
KECPP_API void FreeDefaultLogger();

// Writes through `logger`, null meaning the default logger, when its level reaches `severity`.
KECPP_API void Log(Logger* logger, Logger::LogLevel severity, const char* text);
KECPP_API void Log(Logger* logger, Logger::LogLevel severity, const char* format,
                   const char* argument);

}  // namespace Logging
}  // namespace KELib

#endif
