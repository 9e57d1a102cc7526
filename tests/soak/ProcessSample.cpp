// SPDX-License-Identifier: MIT
#include "soak/ProcessSample.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace soak {

ProcessSample SampleOf(pid_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid);
  std::ifstream file(folder + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t name = text.rfind(')');  // the name may hold anything
  if (name == std::string::npos) throw std::runtime_error("the tool has ended");

  // From the third field on: state, then numbers. 14 and 15 are the times, 20 the threads, 24 the
  // resident pages.
  std::istringstream fields(text.substr(name + 4));
  long value[25] = {};
  for (int i = 4; i < 25; ++i) fields >> value[i];

  ProcessSample sample;
  sample.cpuSeconds = static_cast<double>(value[14] + value[15]) / sysconf(_SC_CLK_TCK);
  sample.threads = value[20];
  sample.residentKb = value[24] * (sysconf(_SC_PAGESIZE) / 1024);
  for (const auto& entry : std::filesystem::directory_iterator(folder + "/fd")) {
    sample.descriptors += entry.path().empty() ? 0 : 1;
  }
  return sample;
}

}  // namespace soak
