// SPDX-License-Identifier: MIT
#include "foundation/Logger.h"

#include <syslog.h>

#include <cstring>
#include <string>

#include "foundation/KEMutexGuard.h"

namespace KELib {
namespace Logging {

const Logger::LogLevel LOG_LEVEL_NONE = 0;
const Logger::LogLevel LOG_LEVEL_PANIC = 1;
const Logger::LogLevel LOG_LEVEL_ERROR = 2;
const Logger::LogLevel LOG_LEVEL_WARNING = 3;
const Logger::LogLevel LOG_LEVEL_INFO = 4;
const Logger::LogLevel LOG_LEVEL_VERBOSE = 5;
const Logger::LogLevel LOG_LEVEL_TRIVIA = 6;

const char LINE_BREAK = '\n';

namespace {

struct LevelEntry {
  const char* name;
  int priority;
};

constexpr LevelEntry LEVELS[] = {
    {"none", LOG_DEBUG}, {"panic", LOG_EMERG},   {"error", LOG_ERR},   {"warning", LOG_WARNING},
    {"info", LOG_INFO},  {"verbose", LOG_DEBUG}, {"trivia", LOG_DEBUG}};
constexpr Logger::LogLevel LEVEL_COUNT = sizeof LEVELS / sizeof LEVELS[0];

bool IsKnown(Logger::LogLevel level) {
  return level >= 0 && level < LEVEL_COUNT;
}

// The first per-cent sign from `p` on that begins a conversion for which there is no argument, or
// null. "%%", "%m" and, while an argument is left, one "%s" are passed over.
const char* NextStray(const char* p, bool& argumentLeft) {
  while ((p = std::strchr(p, '%'))) {
    const bool takesArgument = argumentLeft && p[1] == 's';
    if (p[1] != '%' && p[1] != 'm' && !takesArgument) {
      return p;
    }
    argumentLeft = argumentLeft && !takesArgument;
    p += 2;
  }
  return nullptr;
}

// The format with every stray per-cent sign doubled, `stray` being the first.
std::string Neutralised(const char* format, const char* stray, bool argumentLeft) {
  std::string safe;
  for (; stray; stray = NextStray(format, argumentLeft)) {
    safe.append(format, stray).append("%%");
    format = stray + 1;
  }
  return safe.append(format);
}

}  // namespace

Logger::Logger() : Logger(LOG_LEVEL_VERBOSE) {}

Logger::Logger(LogLevel initial) : mutex(new KEMutex), level(initial) {}

Logger::~Logger() = default;

bool Logger::Init() {
  return true;
}

void Logger::Cleanup() {}

Logger::LogLevel Logger::GetLevel() const {
  return level.load(std::memory_order_relaxed);
}

void Logger::SetLevel(LogLevel newLevel) {
  level.store(newLevel, std::memory_order_relaxed);
}

bool Logger::IsLevel(LogLevel other) const {
  return GetLevel() == other;
}

const char* Logger::GetLevelByName() const {
  const LogLevel current = GetLevel();
  return IsKnown(current) ? LEVELS[current].name : "";
}

void Logger::SetLevelByName(const char* name) {
  for (const LevelEntry& entry : LEVELS) {
    if (name && std::strcmp(name, entry.name) == 0) {
      SetLevel(static_cast<LogLevel>(&entry - LEVELS));
    }
  }
}

void Logger::Write(LogLevel severity, const char* text) {
  Write(severity, text, nullptr);
}

void Logger::Write(LogLevel severity, const char* format, const char* argument) {
  KEMutexGuard guard(mutex.get());
  if (!Writes(severity, format)) {
    return;
  }
  // The text is the format by design; a conversion that would read a missing argument is taken out.
  // An argument that the format does not use is ignored.
  bool argumentLeft = argument != nullptr;
  const int priority = LEVELS[severity].priority;
  if (const char* const stray = NextStray(format, argumentLeft)) {
    syslog(priority, Neutralised(format, stray, argumentLeft).c_str(), argument);
  } else {
    syslog(priority, format, argument);
  }
}

bool Logger::Writes(LogLevel severity, const char* text) const {
  return IsKnown(severity) && severity <= GetLevel() && text && *text;
}

// One object for the life of the process, never destroyed: no thread that logs can be left with a
// dead logger, neither by FreeDefaultLogger() nor at the end of the process.
Logger* GetDefaultLogger() {
  static Logger* const logger = new Logger;
  return logger;
}

void FreeDefaultLogger() {
  GetDefaultLogger()->SetLevel(LOG_LEVEL_VERBOSE);
}

void Log(Logger* logger, Logger::LogLevel severity, const char* text) {
  Log(logger, severity, text, nullptr);
}

void Log(Logger* logger, Logger::LogLevel severity, const char* format, const char* argument) {
  Logger* const target = logger ? logger : GetDefaultLogger();
  if (target->GetLevel() >= severity) {
    target->Write(severity, format, argument);
  }
}

}  // namespace Logging
}  // namespace KELib
