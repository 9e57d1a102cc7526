// SPDX-License-Identifier: MIT
//
// What the system says of a process, or of one of its threads, at a moment.
#ifndef KECPP_SIMULATOR_DRIVER_PROCESSSAMPLE_H
#define KECPP_SIMULATOR_DRIVER_PROCESSSAMPLE_H

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

struct ProcessSample {
  double at = 0;          // seconds since the run began; the caller's
  long residentKb = 0;    // memory in use
  long descriptors = 0;   // open files and sockets
  long threads = 0;       // all of them
  double cpuSeconds = 0;  // user and system time since its start, in steps of a clock tick
  char state = '?';       // 'S' for one that sleeps
};

// Of "/proc/self", "/proc/PID" or "/proc/self/task/TID". Throws std::runtime_error when it has
// ended.
inline ProcessSample SampleOf(const std::string& folder) {
  std::ifstream file(folder + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t name = text.rfind(')');  // the name may hold anything
  if (name == std::string::npos) throw std::runtime_error("the process has ended");

  // From the third field on: state, then numbers. 14 and 15 are the times, 20 the threads, 24 the
  // resident pages.
  std::istringstream fields(text.substr(name + 1));
  ProcessSample sample;
  fields >> sample.state;
  long value[25] = {};
  for (int i = 4; i < 25; ++i) fields >> value[i];
  sample.cpuSeconds =
      static_cast<double>(value[14] + value[15]) / static_cast<double>(sysconf(_SC_CLK_TCK));
  sample.threads = value[20];
  sample.residentKb = value[24] * (sysconf(_SC_PAGESIZE) / 1024);
  const std::filesystem::directory_iterator descriptors(folder + "/fd");
  sample.descriptors = std::distance(begin(descriptors), end(descriptors));
  return sample;
}

#endif
