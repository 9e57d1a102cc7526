// SPDX-License-Identifier: MIT
#include "tools/common/ProcessFigures.h"

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tools {
namespace {

// The fields of /proc/self/stat behind the program's name, which may hold anything: the third one
// of proc(5) comes first.
std::vector<double> StatFields() {
  std::ifstream file("/proc/self/stat");
  std::string text((std::istreambuf_iterator<char>(file)), {});
  text.erase(0, text.rfind(')') + 1);
  std::istringstream in(text);
  std::string state;
  in >> state;
  std::vector<double> fields = {0};
  for (double field; in >> field;) fields.push_back(field);
  return fields;
}

// Seconds since the epoch; 0 when the system does not tell.
double BootTime() {
  std::ifstream file("/proc/stat");
  for (std::string name; file >> name;) {
    double seconds = 0;
    if (name == "btime" && file >> seconds) return seconds;
  }
  return 0;
}

double OpenDescriptors() {
  std::error_code error;
  const std::filesystem::directory_iterator all("/proc/self/fd", error);
  const auto count = error ? 0 : std::distance(begin(all), end(all));
  return static_cast<double>(count > 0 ? count - 1 : 0);  // one of them is this look
}

}  // namespace

void WriteProcessFigures(Exposition& out) {
  constexpr std::size_t USER_TIME = 11, SYSTEM_TIME = 12, START = 19, SIZE = 20, RESIDENT = 21;
  const std::vector<double> fields = StatFields();
  if (fields.size() <= RESIDENT) return;
  const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
  out.Family("process_cpu_seconds_total", "counter", "Processor time.");
  out.Sample((fields[USER_TIME] + fields[SYSTEM_TIME]) / ticks);
  out.Family("process_start_time_seconds", "gauge", "When the process started, since the epoch.");
  out.Sample(BootTime() + fields[START] / ticks);
  out.Family("process_virtual_memory_bytes", "gauge", "Address space.");
  out.Sample(fields[SIZE]);
  out.Family("process_resident_memory_bytes", "gauge", "Memory in use.");
  out.Sample(fields[RESIDENT] * static_cast<double>(sysconf(_SC_PAGESIZE)));
  out.Family("process_open_fds", "gauge", "Open descriptors.");
  out.Sample(OpenDescriptors());
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  out.Family("process_max_fds", "gauge", "Descriptors that may be open.");
  out.Sample(static_cast<double>(limit.rlim_cur));
}

}  // namespace tools
