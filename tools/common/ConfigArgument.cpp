// SPDX-License-Identifier: MIT
#include "tools/common/ConfigArgument.h"

#include <sys/stat.h>
#include <unistd.h>

namespace tools {

// The library falls back to its default for a path that it cannot read, a folder and an empty file.
std::string CheckConfig(const std::string& config) {
  const bool isPath = !config.empty() && config.compare(0, 5, "<?xml") != 0;
  struct stat status = {};
  if (!isPath) return {};
  if (stat(config.c_str(), &status) != 0 || access(config.c_str(), R_OK) != 0) {
    return "cannot read " + config;
  }
  if (!S_ISREG(status.st_mode)) return config + " is no file";
  return status.st_size == 0 ? config + " is empty" : std::string();
}

}  // namespace tools
