// SPDX-License-Identifier: MIT
#include "tools/agent/api/Json.h"

#include <cstdio>
#include <ctime>

namespace tools::agent::api {

Json TimeText(std::chrono::system_clock::time_point time) {
  if (time == std::chrono::system_clock::time_point()) return nullptr;
  const auto since = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
  const std::time_t whole = seconds.count();
  std::tm parts{};
  gmtime_r(&whole, &parts);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  char text[48];
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>((since - seconds).count()));
  return text;
}

}  // namespace tools::agent::api
